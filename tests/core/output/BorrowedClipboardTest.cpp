#include "tests/core/output/TypingStage.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

TEST(BorrowedClipboard, TextsInAQuickRowBorrowTheClipboardOnce)
{
    TypingStage stage;
    stage.type("one ");
    stage.advance(200ms);
    stage.type("two ");
    stage.advance(299ms);
    EXPECT_EQ(stage.pasteboard.text(), "two ") << "restored by the first one's timer";
    stage.advance(1ms);
    EXPECT_EQ(stage.pasteboard.text(), "the user's");
    EXPECT_EQ(stage.document, "one two ");
    EXPECT_EQ(stage.pasteboard.restores, 1);

    stage.type("three ");
    stage.pasteboard.copyByOther("copied meanwhile");
    stage.type("four ");
    stage.advance(300ms);
    EXPECT_EQ(stage.pasteboard.text(), "copied meanwhile");
}

TEST(BorrowedClipboard, WhatIsCopiedWhileTheClipboardIsSavedComesBack)
{
    TypingStage stage;
    stage.pasteboard.duringSnapshot = [&] { stage.pasteboard.copyByOther("copied meanwhile"); };
    EXPECT_EQ(stage.typed("text"), TextTypingResult::success);
    EXPECT_EQ(stage.pasteboard.text(), "copied meanwhile");
}

TEST(BorrowedClipboard, ATextThatCannotBeWrittenStillBringsBackWhatWasThereBeforeTheOneBefore)
{
    TypingStage stage;
    stage.type("one");
    stage.pasteboard.writeError = PasteboardError{PasteboardError::Kind::failed, "No memory."};
    EXPECT_FALSE(stage.typed("two"));
    EXPECT_EQ(stage.pasteboard.text(), "the user's");
}

TEST(BorrowedClipboard, ACopyWaitsUntilTheClipboardIsNotOnLoan)
{
    TypingStage stage;
    stage.readsAfter = 100ms;
    stage.type("text");
    std::optional<Result<void, PasteboardError>> copied;
    stage.tasks.start(storeResult(stage.service.copy("for good"), copied));
    stage.advance(0ms);
    EXPECT_FALSE(copied);
    stage.advance(100ms);
    EXPECT_EQ(stage.document, "text");
    EXPECT_EQ(stage.outcome, TextTypingResult::success);
    EXPECT_TRUE(copied && *copied);
    stage.advance(3s);
    EXPECT_EQ(stage.pasteboard.text(), "for good");
}

TEST(BorrowedClipboard, AnOwnerThatDoesNotAnswerKeepsNobodyFromPasting)
{
    for (const bool isError : {false, true}) {
        TypingStage stage;
        stage.pasteboard.answersInPart = !isError;
        if (isError)
            stage.pasteboard.snapshotError = PasteboardError{PasteboardError::Kind::failed, "No answer."};
        EXPECT_EQ(stage.typed("text"), TextTypingResult::success);
        EXPECT_EQ(stage.document, "text");
        EXPECT_TRUE(stage.log.has("Not all of the clipboard could be saved"));
        EXPECT_EQ(stage.pasteboard.text(), "") << "our own text stays behind";
    }
}

TEST(BorrowedClipboard, FiftyMegabytesAreHandedAroundNotCopied)
{
    TypingStage stage;
    const auto large = std::make_shared<const std::string>(50'000'000, 'x');
    stage.pasteboard.copyByOther({{"image/png", large}});
    EXPECT_EQ(stage.typed(*large), TextTypingResult::success);
    EXPECT_EQ(stage.document.size(), large->size());
    EXPECT_EQ(stage.pasteboard.content().items[0].representations[0].payload, large);
}

TEST(BorrowedClipboard, AnEndOfTheProgramPutsBackWhatIsDue)
{
    TypingStage stage;
    stage.type("text");
    await(stage.service.shutDown());
    EXPECT_EQ(stage.pasteboard.text(), "the user's");
    EXPECT_EQ(stage.layouts.active, "de");
}

} // namespace
