#include "models/ModifierFlags.h"
#include "tests/core/output/TypingStage.h"

#include <gtest/gtest.h>

#include <unistd.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Kind = TextTypingError::Kind;
using Mode = TextTypingMode;
using Reader = PasteboardFetch::Reader;
using State = KeyEvents::SourceState;

namespace {

constexpr auto kCommand = modifier_flags::command;

/// Command, the key, and both up again.
FakeKeyEvents::Post chord(State state, int key, std::uint64_t more = 0)
{
    return {state, {{55, true, kCommand}, {key, true, kCommand | more}, {key, false, kCommand | more}, {55, false, 0}}};
}

struct ModeCase {
    Mode mode;
    State state;
    int key;
    const char* label;
};

const std::vector<ModeCase> kModes{
    {Mode::smartPaste, State::privateState, 9, "Smart Paste Command+V"},
    {Mode::pasteStandard, State::hidSystem, 9, "Command+V"},
    {Mode::pasteColemak, State::hidSystem, 2, "Command+D (Colemak)"},
    {Mode::pasteDvorak, State::hidSystem, 47, "Command+. (Dvorak)"},
    {Mode::pasteOptimot, State::hidSystem, 44, "Command+/ (Optimot)"},
};

TEST(Paste, EachModePressesItsKeyAndTheClipboardComesBackWithAllItsTypesAfterThreeTenths)
{
    for (const auto& mode : kModes) {
        for (const bool isTerminal : {false, true}) {
            SCOPED_TRACE(mode.label);
            TypingStage stage;
            stage.storage.textTypingMode.set(mode.mode);
            stage.focusedApp.application->isTerminal = isTerminal;
            const auto image = std::make_shared<const std::string>("\x89PNG\0\xFF", 6);
            const auto words = std::make_shared<const std::string>("words");
            stage.pasteboard.copyByOther({{"text/html", words}, {"image/png", image}, {"text/plain", words}});

            stage.type("hello 語 ");
            ASSERT_TRUE(stage.outcome) << "it waits for more than the application";
            EXPECT_EQ(*stage.outcome, TextTypingResult::success);
            EXPECT_EQ(stage.document, "hello 語 ");
            const auto shift = isTerminal ? modifier_flags::shift : 0;
            EXPECT_EQ(stage.keys.posts, std::vector{chord(mode.state, mode.key, shift)});
            const FakePasteboard::Write written{"hello 語 ", mode.mode == Mode::smartPaste};
            EXPECT_EQ(stage.pasteboard.writes, std::vector{written});
            EXPECT_TRUE(stage.log.has("📋 Attempting to paste text (length: 8, preprocess: false"));
            EXPECT_TRUE(stage.log.has("✅ Text pasted successfully"));

            stage.advance(299ms);
            EXPECT_EQ(stage.pasteboard.text(), "hello 語 ");
            stage.advance(1ms);
            ASSERT_EQ(stage.pasteboard.content().items.size(), 1u);
            const auto& back = stage.pasteboard.content().items[0].representations;
            ASSERT_EQ(back.size(), 3u);
            EXPECT_EQ(back[0].type, "text/html");
            EXPECT_EQ(back[1].payload, image);
        }
    }
}

TEST(Paste, AKeyboardOfItsOwnHasTheVWhereAUSKeyboardHasItWhateverTheUsersLayout)
{
    for (const auto& mode : kModes) {
        SCOPED_TRACE(mode.label);
        TypingStage stage;
        stage.keys.isUSKeyboard = true;
        stage.storage.textTypingMode.set(mode.mode);
        EXPECT_EQ(stage.typed("text"), TextTypingResult::success);
        EXPECT_EQ(stage.keys.posts, std::vector{chord(mode.state, 9)});
    }
}

TEST(Paste, SmartPasteBorrowsAUSLayoutForATenthOfASecond)
{
    const std::string us = "com.apple.keylayout.US";
    const std::string abc = "com.apple.keylayout.ABC";
    struct Case {
        std::vector<std::string> layouts;
        std::optional<std::string> active;
        bool isRefusing;
        std::optional<std::string> during;
    };
    const std::vector<Case> cases{
        {{"de", abc, us}, "de", false, us}, {{"de", abc}, "de", false, abc}, {{"de", "fr"}, "de", false, "de"},
        {{"de", us}, "de", true, "de"},     {{us}, us, false, us},           {{us}, std::nullopt, false, std::nullopt},
    };
    for (const auto& testCase : cases) {
        TypingStage stage;
        stage.layouts.layouts = testCase.layouts;
        stage.layouts.active = testCase.active;
        stage.layouts.isRefusing = testCase.isRefusing;
        stage.type("x");
        EXPECT_EQ(stage.layouts.active, testCase.during);
        const bool isSwitched = testCase.during == us || testCase.during == abc;
        EXPECT_EQ(stage.log.has("🔤 Switched to US QWERTY for smart paste"), isSwitched);
        EXPECT_EQ(stage.keys.posts, std::vector{chord(State::privateState, 9)});
        stage.advance(99ms);
        EXPECT_EQ(stage.layouts.active, testCase.during);
        stage.advance(1ms);
        EXPECT_EQ(stage.layouts.active, testCase.active);
    }
}

TEST(Paste, ASecondSmartPasteWithinATenthOfASecondStillEndsInTheUsersLayout)
{
    TypingStage stage;
    stage.type("one ");
    stage.advance(50ms);
    stage.type("two ");
    stage.advance(60ms);
    EXPECT_EQ(stage.layouts.active, "com.apple.keylayout.US") << "the first one's switch back hits the second one";
    stage.advance(40ms);
    EXPECT_EQ(stage.layouts.active, "de");
}

TEST(Paste, WhatBecomesOfTheTextDecidesOverResultAndClipboard)
{
    struct Case {
        const char* what;
        std::optional<std::chrono::milliseconds> readsAfter;
        Reader reader;
        std::optional<std::chrono::milliseconds> otherCopiesAfter;
        std::optional<Kind> error;
        std::chrono::milliseconds known; ///< when the result comes
        std::string clipboard;           ///< in the end
    };
    const std::vector<Case> cases{
        {"late, within the restore", 250ms, Reader::focusedApplication, {}, {}, 250ms, "the user's"},
        {"very late", 2299ms, Reader::focusedApplication, {}, {}, 2299ms, "the user's"},
        {"the desktop does not say who", 10ms, Reader::unknown, {}, {}, 10ms, "the user's"},
        {"never", {}, Reader::focusedApplication, {}, Kind::notFetched, 2300ms, "ours"},
        {"only a clipboard manager", 10ms, Reader::other, {}, Kind::notFetched, 2300ms, "ours"},
        {"taken before", {}, Reader::focusedApplication, 100ms, Kind::clipboardTaken, 100ms, "other's"},
        {"taken after", 10ms, Reader::focusedApplication, 100ms, {}, 10ms, "other's"},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.what);
        TypingStage stage;
        stage.readsAfter = testCase.readsAfter;
        stage.reader = testCase.reader;
        Timer copy;
        if (testCase.otherCopiesAfter)
            copy = stage.clock.after(*testCase.otherCopiesAfter, [&] { stage.pasteboard.copyByOther("other's"); });
        stage.type("ours");
        stage.advance(testCase.known - 1ms);
        EXPECT_FALSE(stage.outcome);
        stage.advance(1ms);
        ASSERT_TRUE(stage.outcome);
        EXPECT_EQ(stage.outcome->has_value(), !testCase.error);
        if (testCase.error) {
            EXPECT_EQ(stage.outcome->error().kind, *testCase.error);
            EXPECT_TRUE(stage.log.has("❌ Failed to paste text: "));
            EXPECT_TRUE(stage.log.has("❌ Text input failed"));
            EXPECT_EQ(stage.analytics.names(), std::vector<std::string>{"overlay_error_typing"});
        }
        stage.advance(400ms);
        EXPECT_EQ(stage.pasteboard.text(), testCase.clipboard);
    }
}

TEST(Paste, TextsAtTheSameTimeAreInsertedOneAfterTheOther)
{
    TypingStage stage;
    stage.readsAfter = 100ms;
    stage.type("one ");
    std::optional<TypingStage::Outcome> second;
    std::optional<TypingStage::Outcome> third;
    TaskScope dropped;
    dropped.start(storeResult(stage.service.typeText("dropped ", false), second));
    stage.tasks.start(storeResult(stage.service.typeText("two ", false), third));
    dropped.requestStop();
    for (int i = 0; i < 10; ++i)
        stage.advance(100ms);
    EXPECT_EQ(stage.document, "one two ");
    ASSERT_TRUE(second && third);
    EXPECT_EQ(second->error().kind, Kind::cancelled);
    EXPECT_EQ(*third, TextTypingResult::success);
    EXPECT_EQ(stage.pasteboard.text(), "the user's");
}

TEST(Paste, AStopBeforeTheKeystrokeInsertsNothingAndLeavesTheClipboardAsItWas)
{
    using Hold = std::function<void(TypingStage&)>;
    const std::vector<std::pair<const char*, Hold>> stages{
        {"application", [](auto& stage) { stage.focusedApp.hangs = true; }},
        {"modifiers", [](auto& stage) { stage.keys.holdsModifiers = true; }},
        {"snapshot", [](auto& stage) { stage.pasteboard.holdsSnapshot = true; }},
        {"write", [](auto& stage) { stage.pasteboard.holdsWrite = true; }},
    };
    for (const auto& [name, hold] : stages) {
        for (const bool isRestorePending : {false, true}) {
            SCOPED_TRACE(name);
            TypingStage stage;
            if (isRestorePending)
                stage.type("before");
            const auto posts = stage.keys.posts.size();
            hold(stage);
            stage.type("text");
            if (!stage.outcome) { // with a snapshot already taken nothing waits for one
                stage.tasks.requestStop();
                stage.advance(0ms);
                ASSERT_TRUE(stage.outcome);
                EXPECT_EQ(stage.outcome->error().kind, Kind::cancelled);
                EXPECT_EQ(stage.keys.posts.size(), posts);
                EXPECT_FALSE(stage.log.has("❌"));
            }
            stage.advance(3s);
            EXPECT_EQ(stage.pasteboard.text(), "the user's");
        }
    }
}

TEST(Paste, AStopAfterTheKeystrokeStillBringsTheClipboardBackInTime)
{
    TypingStage stage;
    stage.readsAfter = 200ms;
    stage.type("text");
    stage.tasks.requestStop();
    stage.advance(0ms);
    EXPECT_EQ(stage.outcome->error().kind, Kind::cancelled);
    stage.advance(299ms);
    EXPECT_EQ(stage.document, "text");
    stage.advance(1ms);
    EXPECT_EQ(stage.pasteboard.text(), "the user's");
}

TEST(Paste, WaitsUntilTheUserHasLetGoOfTheShortcut)
{
    for (const bool areReleased : {true, false}) {
        TypingStage stage;
        stage.keys.holdsModifiers = true;
        stage.type("text");
        stage.advance(1s);
        EXPECT_TRUE(stage.keys.posts.empty());
        EXPECT_TRUE(stage.pasteboard.writes.empty()) << "the clipboard is borrowed for no reason";
        EXPECT_EQ(stage.keys.waits, std::vector<double>{2});
        stage.keys.endWait(areReleased);
        stage.advance(0ms);
        EXPECT_EQ(stage.document, "text") << "keys that stay down are no reason to lose the text";
    }
}

TEST(Paste, TheProgramsOwnFieldTakesTheTextDirectly)
{
    struct Case {
        int processId;
        bool isHandled;
        bool isTrusted;
        Mode mode;
        bool isPosted;
        const char* line;
    };
    const int own = ::getpid();
    const std::vector<Case> cases{
        {own, true, false, Mode::pasteStandard, false, "Using responder chain paste fallback"},
        {own, true, false, Mode::smartPaste, false, "Using responder chain paste fallback for smart paste"},
        {own, true, true, Mode::pasteStandard, false, ""},
        {own, false, false, Mode::pasteStandard, true, "Using responder chain paste fallback"},
        {own + 1, true, false, Mode::pasteStandard, true, "Using responder chain paste fallback"},
        {0, false, false, Mode::smartPaste, true, "Using responder chain paste fallback for smart paste"},
    };
    for (const auto& testCase : cases) {
        TypingStage stage;
        stage.storage.textTypingMode.set(testCase.mode);
        stage.accessibility.isTrusted = testCase.isTrusted;
        stage.focusedApp.application->processId = testCase.processId;
        std::vector<std::string> own_texts;
        stage.service.setPasteIntoOwnWindow([&](const std::string& text) {
            if (testCase.isHandled)
                own_texts.push_back(text);
            return testCase.isHandled;
        });
        EXPECT_EQ(stage.typed("text"), TextTypingResult::success);
        EXPECT_EQ(stage.keys.posts.size(), testCase.isPosted ? 1u : 0u);
        EXPECT_EQ(own_texts.size(), testCase.isPosted ? 0u : 1u);
        EXPECT_EQ(stage.log.has("Using responder chain paste fallback"), !testCase.isTrusted);
        const auto lines = stage.log.lines();
        EXPECT_TRUE(testCase.isTrusted || std::ranges::find(lines, testCase.line) != lines.end());
        EXPECT_EQ(stage.pasteboard.text(), "the user's");
    }
}

TEST(Paste, WhereKeysOrClipboardFailTheTextIsNotCalledInserted)
{
    struct Case {
        std::function<void(TypingStage&)> fault;
        Kind kind;
        const char* line;
        std::string clipboard;
    };
    const std::vector<Case> cases{
        {[](auto& stage) { stage.keys.hasNoSource = true; }, Kind::couldNotCreateEventSource,
         "❌ Failed to create event source for Smart Paste Command+V", "text"},
        {[](auto& stage) { stage.keys.missingKeys = {9}; }, Kind::keysNotPosted,
         "❌ Failed to create one or more events for Smart Paste Command+V", "text"},
        {[](auto& stage) { stage.keys.missingKeys = {55}; }, Kind::keysNotPosted,
         "❌ Failed to create one or more events for Smart Paste Command+V", "text"},
        {[](auto& stage) {
             stage.keys.error = KeyEventsError{KeyEventsError::Kind::refused, {}};
         },
         Kind::keysNotPosted, "❌ Failed to paste text: The desktop does not let Vocalith press keys.", "text"},
        {[](auto& stage) {
             stage.pasteboard.writeError = PasteboardError{PasteboardError::Kind::failed, "No memory."};
         },
         Kind::clipboardNotWritten, "The clipboard could not be used: No memory.", "the user's"},
    };
    for (const auto& testCase : cases) {
        TypingStage stage;
        testCase.fault(stage);
        const auto outcome = stage.typed("text");
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.error().kind, testCase.kind);
        EXPECT_TRUE(stage.log.has(testCase.line)) << testCase.line;
        EXPECT_EQ(stage.pasteboard.text(), testCase.clipboard);
        EXPECT_EQ(stage.layouts.active, "de");
    }
}

} // namespace
