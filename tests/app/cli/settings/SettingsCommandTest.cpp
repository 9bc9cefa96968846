// `vocalith settings`, from the words that are typed to what is printed and stored.

#include "app/cli/settings/SettingsCommand.h"

#include "app/cli/CommandLine.h"
#include "app/cli/ExitCode.h"
#include "app/cli/models/ModelReport.h"
#include "app/cli/terminal/Terminal.h"
#include "app/cli/text/NearestWord.h"
#include "base/Json.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakeSpeechRecognizer.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;

struct Ended {
    int code = -1;
    std::string out;
    std::string err;
};

const Uuid kOpenAI = Uuid::parse("00000000-0000-4000-8000-000000000001").value();
const Uuid kOllama = Uuid::parse("00000000-0000-4000-8000-000000000002").value();
const std::string kSecret = "sk-very-secret-1234";
const std::string kMasked = "••••1234";

class SettingsCommandTest : public testing::Test {
protected:
    /// Runs one command as a new start of the program would, on a file of its own.
    Ended run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"vocalith", "settings"});
        std::vector<const char*> words;
        words.reserve(arguments.size());
        for (const auto& argument : arguments)
            words.push_back(argument.c_str());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Ended ended;
        if (auto command = parseCommandLine(static_cast<int>(words.size()), words.data())) {
            auto settings = storage();
            settings.showProblems(m_notices);
            const ModelReport models(m_catalogue, m_files, m_recogniser, settings, currentPlatformTraits());
            Terminal terminal;
            ended.code = SettingsCommand(settings, models, terminal).run(std::get<SettingsOptions>(*command));
        } else {
            ended.code = command.error();
        }
        ended.out = testing::internal::GetCapturedStdout();
        ended.err = testing::internal::GetCapturedStderr();
        return ended;
    }
    PersistentAppStorage storage() { return PersistentAppStorage(m_file, m_clock, m_log.logger()); }
    static Json parsed(const std::string& text) { return parseJson(text).value(); }
    void addProviders()
    {
        storage().promptAiProviders.set({OpenAIProvider{kOpenAI, kSecret, "gpt", AIProviderState::tested},
                                         OllamaProvider{kOllama, "", "llama", "http://localhost:1", {}}});
    }
    std::string key(std::size_t index = 0)
    {
        return std::visit(
            [](const auto& record) -> std::string {
                if constexpr (requires { record.key; })
                    return record.key;
                else
                    return "";
            },
            storage().promptAiProviders.get().at(index));
    }

    TemporaryFolder m_folder;
    const fs::path m_file = m_folder / "settings.json";
    FakeClock m_clock;
    RecordedLog m_log;
    RecordedNotices m_notices;
    const VoiceModelCatalogue m_catalogue;
    ModelFileManager m_files{m_folder / "Models", m_catalogue};
    FakeSpeechRecognizer m_recogniser;
};

TEST_F(SettingsCommandTest, WrongUsageSaysWhatToDoAndChangesNothing)
{
    const struct {
        std::vector<std::string> arguments;
        const char* complaint;
    } cases[] = {
        {{}, "settings --help"},
        {{"get", "whisperthread"}, "Did you mean whisperThreads?"},
        {{"get", "storagePolicy"}, "Did you mean historyStoragePolicy?"},
        {{"set", "whisperThreads", "900"}, "whisperThreads: 900 is not a whole number from 1 to 256."},
        {{"set", "historyStoragePolicy", "oneyaer"}, "Did you mean oneYear?"},
        {{"set", "transcriptionModelID", "largev4"}, "Did you mean largeV3?"},
        {{"set", "settingsVersion", "2"}, "kept by the program itself"},
        {{"reset"}, "--all"},
        {{"reset", "playSound", "nonsense"}, "There is no setting \"nonsense\""},
        {{"set", "wordReplacements", "[{}]"}, "[0].id: missing"},
    };
    storage().playSound.set(false);
    const auto before = readFile(m_file);
    for (const auto& [arguments, complaint] : cases) {
        const auto ended = run(arguments);
        EXPECT_EQ(ended.code, exitUsage) << complaint;
        EXPECT_NE(ended.err.find(complaint), std::string::npos) << ended.err;
        EXPECT_EQ(ended.out, "");
    }
    EXPECT_EQ(readFile(m_file), before);
}

TEST_F(SettingsCommandTest, SetsGetsListsAndResets)
{
    EXPECT_EQ(run({"path"}).out, m_file.string() + "\n");
    EXPECT_EQ(run({"get", "historyStoragePolicy"}).out, "forever\n");
    EXPECT_FALSE(fs::exists(m_file)) << "looking made a file";
    for (const auto& change : {std::vector<std::string>{"set", "historyStoragePolicy", "oneYear"},
                               {"set", "transcriptionModelID", "LARGEV3"},
                               {"set", "whisperPrompt", "[Musik] für Ann\nund mehr"}})
        EXPECT_EQ(run(change).code, exitSuccess);
    EXPECT_EQ(run({"get", "historyStoragePolicy"}).out, "oneYear\n");
    EXPECT_EQ(run({"get", "transcriptionModelID"}).out, "largeV3\n");
    EXPECT_EQ(run({"get", "whisperPrompt"}).out, "[Musik] für Ann\nund mehr\n");
    EXPECT_EQ(parsed(run({"get", "whisperPrompt", "--json"}).out), "[Musik] für Ann\nund mehr");

    const auto table = run({"list"}).out;
    EXPECT_NE(table.find("\nhistoryStoragePolicy           oneYear\n"), std::string::npos) << table;
    EXPECT_NE(table.find("\nwhisperPrompt                  [Musik] für Ann und mehr\n"), std::string::npos) << table;
    const auto list = parsed(run({"list", "--json"}).out);
    EXPECT_EQ(list.size(), storage().settings().size());
    for (const auto& row : list)
        EXPECT_EQ(row["isDefault"] == false, row["key"] == "historyStoragePolicy" ||
                                                 row["key"] == "transcriptionModelID" ||
                                                 row["key"] == "whisperPrompt" || row["key"] == "settingsVersion")
            << row;
    EXPECT_NE(run({"list", "--keys"}).out.find("\naiPresets\n"), std::string::npos);
    EXPECT_EQ(run({"list", "--words", "playSound"}).out, "true\nfalse\n");

    EXPECT_EQ(run({"reset", "whisperPrompt"}).code, exitSuccess);
    EXPECT_EQ(run({"get", "whisperPrompt"}).out, "\n");
    storage().crashRecoveryInfo.set(AudioCrashRecoveryInfo{"/a.wav", 44});
    EXPECT_EQ(run({"reset", "--all"}).code, exitSuccess);
    EXPECT_EQ(run({"get", "historyStoragePolicy"}).out, "forever\n");
    EXPECT_TRUE(storage().crashRecoveryInfo.get()) << "a recording would have been lost";
}

TEST_F(SettingsCommandTest, ShowsNoKeysUnlessAskedAndKeepsThemThroughAnEdit)
{
    addProviders();
    for (const auto& shown : {run({"list"}).out, run({"list", "--json"}).out, run({"get", "aiProviders"}).out,
                              run({"get", "aiProviders", "--json"}).out, run({"export"}).out})
        EXPECT_EQ(shown.find(kSecret), std::string::npos) << shown;
    for (const auto& shown : {run({"list", "--json", "--show-secrets"}).out,
                              run({"get", "aiProviders", "--show-secrets"}).out, run({"export", "--show-secrets"}).out})
        EXPECT_NE(shown.find(kSecret), std::string::npos) << shown;

    auto edited = parsed(run({"get", "aiProviders"}).out);
    EXPECT_EQ(edited[0]["provider"]["key"], kMasked);
    edited[0]["provider"]["model"] = "gpt-next";
    EXPECT_EQ(run({"set", "aiProviders", dumpJson(edited)}).code, exitSuccess);
    EXPECT_EQ(key(), kSecret);
    edited[0]["provider"].erase("key");
    EXPECT_EQ(run({"set", "aiProviders", dumpJson(edited)}).code, exitSuccess);
    EXPECT_EQ(key(), kSecret);
    for (const auto* wrong : {"••••9999", "••••"}) {
        edited[0]["provider"]["key"] = wrong;
        const auto ended = run({"set", "aiProviders", dumpJson(edited)});
        EXPECT_EQ(ended.code, exitUsage) << "a mask became a key";
        EXPECT_NE(ended.err.find("[0].provider.key"), std::string::npos) << ended.err;
    }
    edited[0]["provider"]["key"] = "";
    EXPECT_EQ(run({"set", "aiProviders", dumpJson(edited)}).code, exitSuccess);
    EXPECT_EQ(key(), "");
}

TEST_F(SettingsCommandTest, AnExportCanBeImportedWithNothingLost)
{
    addProviders();
    {
        auto settings = storage();
        settings.mainPrompt.set([] {
            auto prompt = defaultMainPrompt();
            prompt.temperature = 0.1;
            return prompt;
        }());
        settings.whisperTemperature.set(0.3F);
        settings.selectedDictationModelID.set(TranscriptionModelID(PredefinedModelID::tiny));
        settings.historyStoragePolicy.set(HistoryStoragePolicy::forever); // chosen, though the default
        settings.storeUnknownEntry("ofTheFuture", Json{{"secret", "?"}});
    }
    const auto whole = readFile(m_file);
    const auto open = m_folder / "open.json";
    const auto masked = m_folder / "masked.json";
    EXPECT_EQ(run({"export", open.string(), "--show-secrets"}).code, exitSuccess);
    EXPECT_NE(run({"export", masked.string()}).err.find("ofTheFuture"), std::string::npos) << "left out without a word";
    struct stat status {};
    ASSERT_EQ(::stat(open.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(run({"export", open.string()}).code, exitUsage) << "it replaced a file unasked";

    EXPECT_EQ(run({"import", masked.string()}).code, exitSuccess);
    EXPECT_EQ(readFile(m_file), whole) << "the keys that were set did not stay";
    fs::remove(m_file);
    EXPECT_NE(run({"import", open.string()}).err.find("ofTheFuture"), std::string::npos);
    EXPECT_EQ(readFile(m_file), whole);
    fs::remove(m_file);
    const auto keyless = run({"import", masked.string()});
    EXPECT_NE(keyless.err.find("no API key came along for OpenAI."), std::string::npos) << keyless.err;
    EXPECT_EQ(key(), "");
}

TEST_F(SettingsCommandTest, AnImportWithAFaultNamesEachAndChangesNothing)
{
    addProviders();
    const auto before = readFile(m_file);
    const auto file = (m_folder / "import.json").string();
    const struct {
        const char* text;
        std::vector<std::string> faults;
    } cases[] = {
        {R"({"playSound": false, "whisperThreads": 0, "historyStoragePolicy": "decade",
             "aiPresets": [{"id": 5}], "wordReplacements": null})",
         {"whisperThreads: 0", "historyStoragePolicy: ", "aiPresets: ", "[0].id", "wordReplacements: ", "Nothing was"}},
        {R"({"aiProviders": [{"type": "groq", "provider": {"id": "00000000-0000-4000-8000-000000000007",
             "key": "••••1234", "model": "", "state": "tested"}}]})",
         {"aiProviders: [0].provider.key"}},
        {R"({"aiProviders": [{"type": "groq", "provider": {"key": "sk-very-secret-1234)", {"no settings file"}},
        {"{\"playSound\": fal", {"no settings file"}},
        {"[]", {"no settings file"}},
        {"", {"no settings file"}},
    };
    for (const auto& [text, faults] : cases) {
        writeFile(file, text);
        const auto ended = run({"import", file});
        EXPECT_EQ(ended.code, exitFailure) << text;
        for (const auto& fault : faults)
            EXPECT_NE(ended.err.find(fault), std::string::npos) << ended.err;
        EXPECT_EQ(ended.err.find(kSecret), std::string::npos) << ended.err;
        EXPECT_EQ(readFile(m_file), before);
    }
    // Of this machine, and in the first layout.
    writeFile(file,
              R"({"crashRecoveryInfo": {"recordingFilePath": "/x", "startByte": 0}, "transcriptionModelID": "tiny"})");
    const auto ended = run({"import", file});
    EXPECT_EQ(ended.code, exitSuccess) << ended.err;
    EXPECT_FALSE(storage().crashRecoveryInfo.get());
    EXPECT_EQ(storage().selectedDictationModelID.get(), TranscriptionModelID(PredefinedModelID::tiny));
}

TEST_F(SettingsCommandTest, AFileThatCannotBeUsedFailsWhatNeedsItAndIsSaidOnce)
{
    fs::create_directory(m_file);
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"set", "playSound", "off"}, {"reset", "playSound"}, {"reset", "--all"}, {"export"}}) {
        m_notices.shown.clear();
        const auto ended = run(arguments);
        EXPECT_EQ(ended.code, exitFailure) << arguments[0];
        EXPECT_EQ(ended.out, "") << "the defaults are no backup";
        const auto* what = arguments[0] == "export" ? "Nothing was exported." : "could not be saved";
        EXPECT_NE(ended.err.find(what), std::string::npos) << ended.err;
        ASSERT_EQ(m_notices.shown.size(), 1U);
        EXPECT_NE(m_notices.shown[0].find("cannot be read"), std::string::npos) << m_notices.shown[0];
    }
}

TEST_F(SettingsCommandTest, WhatIsStoredAndCannotBeReadIsNeitherADefaultNorExported)
{
    writeFile(m_file, R"({"settingsVersion": 1, "whisperThreads": 900, "aiProviders": [{"type": "ofTheFuture"}],
                          "shownNotificationIDs": ["a", 5], "playSound": false})");
    const auto list = parsed(run({"list", "--json"}).out);
    for (const auto& row : list)
        EXPECT_EQ(row["isReadable"] == false,
                  row["key"] == "whisperThreads" || row["key"] == "aiProviders" || row["key"] == "shownNotificationIDs")
            << row;
    EXPECT_NE(run({"list"}).out.find("cannot be read"), std::string::npos);
    EXPECT_NE(run({"get", "whisperThreads"}).err.find("cannot read"), std::string::npos);
    const auto exported = run({"export"});
    EXPECT_EQ(parsed(exported.out),
              (Json{{"settingsVersion", 1}, {"shownNotificationIDs", {"a"}}, {"playSound", false}}));
    EXPECT_NE(exported.err.find("whisperThreads holds something"), std::string::npos) << exported.err;
}

TEST_F(SettingsCommandTest, AnExportReplacesFilesOnly)
{
    const auto ended = run({"export", "--force", m_folder.path().string()});
    EXPECT_EQ(ended.code, exitUsage);
    EXPECT_NE(ended.err.find("not a file that can be replaced"), std::string::npos) << ended.err;
}

TEST(NearestWord, IsOnlyGivenWhenItIsNear)
{
    const std::vector<std::string> words{"whisperThreads", "playSound", "aiPresets"};
    EXPECT_EQ(nearestWord("playsond", words), "playSound");
    EXPECT_EQ(nearestWord("threads", words), "whisperThreads");
    EXPECT_EQ(nearestWord("aipreset", words), "aiPresets");
    EXPECT_EQ(nearestWord("nonsense", words), "");
    EXPECT_EQ(nearestWord("", words), "");
}

} // namespace
