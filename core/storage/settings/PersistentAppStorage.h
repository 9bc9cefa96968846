#pragma once

#include "base/Data.h"
#include "base/Date.h"
#include "base/Log.h"
#include "base/Uuid.h"
#include "core/storage/settings/AudioCrashRecoveryInfo.h"
#include "core/storage/settings/DefaultPrompt.h"
#include "core/storage/settings/Setting.h"
#include "core/storage/settings/SettingsBatch.h"
#include "models/AIPrompt.h"
#include "models/AIProvider.h"
#include "models/AppAppearance.h"
#include "models/AppInterfaceLanguage.h"
#include "models/HistoryStoragePolicy.h"
#include "models/KeyboardShortcut.h"
#include "models/MicrophonePriorityEntry.h"
#include "models/QuickCommand.h"
#include "models/RecordingDisplayStyle.h"
#include "models/TextTypingMode.h"
#include "models/TranscriptionModelID.h"
#include "models/WordReplacement.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

class Clock;
class Notices;
class SettingsWatch;

/// The user's settings. Each is one line here: its key in the settings file and the value that holds until the user
/// chooses another. Made once by the composition, used on the main thread. An entry that cannot be read costs only
/// itself; its stored form stays until the setting is set. What another process stores holds here, and is told, as soon
/// as the event loop runs.
class PersistentAppStorage {
    const Clock& m_clock;
    const std::string m_locale;
    std::unique_ptr<SettingsFile> m_file; // before the settings, which read it

public:
    /// `locale` is the language that the system's recogniser is to expect until the user chooses another.
    PersistentAppStorage(std::filesystem::path settingsFile, const Clock& clock, Logger logger,
                         std::string locale = "en-US");
    PersistentAppStorage(const PersistentAppStorage&) = delete;
    PersistentAppStorage& operator=(const PersistentAppStorage&) = delete;
    ~PersistentAppStorage();

    Setting<std::optional<Uuid>> openAiDictationProviderId{*m_file, "openAiDictationProviderId"};
    Setting<std::vector<AIProvider>> dictationAiProviders{*m_file, "dictationAiProviders"};
    Setting<std::optional<AudioCrashRecoveryInfo>> crashRecoveryInfo{
        *m_file, "crashRecoveryInfo", {}, notedByTheProgram<std::optional<AudioCrashRecoveryInfo>>()};
    /// Stored with the first setting.
    Setting<Date> installDate{*m_file, "installDate", now(), notedByTheProgram<Date>()};
    Setting<RecordingDisplayStyle> recordingDisplayStyle{*m_file, "recordingDisplayStyle",
                                                         RecordingDisplayStyle::panel};
    Setting<std::optional<int>> settingsVersion{
        *m_file, "settingsVersion", {}, notedByTheProgram<std::optional<int>>()};
    Setting<std::vector<std::string>> shownNotificationIDs{*m_file, "shownNotificationIDs"};
    Setting<bool> isTest{*m_file, "isTest", false};
    Setting<bool> useLocalhost{*m_file, "useLocalhost", false};
    Setting<bool> showInDock{*m_file, "showInDock", true};
    /// Off: other programs' sound is not ours to touch unasked.
    Setting<bool> muteWhileRecording{*m_file, "muteWhileRecording", false};
    Setting<bool> showInStatusBar{*m_file, "showInStatusBar", true};
    Setting<bool> enableEscapeCancelsRecording{*m_file, "enableEscapeCancelsRecording", true};
    Setting<bool> playSound{*m_file, "playSound", true};
    Setting<bool> useHapticFeedback{*m_file, "useHapticFeedback", false};
    Setting<bool> useSystemDefaultMicrophone{*m_file, "useSystemDefaultMicrophone", true};
    Setting<AIPrompt> mainPrompt{*m_file, "mainPrompt", defaultMainPrompt()};
    Setting<std::vector<AIPrompt>> aiPrompts{*m_file, "aiPresets"};
    Setting<std::vector<KeyboardShortcut>> additionalShortcuts{*m_file, "additionalShortcuts"};
    Setting<KeyboardShortcut> voiceJournalShortcut{*m_file, "voiceJournalShortcut", defaultVoiceJournalShortcut()};
    Setting<std::optional<Uuid>> clipboardDictationPromptID{*m_file, "clipboardDictationPromptID"};
    /// Nothing until a model was chosen.
    Setting<std::optional<TranscriptionModelID>> selectedDictationModelID{*m_file, "transcriptionModelID"};
    Setting<std::optional<TranscriptionModelID>> selectedFileTranscriptionVoiceModelID{*m_file,
                                                                                       "fileTranscriptionVoiceModelID"};
    Setting<std::string> appleTranscriptionLocale{*m_file, "appleTranscriptionLocale", m_locale, locale()};
    Setting<std::string> appleSpeechAnalyzerLocale{*m_file, "appleSpeechAnalyzerLocale1", m_locale, locale()};
    /// Off: no text leaves this machine before the user has set up where it goes.
    Setting<bool> enableAITextTransform{*m_file, "enableAITextTransform", false};
    Setting<std::vector<AIProvider>> promptAiProviders{*m_file, "aiProviders"};
    Setting<std::optional<Uuid>> aiPromptProvider{*m_file, "aiEnhancementAIProviderId"};
    /// Off: the user's clipboard stays the user's.
    Setting<bool> autoCopyToClipboard{*m_file, "autoCopyToClipboard", false};
    Setting<TextTypingMode> textTypingMode{*m_file, "textTypingMode", TextTypingMode::smartPaste};
    Setting<std::vector<MicrophonePriorityEntry>> legacyMicrophonePriorityList{*m_file, "microphonePriorityList"};
    /// Off: nothing that is said opens or starts anything unasked.
    Setting<bool> enableQuickCommands{*m_file, "enableQuickCommands", false};
    /// Off: no port is opened unasked.
    Setting<bool> enableMCP{*m_file, "enableMCP", false};
    Setting<bool> mcpSpeakQuestion{*m_file, "mcpSpeakQuestion", false};
    Setting<bool> hideAccessibilityError{*m_file, "hideAccessibilityError", false};
    Setting<bool> hideSilentMicrophoneError{*m_file, "hideSilentMicrophoneError", false};
    Setting<bool> hideGetIOSApp{*m_file, "hideGetIOSApp", false};
    Setting<bool> hideClaudeIntegration{*m_file, "hideClaudeIntegration", false};
    Setting<bool> hideCodexIntegration{*m_file, "hideCodexIntegration", false};
    Setting<bool> hideCursorIntegration{*m_file, "hideCursorIntegration", false};
    Setting<bool> isFirstLaunch{*m_file, "isFirstLaunch", true};
    Setting<int> whisperThreads{*m_file, "whisperThreads", defaultWhisperThreads(), between(1, kMostThreads)};
    /// Of a segment, in characters; 0 means no limit.
    Setting<int> whisperMaxSentenceLength{*m_file, "whisperMaxSentenceLength", 0, atLeast(0)};
    Setting<bool> whisperTranslateToEnglish{*m_file, "whisperTranslateToEnglish", false};
    /// The code of a `WhisperLanguage`; "auto" lets the model find out.
    Setting<std::string> whisperLanguage{*m_file, "whisperLanguage", "auto", whisperLanguageCode()};
    Setting<float> whisperTemperature{*m_file, "whisperTemperature", 0.0F, between(0.0F, 1.0F)};
    Setting<std::string> whisperPrompt{*m_file, "whisperPrompt"};
    /// Off, because a decode without the context of past text ignores the prompt too.
    Setting<bool> whisperFixRepetitions{*m_file, "whisperFixRepetitions", false};
    /// How many files are written down at the same time; a decode uses every core by itself.
    Setting<int> fileTranscriptionBatchSize{*m_file, "fileTranscriptionBatchSize", 1, atLeast(1)};
    /// The bytes of the path of the folder that holds the models; nothing for the program's own.
    Setting<std::optional<Data>> customModelsFolderBookmark{*m_file, "customModelsFolderBookmark"};
    Setting<AppAppearance> appAppearance{*m_file, "appAppearance", AppAppearance::system};
    Setting<AppInterfaceLanguage> appInterfaceLanguage{*m_file, "appInterfaceLanguage",
                                                       AppInterfaceLanguage::systemDefault};
    Setting<bool> localOnlyMode{*m_file, "localOnlyMode", false};
    /// For ever: what the user said is deleted only when the user says so.
    Setting<HistoryStoragePolicy> historyStoragePolicy{*m_file, "historyStoragePolicy", HistoryStoragePolicy::forever};
    Setting<std::vector<WordReplacement>> wordReplacements{*m_file, "wordReplacements"};
    /// Nothing until it has run.
    Setting<std::optional<Date>> lastHistoryCleanupDate{
        *m_file, "lastHistoryCleanupDate", {}, notedByTheProgram<std::optional<Date>>()};

    Setting<bool> storedIsRecording{*m_file, "storedIsRecording", false, notedByTheProgram<bool>()};
    Setting<std::optional<Uuid>> storedPromptID{*m_file, "_selectedPromptID"};

    Setting<std::vector<QuickCommandDefinition>> quickCommands{*m_file, "quickCommands"};
    /// Off: a login shell reads the user's profile before each script, which takes its time. A session started by a
    /// display manager has read it already.
    Setting<bool> useLoginShellForScripts{*m_file, "useLoginShellForScripts", false};

    /// Collects what is set during its life into one write.
    SettingsBatch batch() { return SettingsBatch(*m_file); }

    const std::filesystem::path& file() const;
    /// Every setting, in the order above.
    const std::vector<AnySetting*>& settings() const;
    /// The setting with that key, or nullptr.
    AnySetting* find(const std::string& key) const;
    /// Whether the file has an entry for it.
    bool isStored(const AnySetting& setting) const;
    /// Whether its entry, or an element of a list, cannot be read by this version.
    bool isUnreadable(const AnySetting& setting) const;
    /// The entries of the file that no setting here stands for, those of a newer version for instance.
    Json unknownEntries() const;
    void storeUnknownEntry(const std::string& key, Json value);
    /// Why what was set last is not in the file: "/path: No space left on device". Nothing when it is.
    std::optional<std::string> whyNotStored() const;

    /// Why the file could not be read: the defaults hold. Nothing when it could, or there is none.
    std::optional<std::string> whyNotRead() const;

    /// Says there what has been found wrong with the settings file, and from now on whatever else goes wrong with it.
    void showProblems(Notices& notices);
    /// From now on failed writes are not among them: whoever sets something asks `whyNotStored`.
    void leaveFailedWrites();

private:
    static constexpr int kMostThreads = 256;
    static int defaultWhisperThreads();
    Date now() const;

    std::unique_ptr<SettingsWatch> m_watch;
};

} // namespace vocalith
