#pragma once

#include "core/session/DictationConfiguration.h"
#include "ports/AudioInput.h"

#include <vector>

namespace vocalith {

class PersistentAppStorage;

/// What the user's settings make of dictations. Each shortcut comes with its mode; each prompt and the journal can be
/// started by their own ids too, which is how the command line and the menu name them. The main prompt is the first of
/// the numbered ones. Of the preferred microphones the first that is among `microphones` is taken, else the default.
DictationConfiguration storedDictationConfiguration(const PersistentAppStorage& appStorage,
                                                    TranscriptionModelID defaultModel,
                                                    const std::vector<AudioDevice>& microphones);

} // namespace vocalith
