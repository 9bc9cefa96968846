#pragma once

#include "core/speech/catalogue/ModelGuards.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"

#include <optional>
#include <set>

namespace vocalith {

/// The model that serves a dictation: the selected one if it can be used; else the best whisper model on this machine
/// (the most accurate; among equals the multilingual, then the smaller one; files of the user's own come last); else
/// the platform's recogniser, which needs no download. `present` holds the on-device models whose files are there.
TranscriptionModelID dictationModel(const VoiceModelCatalogue& catalogue,
                                    const std::optional<TranscriptionModelID>& selection,
                                    const std::set<TranscriptionModelID>& present, const PlatformTraits& traits);

} // namespace vocalith
