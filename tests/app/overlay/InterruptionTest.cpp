// What becomes of a dictation that somebody else ends than its speaker.

#include "app/overlay/RemoteControl.h"
#include "app/overlay/ShortcutSuspension.h"
#include "tests/app/overlay/DictationStage.h"
#include "tests/support/FakeScreenLock.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

class Interruption : public testing::Test {
protected:
    Interruption() { stage.loadConfiguration(); }

    void beginToSpeak()
    {
        stage.press(stage.journalShortcut);
        stage.speak(1s);
    }
    const dictation_outcome::Failed* failed() const
    {
        return std::get_if<dictation_outcome::Failed>(&stage.display.outcomes.back());
    }

    DictationStage stage;
};

void expectKeptWords(bool isStillSpoken)
{
    DictationStage stage;
    stage.loadConfiguration();
    stage.engine.holdsTranscription = true;
    stage.press(stage.journalShortcut);
    stage.speak(1s);
    if (!isStillSpoken) {
        stage.release(stage.journalShortcut);
        runUntil([&] { return !stage.engine.transcribed.empty(); });
    }
    await(stage.overlay.shutDown());

    const auto entries = stage.historyEntries();
    ASSERT_EQ(entries.size(), 1u);
    ASSERT_TRUE(errorMessage(entries[0]));
    EXPECT_EQ(*errorMessage(entries[0]), "Vocalith was ended before the text was delivered.");
    EXPECT_TRUE(fs::exists(*filePath(audioFile(entries[0]).fileBookmark)));
    EXPECT_TRUE(stage.output.delivered.empty());
    EXPECT_FALSE(stage.storage.crashRecoveryInfo.get()) << "it is in the history, and not to be recovered again";
}

TEST(TheEndOfTheProgram, KeepsWhatWasSaid)
{
    for (const bool isStillSpoken : {true, false})
        expectKeptWords(isStillSpoken);
}

TEST_F(Interruption, OnceTheProgramEndsNothingBeginsAnyMore)
{
    FakeScreenLock lock;
    bool isSuspended = false;
    ShortcutSuspension suspension(lock, stage.overlay, [&](bool now) {
        if (now)
            stage.release(stage.journalShortcut);
        isSuspended = now;
    });
    RemoteControl remote(stage.notifier, stage.overlay, stage.configuration, lock, [] {});
    beginToSpeak();
    stage.overlay.close();
    suspension.suspendForGood();
    remote.close();
    stage.release(Uuid{});
    stage.press(stage.promptShortcut); // still on its way
    EXPECT_FALSE(remote.carryOut({InstanceRequest::Action::start, {}}));
    EXPECT_FALSE(remote.carryOut({InstanceRequest::Action::present, {}})) << "windows are about to go";
    stage.waitForOutcome();
    ASSERT_TRUE(failed());
    EXPECT_EQ(failed()->message, "Vocalith was ended before the text was delivered.");

    stage.release(Uuid{});
    stage.press(stage.journalShortcut);
    EXPECT_FALSE(stage.overlay.isShowingOverlay());
    EXPECT_EQ(stage.input.requests().size(), 1u) << "the microphone was opened again";
    lock.isLocked.set(true);
    lock.isLocked.set(false);
    suspension.setRecordingShortcut(false);
    EXPECT_TRUE(isSuspended);
}

TEST_F(Interruption, TheEndOfTheProgramLeavesWordsThatAreInTheHistoryAlone)
{
    stage.output.holds = true;
    beginToSpeak();
    stage.release(stage.journalShortcut);
    runUntil([&] { return stage.output.asked > 0; });
    await(stage.overlay.shutDown());
    const auto entries = stage.historyEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(finalText(entries[0]), "hello world");
    EXPECT_TRUE(fs::exists(*filePath(audioFile(entries[0]).fileBookmark)));
    ASSERT_TRUE(failed());
    EXPECT_TRUE(failed()->historyHasText);
}

TEST_F(Interruption, ATapIsNoDictationThen)
{
    stage.press(stage.journalShortcut);
    stage.speak(200ms);
    await(stage.overlay.shutDown());
    EXPECT_TRUE(stage.historyEntries().empty());
    EXPECT_EQ(stage.recordingsOnDisk(), 0u);
}

TEST_F(Interruption, ALockedScreenEndsTheDictationBeforeItTakesTheShortcuts)
{
    FakeScreenLock lock;
    std::vector<bool> suspended;
    ShortcutSuspension suspension(lock, stage.overlay, [&](bool isSuspended) {
        if (isSuspended)
            stage.release(stage.journalShortcut); // what a shortcut that is taken away amounts to
        suspended.push_back(isSuspended);
    });
    beginToSpeak();
    lock.isLocked.set(true);
    stage.waitForOutcome();
    ASSERT_TRUE(failed());
    EXPECT_EQ(failed()->message, "The screen was locked before the text was delivered.");
    EXPECT_TRUE(failed()->historyEntry);
    EXPECT_TRUE(stage.output.delivered.empty()) << "nobody is there to see what it is typed into";

    suspension.setRecordingShortcut(true);
    suspension.setRecordingShortcut(false);
    EXPECT_TRUE(suspended.back()) << "the screen is still locked";
    suspension.setRecordingShortcut(true);
    lock.isLocked.set(false);
    EXPECT_TRUE(suspended.back()) << "a shortcut is still recorded";
    suspension.setRecordingShortcut(false);
    EXPECT_FALSE(suspended.back());
}

TEST_F(Interruption, ALockedScreenIsGivenNoTextThatWasOnItsWay)
{
    FakeScreenLock lock;
    const ShortcutSuspension suspension(lock, stage.overlay, [](bool) {});
    const struct {
        HistoryStoragePolicy history;
        bool isRecognised;
        bool hasText; ///< the history has it
        std::vector<FakePasteboard::Write> copied;
    } kCases[] = {
        {HistoryStoragePolicy::forever, false, false, {}},
        {HistoryStoragePolicy::forever, true, true, {}},
        {HistoryStoragePolicy::disabled, false, false, {}},
        {HistoryStoragePolicy::disabled, true, false, {{"hello world ", false}}},
    };
    for (const auto& one : kCases) {
        stage.storage.historyStoragePolicy.set(one.history);
        stage.engine.holdsTranscription = !one.isRecognised;
        stage.output.holds = true;
        stage.engine.transcribed.clear();
        stage.output.asked = 0;
        stage.release(Uuid{});
        beginToSpeak();
        stage.release(stage.journalShortcut);
        runUntil([&] { return one.isRecognised ? stage.output.asked > 0 : !stage.engine.transcribed.empty(); });
        lock.isLocked.set(true);
        stage.waitForOutcome();
        stage.clock.advance(1h);
        lock.isLocked.set(false);

        ASSERT_TRUE(failed());
        EXPECT_EQ(failed()->message, "The screen was locked before the text was delivered.");
        EXPECT_EQ(failed()->historyHasText, one.hasText);
        EXPECT_EQ(failed()->historyEntry.has_value(), one.history != HistoryStoragePolicy::disabled);
        EXPECT_TRUE(failed()->recording && fs::exists(*failed()->recording));
        EXPECT_EQ(stage.pasteboard.writes, one.copied);
        EXPECT_EQ(failed()->detail, one.copied.empty() ? "" : "Your words are on the clipboard.");
        EXPECT_TRUE(stage.output.delivered.empty());
    }
}

TEST_F(Interruption, AScreenThatIsLockedAtTheStartSuspendsToo)
{
    FakeScreenLock lock;
    lock.isLocked.set(true);
    bool isSuspended = false;
    const ShortcutSuspension suspension(lock, stage.overlay, [&](bool now) { isSuspended = now; });
    EXPECT_TRUE(isSuspended);
}

} // namespace
