// What a dictation leaves in the history, and what becomes of its recording.

#include "tests/app/overlay/DictationStage.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

class DictationHistory : public testing::Test {
protected:
    DictationHistory() { stage.loadConfiguration(); }

    void dictate(std::chrono::milliseconds length, std::optional<Uuid> shortcut = {})
    {
        const Uuid pressed = shortcut.value_or(stage.journalShortcut);
        stage.release(Uuid{}); // so that the state changes
        stage.press(pressed);
        stage.speak(length);
        stage.release(pressed);
        stage.waitForOutcome();
    }
    const dictation_outcome::Failed* failed() const
    {
        return std::get_if<dictation_outcome::Failed>(&stage.display.outcomes.back());
    }
    static fs::path recordingOf(const HistoryEntry& entry) { return *filePath(audioFile(entry).fileBookmark); }
    /// From now on no entry can be written.
    void breakHistory()
    {
        fs::remove_all(stage.folder / "History");
        writeFile(stage.folder / "History", "no folder");
    }

    DictationStage stage;
};

TEST_F(DictationHistory, HasTheWordsOfBothModesWithTheirRecording)
{
    const Date spokenAt = stage.clock.now();
    dictate(1s);
    dictate(1s, stage.promptShortcut);
    const auto entries = stage.historyEntries();
    ASSERT_EQ(entries.size(), 2u);
    for (const auto& entry : entries) {
        EXPECT_EQ(entry.creationDate, spokenAt);
        EXPECT_EQ(finalText(entry), "hello world");
        EXPECT_TRUE(fs::exists(recordingOf(entry)));
        const bool isJournal = std::holds_alternative<HistoryEntry::VoiceJournalEntry>(entry.content);
        EXPECT_EQ(usedPrompt(entry) == nullptr, isJournal);
    }
    EXPECT_NE(entries[0].content.index(), entries[1].content.index());
    EXPECT_FALSE(stage.storage.crashRecoveryInfo.get());
}

TEST_F(DictationHistory, HasTheWordsBeforeAnythingElseIsDoneWithThem)
{
    stage.output.holds = true;
    stage.press(stage.journalShortcut);
    stage.speak(1s);
    stage.release(stage.journalShortcut);
    runUntil([this] { return stage.output.asked > 0; });
    EXPECT_TRUE(stage.storage.crashRecoveryInfo.get()) << "the dictation is not over yet";
    stage.escape();
    stage.waitForOutcome();
    const auto entries = stage.historyEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(finalText(entries[0]), "hello world");
    EXPECT_EQ(stage.recordingsOnDisk(), 0u) << "cancelling discards the audio";
}

TEST_F(DictationHistory, WhereNoneIsWantedADeliveredDictationLeavesNothingBehindAndAFailedOneItsRecording)
{
    stage.storage.historyStoragePolicy.set(HistoryStoragePolicy::disabled);
    dictate(1s);
    EXPECT_EQ(stage.recordingsOnDisk(), 0u);
    stage.engine.transcribeError = TranscriptionError{TranscriptionError::Kind::decodeFailed, "-7"};
    dictate(1s);
    ASSERT_TRUE(failed());
    EXPECT_FALSE(failed()->historyEntry);
    EXPECT_TRUE(failed()->recording && fs::exists(*failed()->recording));
    EXPECT_TRUE(stage.historyEntries().empty());
}

TEST_F(DictationHistory, AHistoryThatCannotBeWrittenCostsNoWords)
{
    breakHistory();
    dictate(1s);
    EXPECT_EQ(stage.output.delivered, std::vector<std::string>{"hello world "});
    EXPECT_TRUE(stage.log.has("Cannot upsert entry "));
    EXPECT_EQ(stage.notices.shown.size(), 1u);
    EXPECT_EQ(stage.recordingsOnDisk(), 0u) << "its text is delivered";

    stage.engine.transcribeError = TranscriptionError{TranscriptionError::Kind::decodeFailed, "-7"};
    dictate(1s);
    ASSERT_TRUE(failed());
    EXPECT_FALSE(failed()->historyEntry) << "the message must not promise an entry that is not there";
    EXPECT_TRUE(failed()->recording && fs::exists(*failed()->recording));
}

TEST_F(DictationHistory, AFailureKeepsItsRecordingAndSaysWhatWasShown)
{
    struct Case {
        const char* message;
        std::function<void()> dictate;
    };
    const std::vector<Case> cases = {
        {"Failed to recognize text",
         [this] {
             stage.engine.transcribeError = TranscriptionError{TranscriptionError::Kind::decodeFailed, "-7"};
             dictate(1s);
             stage.engine.transcribeError.reset();
         }},
        {"No speech detected",
         [this] {
             stage.engine.text = " ";
             dictate(1s);
             stage.engine.text = "hello world";
         }},
        {"disconnected",
         [this] {
             stage.release(Uuid{});
             stage.press(stage.journalShortcut);
             stage.speak(100ms);
             stage.input.capture()->fail({AudioInputError::Kind::deviceLost, "unplugged"});
             stage.waitForOutcome();
         }},
    };
    std::size_t count = 0;
    for (const auto& testCase : cases) {
        stage.clock.advance(1min);
        testCase.dictate();
        ASSERT_TRUE(failed()) << testCase.message;
        const auto entries = stage.historyEntries();
        ASSERT_EQ(entries.size(), ++count) << testCase.message;
        const auto& entry = entries.front();
        EXPECT_EQ(failed()->historyEntry, entry.id);
        ASSERT_TRUE(errorMessage(entry));
        EXPECT_EQ(*errorMessage(entry), failed()->message);
        EXPECT_NE(failed()->message.find(testCase.message), std::string::npos) << failed()->message;
        EXPECT_EQ(failed()->recording, recordingOf(entry));
        EXPECT_TRUE(fs::exists(recordingOf(entry)));
        EXPECT_FALSE(stage.storage.crashRecoveryInfo.get());
    }
    dictate(300ms);
    EXPECT_EQ(stage.historyEntries().size(), count) << "a short tap is no dictation";
}

TEST_F(DictationHistory, ACommandThatFailsNeverTakesTheOnlyCopy)
{
    stage.storage.enableQuickCommands.set(true);
    stage.desktop.rules.quickCommands.add(
        {Uuid::random(), {"hello world"}, quick_command_action::OpenURL{"https://example.org"}, true});
    stage.desktop.launcher.failFromNowOn({AppLaunchError::Kind::notFound, "Nothing opens it."});
    dictate(1s);
    const auto early = std::get<dictation_outcome::EndedEarly>(stage.display.outcomes.back());
    EXPECT_TRUE(early.isFailure);
    EXPECT_EQ(stage.notices.shown, std::vector<std::string>{early.reason});
    EXPECT_EQ(finalText(stage.historyEntries().front()), "hello world");

    breakHistory();
    dictate(1s);
    ASSERT_TRUE(failed());
    EXPECT_EQ(failed()->message, early.reason);
    EXPECT_EQ(failed()->text, "hello world");
    EXPECT_TRUE(failed()->recording && fs::exists(*failed()->recording));
    EXPECT_TRUE(stage.output.delivered.empty());
}

TEST_F(DictationHistory, AFailureAfterTheWordsWereKeptDoesNotReplaceThem)
{
    stage.output.error = TextOutputError{"The pipe is closed.", ""};
    dictate(1s);
    const auto entries = stage.historyEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(finalText(entries[0]), "hello world");
    ASSERT_TRUE(failed());
    EXPECT_EQ(failed()->historyEntry, entries[0].id);
    EXPECT_TRUE(failed()->historyHasText);
    EXPECT_TRUE(fs::exists(recordingOf(entries[0])));
}

TEST_F(DictationHistory, AFailureWhoseWordsCouldNotBeKeptKeepsItsRecording)
{
    breakHistory();
    stage.output.error = TextOutputError{"The pipe is closed.", ""};
    stage.output.holds = true;
    stage.press(stage.journalShortcut);
    stage.speak(1s);
    stage.release(stage.journalShortcut);
    runUntil([this] { return stage.output.asked > 0; });
    fs::remove(stage.folder / "History"); // by now it can be written again
    stage.clock.advance(1h);
    stage.waitForOutcome();
    ASSERT_TRUE(failed());
    EXPECT_EQ(failed()->text, "hello world ");
    EXPECT_FALSE(failed()->historyHasText) << "nobody is to look for them there";
    const auto entries = stage.historyEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(failed()->historyEntry, entries[0].id);
    EXPECT_TRUE(fs::exists(recordingOf(entries[0])));
}

TEST_F(DictationHistory, OldEntriesGoAtTheEndOfADictationAndNotBeforeIt)
{
    dictate(1s);
    stage.storage.historyStoragePolicy.set(HistoryStoragePolicy::oneDay);
    stage.clock.advance(25h);
    stage.release(Uuid{});
    stage.press(stage.journalShortcut);
    stage.speak(1s);
    EXPECT_EQ(stage.recordingsOnDisk(), 2u) << "the microphone comes first";
    stage.release(stage.journalShortcut);
    stage.waitForOutcome();
    runUntil([this] { return stage.recordingsOnDisk() == 1; });
    EXPECT_EQ(stage.historyEntries().size(), 1u);
}

TEST_F(DictationHistory, NobodyHasToWaitForOldEntriesToGo)
{
    dictate(1s);
    stage.storage.historyStoragePolicy.set(HistoryStoragePolicy::oneDay);
    const auto last = stage.storage.lastHistoryCleanupDate.get();
    for (const bool isEnd : {false, true}) {
        stage.clock.advance(25h);
        dictate(1s);
        if (isEnd)
            await(stage.overlay.shutDown());
        else
            stage.escape();
        EXPECT_FALSE(stage.historyEntries().empty());
        EXPECT_EQ(stage.storage.lastHistoryCleanupDate.get(), last) << "it is done another time";
    }
    EXPECT_EQ(stage.display.outcomes.size(), 3u);
}

} // namespace
