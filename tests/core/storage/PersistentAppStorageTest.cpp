#include "core/storage/PersistentAppStorage.h"

#include "base/Json.h"
#include "tests/support/FakeClock.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;

class PersistentAppStorageTest : public testing::Test {
protected:
    PersistentAppStorage storage() { return PersistentAppStorage(m_file, m_clock, m_log.logger()); }
    std::string content() const { return readFile(m_file); }
    Json json() const { return parseJson(content()).value(); }
    std::vector<fs::path> setAside() const
    {
        std::vector<fs::path> found;
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            if (entry.path().filename().string().find("unreadable") != std::string::npos)
                found.push_back(entry.path());
        }
        return found;
    }

    TemporaryFolder m_folder;
    fs::path m_file = m_folder / "settings.json";
    FakeClock m_clock;
    RecordedLog m_log;
};

TEST_F(PersistentAppStorageTest, EveryValueSurvivesARestartUnderItsKey)
{
    const auto promptId = Uuid::parse("0B9C8D7E-1F2A-4B3C-8D4E-5F6A7B8C9D0E");
    {
        auto settings = storage();
        settings.crashRecoveryInfo.set(AudioCrashRecoveryInfo{"/recordings/a.wav", 5'000'000'000});
        settings.storedIsRecording.set(true);
        settings.selectedDictationModelID.set(TranscriptionModelID{PredefinedModelID::tinyEnglish});
        settings.selectedFileTranscriptionVoiceModelID.set(TranscriptionModelID{std::string("ggml-mine.bin")});
        settings.whisperThreads.set(7);
        settings.whisperMaxSentenceLength.set(80);
        settings.whisperTranslateToEnglish.set(true);
        settings.whisperLanguage.set("de");
        settings.whisperTemperature.set(0.2F);
        settings.whisperPrompt.set("Grüße, \"Ann\"\n");
        settings.whisperFixRepetitions.set(false);
        settings.playSound.set(false);
        settings.storedPromptID.set(promptId);
        settings.shownNotificationIDs.set({"welcome", "whatsNew"});
    }
    const auto settings = storage();
    EXPECT_EQ(settings.crashRecoveryInfo.get(), (AudioCrashRecoveryInfo{"/recordings/a.wav", 5'000'000'000}));
    EXPECT_TRUE(settings.storedIsRecording.get());
    EXPECT_EQ(settings.selectedDictationModelID.get(), TranscriptionModelID{PredefinedModelID::tinyEnglish});
    EXPECT_EQ(settings.selectedFileTranscriptionVoiceModelID.get(), TranscriptionModelID{std::string("ggml-mine.bin")});
    EXPECT_EQ(settings.whisperThreads.get(), 7);
    EXPECT_EQ(settings.whisperMaxSentenceLength.get(), 80);
    EXPECT_TRUE(settings.whisperTranslateToEnglish.get());
    EXPECT_EQ(settings.whisperLanguage.get(), "de");
    EXPECT_EQ(settings.whisperTemperature.get(), 0.2F);
    EXPECT_EQ(settings.whisperPrompt.get(), "Grüße, \"Ann\"\n");
    EXPECT_FALSE(settings.whisperFixRepetitions.get());
    EXPECT_FALSE(settings.playSound.get());
    EXPECT_EQ(settings.storedPromptID.get(), promptId);
    EXPECT_EQ(settings.shownNotificationIDs.get(), (std::vector<std::string>{"welcome", "whatsNew"}));

    const auto stored = json();
    std::vector<std::string> keys;
    for (const auto& entry : stored.items())
        keys.push_back(entry.key());
    EXPECT_EQ(keys, (std::vector<std::string>{
                        "crashRecoveryInfo", "storedIsRecording", "transcriptionModelID",
                        "fileTranscriptionVoiceModelID", "whisperThreads", "whisperMaxSentenceLength",
                        "whisperTranslateToEnglish", "whisperLanguage", "whisperTemperature", "whisperPrompt",
                        "whisperFixRepetitions", "playSound", "_selectedPromptID", "shownNotificationIDs"}));
    EXPECT_EQ(json()["_selectedPromptID"], "0B9C8D7E-1F2A-4B3C-8D4E-5F6A7B8C9D0E");
    EXPECT_EQ(json()["crashRecoveryInfo"],
              (Json{{"recordingFilePath", "/recordings/a.wav"}, {"startByte", 5'000'000'000}}));
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(PersistentAppStorageTest, AFreshStartUsesTheDefaultsAndMakesNoFile)
{
    const auto settings = storage();
    EXPECT_FALSE(settings.selectedDictationModelID.get());
    EXPECT_GE(settings.whisperThreads.get(), 1);
    EXPECT_LE(settings.whisperThreads.get(), 4);
    EXPECT_EQ(settings.whisperLanguage.get(), "auto");
    EXPECT_TRUE(settings.playSound.get());
    EXPECT_TRUE(fs::is_empty(m_folder.path()));
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(PersistentAppStorageTest, TellsOfChangesOnlyAndWritesForPeopleToRead)
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
    EXPECT_NE(content().find('\n'), std::string::npos);
    struct stat status {};
    ASSERT_EQ(::stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(PersistentAppStorageTest, UnknownEntriesAndThoseThatCannotBeReadStayAsTheyAre)
{
    const std::string stored = R"({"fromTheFuture": {"b": [1, null], "a": 1.5}, "whisperThreads": "many",
        "whisperLanguage": null, "transcriptionModelID": {"unheardOf": {"_0": 3}},
        "shownNotificationIDs": ["a", 2], "_selectedPromptID": "no uuid", "crashRecoveryInfo": {"startByte": 4},
        "playSound": false})";
    writeFile(m_file, stored);
    auto settings = storage();
    EXPECT_EQ(settings.whisperLanguage.get(), "auto");
    EXPECT_FALSE(settings.selectedDictationModelID.get());
    EXPECT_TRUE(settings.shownNotificationIDs.get().empty());
    EXPECT_FALSE(settings.storedPromptID.get());
    EXPECT_FALSE(settings.crashRecoveryInfo.get());
    EXPECT_FALSE(settings.playSound.get()) << "a bad entry cost a good one";
    for (const auto* key : {"whisperThreads", "whisperLanguage", "transcriptionModelID", "shownNotificationIDs",
                            "_selectedPromptID", "crashRecoveryInfo"})
        EXPECT_TRUE(m_log.has(std::string("Cannot decode setting: ") + key + ": ")) << key;

    settings.whisperThreads.set(2);
    auto expected = parseJson(stored).value();
    expected["whisperThreads"] = 2;
    EXPECT_EQ(json(), expected);
}

TEST_F(PersistentAppStorageTest, AFileThatIsNoSettingsIsSetAsideOnceAndNeverLost)
{
    for (const std::string broken : {"{\"whisperLanguage\": \"d", "[1]", "", "\xff\xfe{}"}) {
        writeFile(m_file, broken);
        auto settings = storage();
        EXPECT_EQ(settings.whisperLanguage.get(), "auto");
        settings.whisperLanguage.set("sv");
        EXPECT_EQ(json(), (Json{{"whisperLanguage", "sv"}}));
    }
    auto names = setAside();
    std::sort(names.begin(), names.end());
    ASSERT_EQ(names.size(), 4U) << "one that was set aside was overwritten";
    EXPECT_EQ(names[0].filename(), "settings.json.unreadable-2026-03-01T12-00-00Z");
    EXPECT_EQ(readFile(names[0]), "{\"whisperLanguage\": \"d");
    EXPECT_TRUE(m_log.has("Cannot parse settings: "));
}

TEST_F(PersistentAppStorageTest, WhatAnotherProgramWroteMeanwhileSurvivesAWrite)
{
    auto settings = storage();
    settings.whisperLanguage.set("en");
    auto other = storage();
    other.whisperThreads.set(3);
    other.whisperPrompt.set("theirs");
    settings.whisperLanguage.set("da");
    EXPECT_EQ(json(), (Json{{"whisperLanguage", "da"}, {"whisperThreads", 3}, {"whisperPrompt", "theirs"}}));

    writeFile(m_file, "truncat"); // and what it ruined costs nothing that was known
    settings.whisperThreads.set(4);
    EXPECT_EQ(json(), (Json{{"whisperLanguage", "da"}, {"whisperThreads", 4}, {"whisperPrompt", "theirs"}}));
    EXPECT_EQ(setAside().size(), 1U);
}

TEST_F(PersistentAppStorageTest, TwoProcessesThatWriteAtTheSameTimeLoseNothing)
{
    constexpr int kRounds = 40;
    storage().playSound.set(true);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        PersistentAppStorage theirs(m_file, m_clock, {});
        for (int i = 1; i <= kRounds; ++i)
            theirs.whisperMaxSentenceLength.set(i);
        ::_exit(0);
    }
    auto settings = storage();
    std::vector<std::string> seen;
    for (int i = 1; i <= kRounds; ++i) {
        seen.push_back(std::to_string(i));
        settings.shownNotificationIDs.set(seen);
        ASSERT_EQ(json()["shownNotificationIDs"].size(), seen.size());
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(json()["whisperMaxSentenceLength"], kRounds);
    EXPECT_EQ(json()["shownNotificationIDs"].size(), seen.size());
}

TEST_F(PersistentAppStorageTest, AValueThatCannotBeWrittenHoldsAndIsWrittenWithTheNext)
{
    writeFile(m_folder / "blocked", "a file where the folder should be");
    m_file = m_folder / "blocked/settings.json";
    auto settings = storage();
    bool told = false;
    const auto subscription = settings.whisperLanguage.subscribe([&](const std::string&) { told = true; });
    settings.whisperLanguage.set("nl");
    EXPECT_EQ(settings.whisperLanguage.get(), "nl");
    EXPECT_TRUE(told);
    EXPECT_TRUE(m_log.has("Cannot store setting: whisperLanguage: " + (m_folder / "blocked").string() + ": "));

    fs::remove(m_folder / "blocked");
    settings.playSound.set(false);
    EXPECT_EQ(json()["whisperLanguage"], "nl");
    EXPECT_EQ(json()["playSound"], false);
}

} // namespace
