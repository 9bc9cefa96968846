#include "core/output/FocusedTextOutput.h"
#include "core/pipeline/steps/AutoCopyToClipboardStep.h"
#include "core/pipeline/steps/OutputStep.h"
#include "core/pipeline/steps/SpacingStep.h"
#include "tests/core/output/TypingStage.h"
#include "tests/support/RecordedNotices.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

/// The last steps of a dictation with the real output, on a desktop in memory.
class OutputSteps : public testing::Test {
protected:
    void run(const std::string& transcript, OverlayActivationMode mode = AIPrompt())
    {
        context.transcript = transcript;
        context.activationMode = std::move(mode);
        stage.tasks.start(runAll());
        stage.advance(0ms);
    }

    Task<void> runAll()
    {
        const auto spaced = co_await spacing.run(context);
        const auto copied = co_await autoCopy.run(context);
        const auto put = co_await outputStep.run(context);
        goesOn = spaced && !*spaced && copied && !*copied && put && !*put;
    }

    TypingStage stage;
    FocusedTextOutput output{stage.service,    stage.keys,  stage.accessibility,
                             stage.focusedApp, stage.clock, stage.log.logger()};
    RecordedNotices notices;
    SpacingStep spacing;
    AutoCopyToClipboardStep autoCopy{stage.storage, &stage.service, stage.log.logger()};
    OutputStep outputStep{output, notices, stage.log.logger()};
    TranscriptProcessingContext context;
    bool goesOn = false;
};

TEST_F(OutputSteps, TwoDictationsInARowStandOneSpaceApart)
{
    run("one");
    stage.advance(100ms);
    run("");
    stage.advance(100ms);
    run("two");
    stage.advance(1s);
    EXPECT_EQ(stage.document, "one two ");
    EXPECT_EQ(stage.pasteboard.text(), "the user's");
    EXPECT_TRUE(goesOn);
}

TEST_F(OutputSteps, AnAutomaticCopyOutlastsTheRestoreOfThePaste)
{
    stage.storage.autoCopyToClipboard.set(true);
    for (const auto* const text : {"one", "two"}) { // the second one while the first one's restore is due
        run(text);
        stage.advance(100ms);
    }
    stage.advance(1s);
    EXPECT_EQ(stage.document, "one two ");
    EXPECT_EQ(stage.pasteboard.text(), "two ");
}

TEST_F(OutputSteps, WithoutAClipboardTheAutomaticCopyPassesTheTextOn)
{
    stage.storage.autoCopyToClipboard.set(true);
    AutoCopyToClipboardStep none{stage.storage, nullptr, Logger()};
    context.transcript = "text";
    EXPECT_EQ(await(none.run(context)), false);
    stage.pasteboard.writeError = PasteboardError{PasteboardError::Kind::failed, "No memory."};
    EXPECT_EQ(await(autoCopy.run(context)), false);
    EXPECT_TRUE(stage.log.has("Could not copy the text to the clipboard: "));
    EXPECT_EQ(context.transcript, "text");
}

TEST_F(OutputSteps, ThePromptSaysWhereTheTextGoesAndTheJournalKeepsItsOwn)
{
    AIPrompt copying;
    copying.mode = ActionMode::copyToClipboard;
    AIPrompt sending;
    sending.mode = ActionMode::pasteAndSend;

    context.historyEntry = HistoryEntry();
    run("journal", VoiceJournal());
    EXPECT_EQ(stage.pasteboard.text(), "the user's");
    EXPECT_EQ(context.destination, TextDestination::nowhere);
    context.historyEntry.reset();
    run("unrecorded", VoiceJournal());
    EXPECT_EQ(stage.pasteboard.text(), "unrecorded ") << "without a history it would be lost";
    EXPECT_EQ(context.destination, TextDestination::clipboard);
    run("copied", copying);
    EXPECT_EQ(stage.pasteboard.text(), "copied ");
    EXPECT_EQ(context.destination, TextDestination::clipboard);
    EXPECT_EQ(stage.document, "");
    run("sent", sending);
    stage.advance(1s);
    EXPECT_EQ(context.destination, TextDestination::application);
    EXPECT_EQ(stage.document, "sent ");
    EXPECT_EQ(stage.keys.posts.back().events.front().virtualKeyCode, 36);
}

TEST_F(OutputSteps, AFailedInsertionIsANoticeAndTheRunGoesOn)
{
    stage.readsAfter.reset();
    run("lost");
    stage.advance(3s);
    ASSERT_EQ(notices.shown.size(), 1u);
    EXPECT_EQ(notices.shown[0], "The application did not take the text. Your text has been automatically copied to "
                                "clipboard. You will still be able to paste it after transcription.");
    EXPECT_EQ(stage.pasteboard.text(), "lost ");
    EXPECT_TRUE(goesOn);
}

} // namespace
