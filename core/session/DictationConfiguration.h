#pragma once

#include "base/Uuid.h"
#include "models/DictationSession.h"
#include "models/RecordingMode.h"
#include "models/TranscriptionModelID.h"

#include <string>
#include <vector>

namespace vocalith {

/// The mode that the n-th configured shortcut starts.
struct OverlayActivationModeWithShortcutIndex {
    int shortcutIndex = 0;
    OverlayActivationMode mode;
    bool operator==(const OverlayActivationModeWithShortcutIndex&) const = default;
};

/// What a dictation needs to know before it can start.
struct DictationConfiguration {
    struct Shortcut {
        Uuid id;
        OverlayActivationModeWithShortcutIndex activation;
        bool operator==(const Shortcut&) const = default;
    };

    std::vector<Shortcut> shortcuts; ///< the main one first
    std::vector<AIPrompt> prompts;   ///< numbered from 1 on
    int numberKeys = 0;              ///< so many of them have a key that chooses them while a dictation runs
    TranscriptionModelID defaultModel;
    RecordingMode recordingMode = RecordingMode::microphone;
    std::string microphoneId; ///< empty follows the default microphone
    bool operator==(const DictationConfiguration&) const = default;
};

} // namespace vocalith
