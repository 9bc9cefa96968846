#include "tests/core/output/TypingStage.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Kind = TextTypingError::Kind;

namespace {

TEST(SimulatedKeystrokes, TypeTheTextAndLeaveTheClipboardAlone)
{
    struct Case {
        std::function<void(TypingStage&)> fault;
        std::optional<Kind> error;
        const char* line;
    };
    const std::vector<Case> cases{
        {[](auto&) {}, {}, "⌨️ Attempting keystroke simulation for 4 characters"},
        {[](auto& stage) { stage.keys.hasNoSource = true; }, Kind::couldNotCreateEventSource,
         "❌ Failed to create event source for keystroke simulation"},
        {[](auto& stage) {
             stage.keys.error = KeyEventsError{KeyEventsError::Kind::failed, "The connection is gone."};
         },
         Kind::keysNotPosted, "❌ Failed to paste text: The keys could not be pressed: The connection is gone."},
    };
    for (const auto& testCase : cases) {
        TypingStage stage;
        stage.storage.textTypingMode.set(TextTypingMode::simulateKeystrokes);
        testCase.fault(stage);
        const auto outcome = stage.typed("é語\n😀");
        EXPECT_EQ(outcome.has_value(), !testCase.error);
        if (testCase.error)
            EXPECT_EQ(outcome.error().kind, *testCase.error);
        else
            EXPECT_EQ(stage.keys.typed, std::vector<std::string>{"é語\n😀"});
        EXPECT_TRUE(stage.log.has(testCase.line));
        EXPECT_EQ(stage.pasteboard.changes(), 1) << "only the user's own";
    }
}

TEST(AccessibilityInsertion, SetsTheSelectedTextOfTheFocusedElementAndNothingElse)
{
    struct Case {
        bool isTrusted;
        bool hasElement;
        int error;
        TypingStage::Outcome outcome;
        const char* line;
    };
    const TypingStage::Outcome noElement = failure(TextTypingError{Kind::noFocusedElement, {}});
    const TypingStage::Outcome refused = failure(TextTypingError{Kind::elementRefused, "3"});
    const std::vector<Case> cases{
        {true, true, 0, TextTypingResult::success, "✅ Text inserted via Accessibility API"},
        {false, true, 0, TextTypingResult::permissionNeeded,
         "❌ Accessibility API typing requires accessibility permission"},
        {true, false, 0, noElement, "❌ Could not get focused UI element"},
        {true, true, 3, refused, "❌ Failed to set text via Accessibility API (error: 3"},
    };
    for (const auto& testCase : cases) {
        TypingStage stage;
        stage.storage.textTypingMode.set(TextTypingMode::accessibilityAPI);
        stage.accessibility.isTrusted = testCase.isTrusted;
        stage.accessibility.hasElement = testCase.hasElement;
        stage.accessibility.error = testCase.error;
        EXPECT_EQ(stage.typed("text"), testCase.outcome);
        EXPECT_TRUE(stage.log.has(testCase.line));
        const bool isInserted = testCase.outcome == TextTypingResult::success;
        EXPECT_EQ(stage.accessibility.inserted.size(), isInserted ? 1u : 0u);
        EXPECT_EQ(stage.log.has("❌ Text input failed"), !testCase.outcome.has_value());
        EXPECT_TRUE(stage.keys.posts.empty());
        EXPECT_EQ(stage.pasteboard.changes(), 1);
    }
}

TEST(AccessibilityInsertion, AStopIsNoFailure)
{
    TypingStage stage;
    stage.storage.textTypingMode.set(TextTypingMode::accessibilityAPI);
    stage.accessibility.hangsAtText = true;
    stage.type("text");
    stage.tasks.requestStop();
    stage.advance(0ms);
    ASSERT_TRUE(stage.outcome);
    EXPECT_EQ(stage.outcome->error().kind, Kind::cancelled);
    EXPECT_FALSE(stage.log.has("❌"));
}

TEST(TextTyping, NothingToTypeTouchesNothing)
{
    for (const auto mode : {TextTypingMode::smartPaste, TextTypingMode::simulateKeystrokes}) {
        TypingStage stage;
        stage.storage.textTypingMode.set(mode);
        EXPECT_EQ(stage.typed(""), TextTypingResult::success);
        EXPECT_TRUE(stage.keys.posts.empty() && stage.keys.typed.empty() && stage.pasteboard.writes.empty());
    }
}

TEST(TextTyping, PreprocessedTextHoldsNothingThatATerminalWouldObey)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"a\r\nb\rc\td", "a\nb\nc\td"},
        {"\x1B[31mred\x07\x7F \xC2\x9B", "[31mred "},
        {"bad \xFF\xFE utf", "bad \uFFFD\uFFFD utf"},
        {"é 語 😀 \u200Fعربي\u00A0", "é 語 😀 \u200Fعربي\u00A0"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(insertableText(text), expected);
}

} // namespace
