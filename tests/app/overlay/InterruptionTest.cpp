// What becomes of a dictation that somebody else ends than its speaker.

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

TEST_F(Interruption, TheEndOfTheProgramKeepsWhatWasSaid)
{
    beginToSpeak();
    await(stage.overlay.shutDown());
    stage.engine.holdsTranscription = true;
    stage.clock.advance(1min);
    stage.release(Uuid{});
    beginToSpeak();
    stage.release(stage.journalShortcut);
    runUntil([&] { return !stage.engine.transcribed.empty(); });
    await(stage.overlay.shutDown());

    const auto entries = stage.historyEntries();
    ASSERT_EQ(entries.size(), 2u);
    for (const auto& entry : entries) {
        ASSERT_TRUE(errorMessage(entry));
        EXPECT_EQ(*errorMessage(entry), "Vocalith was ended before the text was delivered.");
        EXPECT_TRUE(fs::exists(*filePath(audioFile(entry).fileBookmark)));
    }
    EXPECT_TRUE(stage.output.delivered.empty());
    EXPECT_FALSE(stage.storage.crashRecoveryInfo.get()) << "it is in the history, and not to be recovered again";
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
    EXPECT_EQ(failed()->message, "The screen was locked before the dictation was finished.");
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

TEST_F(Interruption, AScreenThatIsLockedAtTheStartSuspendsToo)
{
    FakeScreenLock lock;
    lock.isLocked.set(true);
    bool isSuspended = false;
    const ShortcutSuspension suspension(lock, stage.overlay, [&](bool now) { isSuspended = now; });
    EXPECT_TRUE(isSuspended);
}

} // namespace
