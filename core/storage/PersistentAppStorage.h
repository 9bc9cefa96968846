#pragma once

#include "base/Log.h"
#include "base/Uuid.h"
#include "core/storage/AudioCrashRecoveryInfo.h"
#include "core/storage/Setting.h"
#include "models/TranscriptionModelID.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

class Clock;

/// The user's settings. Each is one line here: its key in the settings file and the value that holds until the user
/// chooses another. Made once by the composition, used on the main thread. An entry that cannot be read costs only
/// itself; its stored form stays until the setting is set.
class PersistentAppStorage {
    std::unique_ptr<SettingsFile> m_file; // before the settings, which read it

public:
    PersistentAppStorage(std::filesystem::path settingsFile, const Clock& clock, Logger logger);
    PersistentAppStorage(const PersistentAppStorage&) = delete;
    PersistentAppStorage& operator=(const PersistentAppStorage&) = delete;
    ~PersistentAppStorage();

    Setting<std::optional<AudioCrashRecoveryInfo>> crashRecoveryInfo{*m_file, "crashRecoveryInfo"};
    Setting<bool> storedIsRecording{*m_file, "storedIsRecording", false};
    Setting<std::vector<std::string>> shownNotificationIDs{*m_file, "shownNotificationIDs"};
    Setting<bool> playSound{*m_file, "playSound", true};
    Setting<std::optional<Uuid>> storedPromptID{*m_file, "_selectedPromptID"};

    /// Nothing until a model was chosen.
    Setting<std::optional<TranscriptionModelID>> selectedDictationModelID{*m_file, "transcriptionModelID"};
    Setting<std::optional<TranscriptionModelID>> selectedFileTranscriptionVoiceModelID{*m_file,
                                                                                       "fileTranscriptionVoiceModelID"};

    Setting<int> whisperThreads{*m_file, "whisperThreads", defaultWhisperThreads()};
    /// Of a segment, in characters; 0 or less means no limit.
    Setting<int> whisperMaxSentenceLength{*m_file, "whisperMaxSentenceLength", 0};
    Setting<bool> whisperTranslateToEnglish{*m_file, "whisperTranslateToEnglish", false};
    /// The code of a `WhisperLanguage`; "auto" lets the model find out.
    Setting<std::string> whisperLanguage{*m_file, "whisperLanguage", "auto"};
    Setting<float> whisperTemperature{*m_file, "whisperTemperature", 0.0F};
    Setting<std::string> whisperPrompt{*m_file, "whisperPrompt"};
    /// Off, because a decode without the context of past text ignores the prompt too.
    Setting<bool> whisperFixRepetitions{*m_file, "whisperFixRepetitions", false};

private:
    static int defaultWhisperThreads();
};

} // namespace vocalith
