#include "core/storage/settings/PersistentAppStorage.h"

#include "base/AtomicFile.h"
#include "core/storage/settings/rules/LanguageTag.h"
#include "tests/core/storage/settings/SettingsFixture.h"
#include "tests/support/MainLoop.h"

#include <sys/stat.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;

class PersistentAppStorageTest : public SettingsFixture {};

TEST_F(PersistentAppStorageTest, KeysAndTheirOrderAreThoseOfTheStoredData)
{
    std::vector<std::string> keys;
    const auto settings = storage();
    for (const auto* setting : settings.settings())
        keys.push_back(setting->key());
    EXPECT_EQ(keys, (std::vector<std::string>{"openAiDictationProviderId",
                                              "dictationAiProviders",
                                              "crashRecoveryInfo",
                                              "installDate",
                                              "recordingDisplayStyle",
                                              "settingsVersion",
                                              "shownNotificationIDs",
                                              "isTest",
                                              "useLocalhost",
                                              "showInDock",
                                              "muteWhileRecording",
                                              "showInStatusBar",
                                              "enableEscapeCancelsRecording",
                                              "playSound",
                                              "useHapticFeedback",
                                              "useSystemDefaultMicrophone",
                                              "mainPrompt",
                                              "aiPresets",
                                              "additionalShortcuts",
                                              "voiceJournalShortcut",
                                              "clipboardDictationPromptID",
                                              "transcriptionModelID",
                                              "fileTranscriptionVoiceModelID",
                                              "appleTranscriptionLocale",
                                              "appleSpeechAnalyzerLocale1",
                                              "enableAITextTransform",
                                              "aiProviders",
                                              "aiEnhancementAIProviderId",
                                              "autoCopyToClipboard",
                                              "textTypingMode",
                                              "microphonePriorityList",
                                              "enableQuickCommands",
                                              "enableMCP",
                                              "mcpSpeakQuestion",
                                              "hideAccessibilityError",
                                              "hideSilentMicrophoneError",
                                              "hideGetIOSApp",
                                              "hideClaudeIntegration",
                                              "hideCodexIntegration",
                                              "hideCursorIntegration",
                                              "isFirstLaunch",
                                              "whisperThreads",
                                              "whisperMaxSentenceLength",
                                              "whisperTranslateToEnglish",
                                              "whisperLanguage",
                                              "whisperTemperature",
                                              "whisperPrompt",
                                              "whisperFixRepetitions",
                                              "fileTranscriptionBatchSize",
                                              "customModelsFolderBookmark",
                                              "appAppearance",
                                              "appInterfaceLanguage",
                                              "localOnlyMode",
                                              "historyStoragePolicy",
                                              "wordReplacements",
                                              "lastHistoryCleanupDate",
                                              "storedIsRecording",
                                              "_selectedPromptID",
                                              "quickCommands",
                                              "useLoginShellForScripts"}));
}

TEST_F(PersistentAppStorageTest, ValuesOfEveryKindSurviveARestart)
{
    const auto id = Uuid::parse("0B9C8D7E-1F2A-4B3C-8D4E-5F6A7B8C9D0E").value();
    const std::vector<AIProvider> providers{CustomAIProvider{id, "sk", "m", "http://localhost:1234", {}},
                                            AppleIntelligenceProvider{id, AIProviderState::tested}};
    auto prompt = defaultMainPrompt();
    prompt.temperature = 0.3;
    KeyboardShortcut shortcut{id, KeyboardShortcut::Keys{1U << 20U, 49}, true, ActivationMode::doubleTap};
    const auto fill = [&](PersistentAppStorage& settings) {
        settings.crashRecoveryInfo.set(AudioCrashRecoveryInfo{"/recordings/a.wav", 5'000'000'000});
        settings.selectedDictationModelID.set(TranscriptionModelID{PredefinedModelID::tinyEnglish});
        settings.selectedFileTranscriptionVoiceModelID.set(TranscriptionModelID{std::string("ggml-mine.bin")});
        settings.whisperThreads.set(7);
        settings.whisperTemperature.set(0.2F);
        settings.whisperPrompt.set("Grüße, \"Ann\"\n  \"key\": 1");
        settings.storedPromptID.set(id);
        settings.shownNotificationIDs.set({"welcome", "whatsNew"});
        settings.promptAiProviders.set(providers);
        settings.mainPrompt.set(prompt);
        settings.additionalShortcuts.set({shortcut});
        settings.customModelsFolderBookmark.set(Data{'/', 'm'});
        settings.historyStoragePolicy.set(HistoryStoragePolicy::oneYear);
        settings.wordReplacements.set({{id, "colour, colur", "color", false, WordReplacementTiming::both}});
        settings.lastHistoryCleanupDate.set(m_clock.now());
    };
    {
        auto settings = storage();
        fill(settings);
    }
    const auto settings = storage();
    EXPECT_EQ(settings.crashRecoveryInfo.get(), (AudioCrashRecoveryInfo{"/recordings/a.wav", 5'000'000'000}));
    EXPECT_EQ(settings.selectedDictationModelID.get(), TranscriptionModelID{PredefinedModelID::tinyEnglish});
    EXPECT_EQ(settings.selectedFileTranscriptionVoiceModelID.get(), TranscriptionModelID{std::string("ggml-mine.bin")});
    EXPECT_EQ(settings.whisperThreads.get(), 7);
    EXPECT_EQ(settings.whisperTemperature.get(), 0.2F);
    EXPECT_EQ(settings.whisperPrompt.get(), "Grüße, \"Ann\"\n  \"key\": 1");
    EXPECT_EQ(settings.storedPromptID.get(), id);
    EXPECT_EQ(settings.promptAiProviders.get(), providers);
    EXPECT_EQ(settings.mainPrompt.get(), prompt);
    EXPECT_EQ(settings.additionalShortcuts.get(), std::vector{shortcut});
    EXPECT_EQ(settings.customModelsFolderBookmark.get(), (Data{'/', 'm'}));
    EXPECT_EQ(settings.historyStoragePolicy.get(), HistoryStoragePolicy::oneYear);
    EXPECT_EQ(settings.wordReplacements.get().at(0).timing, WordReplacementTiming::both);
    EXPECT_EQ(settings.lastHistoryCleanupDate.get(), m_clock.now());
    EXPECT_NE(content().find("\"whisperTemperature\": 0.2,"), std::string::npos) << "people read the file";
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(PersistentAppStorageTest, ReadingMakesNoFileAndTheFirstWriteNotesWhenAndInWhichLayout)
{
    auto settings = storage();
    EXPECT_FALSE(settings.mainPrompt.get().id.isNil()) << "the histories refer to it";
    EXPECT_EQ(settings.mainPrompt.get(), storage().mainPrompt.get());
    EXPECT_TRUE(fs::is_empty(m_folder.path()));
    settings.playSound.set(false);
    EXPECT_EQ(json(),
              (Json{{"installDate", "2026-03-01T12:00:00.000Z"}, {"settingsVersion", 1}, {"playSound", false}}));
    m_clock.advance(std::chrono::hours(24));
    storage().playSound.set(true);
    EXPECT_EQ(json()["installDate"], "2026-03-01T12:00:00.000Z");
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(PersistentAppStorageTest, TellsOfChangesOnlyAndWritesForItsOwnerOnly)
{
    auto settings = storage();
    std::vector<std::string> told;
    const auto subscription = settings.whisperLanguage.subscribe([&](const std::string& value) {
        told.push_back(value + (content().find("\"" + value + "\"") != std::string::npos ? " stored" : " not stored"));
    });
    settings.whisperLanguage.set("auto"); // chosen, though the default: it holds when the default changes
    settings.whisperLanguage.set("fr");
    settings.whisperLanguage.set("fr");
    settings.whisperLanguage.set("it");
    EXPECT_EQ(told, (std::vector<std::string>{"fr stored", "it stored"}));

    settings.storedPromptID.set(Uuid::random());
    settings.storedPromptID.set(std::nullopt);
    EXPECT_FALSE(json().contains("_selectedPromptID"));
    struct stat status {};
    ASSERT_EQ(::stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(PersistentAppStorageTest, UnknownEntriesAndThoseThatCannotBeReadStayAsTheyAre)
{
    const std::string stored = R"({"fromTheFuture": {"b": [1, null], "a": 1.5}, "settingsVersion": 1,
        "whisperThreads": 900, "whisperLanguage": "klingon", "transcriptionModelID": {"unheardOf": {"_0": 3}},
        "_selectedPromptID": "no uuid", "crashRecoveryInfo": {"startByte": 4}, "wordReplacements": {},
        "playSound": false})";
    writeFile(m_file, stored);
    auto settings = storage();
    EXPECT_EQ(settings.whisperLanguage.get(), "auto");
    EXPECT_LE(settings.whisperThreads.get(), 4);
    EXPECT_FALSE(settings.selectedDictationModelID.get());
    EXPECT_FALSE(settings.storedPromptID.get());
    EXPECT_FALSE(settings.crashRecoveryInfo.get());
    EXPECT_TRUE(settings.wordReplacements.get().empty());
    EXPECT_FALSE(settings.playSound.get()) << "a bad entry cost a good one";
    for (const auto* key : {"whisperThreads", "whisperLanguage", "transcriptionModelID", "_selectedPromptID",
                            "crashRecoveryInfo", "wordReplacements"})
        EXPECT_TRUE(m_log.has(std::string("Cannot decode setting: ") + key + ": ")) << key;
    EXPECT_EQ(content(), stored);

    settings.whisperThreads.set(2);
    const auto expected = parseJson(stored).value();
    for (const auto& [key, value] : expected.items()) {
        if (key != "whisperThreads") {
            EXPECT_EQ(json()[key], value) << key;
        }
    }
    EXPECT_EQ(json()["whisperThreads"], 2);
}

TEST_F(PersistentAppStorageTest, AnElementThatCannotBeReadCostsItselfAndKeepsItsPlace)
{
    const Json newer = {{"id", "00000000-0000-4000-8000-000000000009"}, {"sound", "of the future"}};
    const auto entry = [](const char* original) {
        return Json{{"id", "00000000-0000-4000-8000-000000000001"},
                    {"original", original},
                    {"replacement", "x"},
                    {"isRegex", false},
                    {"timing", "afterAI"}};
    };
    writeFile(m_file, dumpJson(Json{{"settingsVersion", 1}, {"wordReplacements", {entry("a"), newer, entry("b"), 7}}}));
    auto settings = storage();
    auto list = settings.wordReplacements.get();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[1].original, "b");
    EXPECT_TRUE(m_log.has("Cannot decode setting: wordReplacements: [1].original: missing"));
    EXPECT_TRUE(m_log.has("Cannot decode setting: wordReplacements: [3]: "));

    list.push_back(list[0]);
    settings.wordReplacements.set(list);
    EXPECT_EQ(json()["wordReplacements"], (Json{entry("a"), newer, entry("b"), 7, entry("a")}));
    settings.wordReplacements.set({});
    EXPECT_EQ(json()["wordReplacements"], (Json{newer, 7})) << "what is unreadable is not the user's to lose";
}

TEST_F(PersistentAppStorageTest, WhatAnotherProcessWroteSurvivesAWriteAndIsTold)
{
    auto settings = storage();
    settings.whisperLanguage.set("en");
    std::vector<int> told;
    const auto threads = settings.whisperThreads.subscribe([&](const int& value) { told.push_back(value); });
    auto other = storage();
    other.whisperThreads.set(3);
    other.whisperPrompt.set("theirs");
    settings.whisperLanguage.set("da");
    EXPECT_EQ(chosen(), (Json{{"whisperThreads", 3}, {"whisperLanguage", "da"}, {"whisperPrompt", "theirs"}}));
    EXPECT_EQ(told, std::vector{3}) << "the write has read it";
}

TEST_F(PersistentAppStorageTest, NoticesChangesOfAnotherProcessAndTellsOfNothingElse)
{
    m_file = m_folder / "made later/by the other/settings.json";
    auto settings = storage();
    std::vector<std::string> told;
    const auto language =
        settings.whisperLanguage.subscribe([&](const std::string& value) { told.push_back("language " + value); });
    const auto sound = settings.playSound.subscribe([&](const bool&) { told.emplace_back("sound"); });
    const auto prompt = settings.mainPrompt.subscribe([&](const AIPrompt&) { told.emplace_back("prompt"); });
    storage().whisperLanguage.set("fi");
    runUntil([&] { return !told.empty(); });
    storage().whisperLanguage.reset();
    runUntil([&] { return told.size() == 2; });
    EXPECT_EQ(told, (std::vector<std::string>{"language fi", "language auto"}));

    // Editors replace the file, write it in place, and can be seen in the middle of it.
    writeFile(m_file, "{\"whisperLanguage\": \"s");
    runUntil([&] { return m_log.has("Cannot read changed settings"); });
    EXPECT_TRUE(keptAside().empty());
    writeFile(m_file, R"({"whisperLanguage": "sv", "settingsVersion": 1})");
    runUntil([&] { return told.size() == 3; });
    ASSERT_TRUE(writeFileAtomically(m_file, R"({"whisperLanguage": "sv", "playSound": true, "settingsVersion": 1})"));
    settings.whisperLanguage.set("no");
    drainMainThread();
    EXPECT_EQ(told, (std::vector<std::string>{"language fi", "language auto", "language sv", "language no"}));
}

TEST_F(PersistentAppStorageTest, NoticesWhatIsWrittenToTheFileThatALinkLeadsTo)
{
    const auto real = m_folder / "dotfiles/settings.json";
    writeFile(real, R"({"settingsVersion": 1})");
    fs::create_symlink(real, m_file);
    auto settings = storage();
    writeFile(real, R"({"settingsVersion": 1, "whisperLanguage": "sv"})");
    EXPECT_TRUE(runUntil([&] { return settings.whisperLanguage.get() == "sv"; }));
}

TEST_F(PersistentAppStorageTest, ABatchIsOneWrite)
{
    auto settings = storage();
    settings.playSound.set(true);
    const auto before = content();
    bool told = false;
    const auto subscription = settings.whisperLanguage.subscribe([&](const std::string&) { told = true; });
    {
        const auto outer = settings.batch();
        settings.whisperLanguage.set("nl");
        {
            const auto inner = settings.batch();
            settings.whisperThreads.set(2);
            settings.whisperThreads.set(3);
        }
        EXPECT_TRUE(told);
        EXPECT_EQ(settings.whisperLanguage.get(), "nl");
        EXPECT_EQ(content(), before);
    }
    EXPECT_EQ(chosen(), (Json{{"playSound", true}, {"whisperThreads", 3}, {"whisperLanguage", "nl"}}));
    EXPECT_EQ(storage().whisperThreads.get(), 3);
}

TEST_F(PersistentAppStorageTest, TheLocaleIsTheUsersWhereTheRecogniserKnowsItsLanguage)
{
    const struct {
        const char* variable;
        const char* value;
        const char* expected;
    } cases[] = {{"LANG", "en_GB.UTF-8", "en-GB"},
                 {"LC_ALL", "en_IE@euro", "en-IE"},
                 {"LANG", "de_DE.UTF-8", "en-US"},
                 {"LANG", "C", "en-US"},
                 {"LANG", "", "en-US"},
                 {"LANG", "en", "en"},
                 {"LANG", "../../etc", "en-US"}};
    for (const auto& [variable, value, expected] : cases) {
        const auto environment = [name = std::string(variable), text = value](const std::string& asked) {
            return asked == name ? std::optional<std::string>(text) : std::nullopt;
        };
        EXPECT_EQ(environmentLocale(environment, {"en"}), expected) << value;
    }
    EXPECT_EQ(languageTag("ZH_hans_cn"), "zh-Hans-CN");
    for (const auto* nonsense : {"", "e", "en-", "-en", "english language", "en--US", "verylonglanguage"})
        EXPECT_FALSE(languageTag(nonsense)) << nonsense;
}

} // namespace
