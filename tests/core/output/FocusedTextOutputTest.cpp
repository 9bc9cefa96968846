#include "core/output/FocusedTextOutput.h"
#include "tests/core/output/TypingStage.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

const std::string kNotice =
    "Your text has been automatically copied to clipboard. You will still be able to paste it after transcription.";

class Output : public testing::Test {
protected:
    Result<TextDestination, TextOutputError> deliver(ActionMode action)
    {
        std::optional<Result<TextDestination, TextOutputError>> result;
        stage.tasks.start(storeResult(output.deliver("words ", action), result));
        for (int i = 0; i < 50; ++i)
            stage.advance(100ms);
        return result.value();
    }
    static Task<void> discard(Task<Result<TextDestination, TextOutputError>> delivery)
    {
        const auto delivered = co_await delivery;
        EXPECT_TRUE(delivered);
    }
    /// The document as it was when Return arrived there.
    std::optional<std::string> sent;

    void SetUp() override
    {
        stage.keys.whenPosted = [this, paste = stage.keys.whenPosted](const FakeKeyEvents::Post& post) {
            if (post.events.front().virtualKeyCode == 36)
                sent = stage.document;
            else
                paste(post);
        };
    }

    TypingStage stage;
    FocusedTextOutput output{stage.service,    stage.keys,  stage.accessibility,
                             stage.focusedApp, stage.clock, stage.log.logger("OutputStep")};
};

TEST_F(Output, DoesWithTheTextWhatTheUserWants)
{
    EXPECT_EQ(deliver(ActionMode::historyOnly), TextDestination::nowhere);
    EXPECT_EQ(stage.pasteboard.changes(), 1);
    EXPECT_TRUE(stage.keys.posts.empty());

    EXPECT_EQ(deliver(ActionMode::autoInsert), TextDestination::application);
    EXPECT_EQ(stage.document, "words ");
    EXPECT_EQ(stage.keys.posts.size(), 1u);
    EXPECT_EQ(stage.pasteboard.text(), "the user's");

    EXPECT_EQ(deliver(ActionMode::copyToClipboard), TextDestination::clipboard);
    EXPECT_EQ(stage.document, "words ");
    EXPECT_EQ(stage.pasteboard.text(), "words ");
    EXPECT_FALSE(stage.pasteboard.writes.back().isTransient);
}

TEST_F(Output, PressesReturnOnceThePasteHasArrived)
{
    stage.readsAfter = 1500ms;
    EXPECT_TRUE(deliver(ActionMode::pasteAndSend));
    EXPECT_EQ(sent, "words ");
    const std::vector<KeyEvent> expected{{36, true, 0}, {36, false, 0}};
    EXPECT_EQ(stage.keys.posts.back().events, expected);
    EXPECT_EQ(stage.keys.posts.back().state, KeyEvents::SourceState::hidSystem);
    EXPECT_TRUE(stage.log.has("Successfully simulated Enter key press"));

    stage.readsAfter.reset();
    sent.reset();
    EXPECT_FALSE(deliver(ActionMode::pasteAndSend));
    EXPECT_FALSE(sent) << "Return after a paste that nobody read";
}

/// An application has read the clipboard long before it shows the text, and handles a key that comes between first.
TEST_F(Output, PressesReturnOnceTheTextIsSeenWhereThatCanBeSeen)
{
    struct Case {
        const char* what;
        std::string text;
        std::function<void(FakeAccessibility&)> describe;
        std::optional<std::chrono::milliseconds> shownAfter;
        std::chrono::milliseconds sentAfter;
    };
    const auto plain = [](FakeAccessibility&) {};
    const std::vector<Case> cases{
        {"at once", "words ", plain, 0ms, 50ms},
        {"later", "words ", plain, 180ms, 200ms},
        {"with line breaks and in another script", "Liebe Frau Grün,\n\nviele Grüße aus 東京 ", plain, 180ms, 200ms},
        {"never as it was said", "words ", plain, std::nullopt, 500ms},
        {"nothing but white space", " \n ", plain, std::nullopt, 50ms},
        {"a password", "words ", [](auto& field) { field.isSecure = true; }, std::nullopt, 50ms},
        {"no field", "words ", [](auto& field) { field.hasElement = false; }, std::nullopt, 50ms},
        {"no bus", "words ", [](auto& field) { field.isTrusted = false; }, std::nullopt, 50ms},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.what);
        sent.reset();
        stage.accessibility.isTrusted = stage.accessibility.hasElement = true;
        stage.accessibility.isSecure = false;
        stage.accessibility.text.before = "said before ";
        testCase.describe(stage.accessibility);
        Timer shown;
        if (testCase.shownAfter)
            shown = stage.clock.after(*testCase.shownAfter,
                                      [&] { stage.accessibility.text.before += testCase.text + "\n"; });
        stage.tasks.start(discard(output.deliver(testCase.text, ActionMode::pasteAndSend)));
        stage.advance(0ms);
        for (auto passed = 0ms; passed < testCase.sentAfter; passed += 10ms) {
            EXPECT_FALSE(sent) << "after " << passed.count() << " ms";
            stage.advance(10ms);
        }
        EXPECT_TRUE(sent);
        stage.advance(1s);
    }
}

TEST_F(Output, PressesNoReturnInAnotherApplication)
{
    Timer switched = stage.clock.after(500ms, [&] {
        stage.focusedApp.application = FocusedApplication{"org.example.chat", "Chat", "Boss", 4712, false, {}};
    });
    stage.keys.holdsModifiers = false;
    stage.accessibility.text.before = "something else";
    EXPECT_TRUE(deliver(ActionMode::pasteAndSend));
    EXPECT_FALSE(sent);
    EXPECT_TRUE(stage.log.has("Not pressing Enter: another application has the focus now"));
}

TEST_F(Output, AReturnKeyThatCannotBePressedIsOnlyLogged)
{
    stage.keys.missingKeys = {36};
    EXPECT_TRUE(deliver(ActionMode::pasteAndSend));
    EXPECT_TRUE(stage.log.has("Failed to create Enter key events"));
    stage.storage.textTypingMode.set(TextTypingMode::accessibilityAPI);
    stage.keys.hasNoSource = true;
    EXPECT_TRUE(deliver(ActionMode::pasteAndSend));
    EXPECT_TRUE(stage.log.has("Failed to create event source for Enter key press"));
}

TEST_F(Output, WhateverFailsTheTextIsOnTheClipboardToStayAndTheNoticeSaysSo)
{
    using Fault = std::function<void(TypingStage&)>;
    const std::vector<std::pair<Fault, std::string>> faults{
        {[](auto& faulty) { faulty.readsAfter.reset(); }, "The application did not take the text."},
        {[](auto& faulty) { faulty.keys.hasNoSource = true; }, "Vocalith cannot press keys on this desktop."},
        {[](auto& faulty) {
             faulty.storage.textTypingMode.set(TextTypingMode::accessibilityAPI);
             faulty.accessibility.hasElement = false;
         },
         "No text field has the keyboard focus."},
        {[](auto& faulty) { faulty.accessibility.isTrusted = false; },
         "This way of inserting text needs the accessibility service of the desktop, which is not running."},
    };
    for (const auto& [fault, reason] : faults) {
        stage.pasteboard.copyByOther("the user's");
        fault(stage);
        const auto delivered = deliver(ActionMode::autoInsert);
        ASSERT_FALSE(delivered);
        EXPECT_EQ(delivered.error(), (TextOutputError{reason, kNotice}));
        EXPECT_EQ(stage.pasteboard.text(), "words ");
        EXPECT_FALSE(stage.pasteboard.writes.back().isTransient) << "clipboard histories leave it out";
    }
}

TEST_F(Output, WithoutAClipboardNothingIsCalledRescued)
{
    stage.pasteboard.writeError = PasteboardError{PasteboardError::Kind::unavailable, "Start a desktop."};
    const TextOutputError expected{"Vocalith cannot reach the clipboard of this desktop. Start a desktop.", ""};
    for (const auto action : {ActionMode::autoInsert, ActionMode::copyToClipboard}) {
        const auto delivered = deliver(action);
        ASSERT_FALSE(delivered);
        EXPECT_EQ(delivered.error(), expected);
    }
}

} // namespace
