#include "core/output/FocusContextService.h"
#include "core/output/FocusedTextOutput.h"
#include "core/output/typing/TextTypingService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "platform/atspi/AtspiAccessibility.h"
#include "tests/platform/x11/insertion/X11Desk.h"
#include "tests/support/FakeAnalytics.h"
#include "tests/support/TimeLimit.h"

#include <csignal>
#include <tuple>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Kind = TextEditor::Kind;
using Mode = TextTypingMode;

namespace {

/// The whole way from the text to a third-party application on a display.
class Insertion : public testing::Test {
protected:
    Insertion()
    {
        // What the user had copied, by a program of its own.
        EXPECT_TRUE(await(userProgram.writeText("the user's", false)));
        EXPECT_TRUE(await(accessibility.connected()));
    }

public:
    ~Insertion() override
    {
        await(context.shutDown());
        await(service.shutDown());
        await(accessibility.shutDown());
    }

protected:
    auto deliver(const std::string& text, ActionMode action = ActionMode::autoInsert)
    {
        auto delivered = await(output.deliver(text, action));
        reason = delivered ? "" : delivered.error().reason;
        return delivered;
    }
    std::string clipboardText() { return desk.read("UTF8_STRING"); }
    void waitForAccessibility(const TextEditor& editor)
    {
        runUntil([&] {
            const auto element = await(accessibility.focusedElement());
            return element && element->processId() == editor.processId();
        });
    }

    X11Desk desk{{.hasWindowManager = true, .hasAccessibility = true}};
    std::unique_ptr<X11Connection> userConnection = desk.connect();
    X11Pasteboard userProgram{*userConnection, desk.clock, Logger()};
    AtspiAccessibility accessibility{desk.clock, desk.display.busAddress()};
    FakeAnalytics analytics;
    PersistentAppStorage storage{desk.display.folder() / "settings.json", desk.clock, Logger()};
    TextTypingService service{{desk.clipboard, desk.keys, desk.layouts, accessibility, desk.focus},
                              storage,
                              desk.clock,
                              analytics,
                              desk.log.logger()};
    FocusedTextOutput output{service, desk.keys, accessibility, desk.focus, desk.clock, desk.log.logger()};
    std::string reason; ///< why the last delivery failed
    FocusContextService context{desk.focus, accessibility, desk.clock};
};

class EveryWay : public Insertion, public testing::WithParamInterface<std::tuple<Kind, Mode>> {};

INSTANTIATE_TEST_SUITE_P(Insertion, EveryWay,
                         testing::Combine(testing::Values(Kind::mousepad, Kind::featherpad),
                                          testing::Values(Mode::smartPaste, Mode::pasteStandard,
                                                          Mode::simulateKeystrokes, Mode::accessibilityAPI)));

TEST_P(EveryWay, IsExactTwiceInARowAndTheClipboardComesBack)
{
    const auto [kind, mode] = GetParam();
    const std::string text = "Grüße — 日本 🎉 ";
    storage.textTypingMode.set(mode);
    const TextEditor editor(desk.display, kind);
    waitForAccessibility(editor);
    EXPECT_TRUE(deliver(text)) << reason;
    EXPECT_TRUE(deliver(text)) << reason;
    editor.expectText(text + text);
    EXPECT_TRUE(runUntil([&] { return clipboardText() == "the user's"; }));
}

TEST_F(Insertion, SmartPasteDoesNotDependOnTheLayoutAndGivesItBack)
{
    desk.display.setLayout("de,us", "dvorak,");
    const auto layout = desk.layouts.current();
    const TextEditor editor(desk.display, Kind::featherpad);
    EXPECT_TRUE(deliver("Umlaut ä "));
    EXPECT_TRUE(runUntil([&] { return desk.layouts.current() == layout; }));
    desk.display.setLayout("us");
    editor.expectText("Umlaut ä ");
}

TEST_F(Insertion, ReturnComesAfterThePaste)
{
    for (const auto kind : {Kind::mousepad, Kind::featherpad}) {
        const TextEditor editor(desk.display, kind);
        waitForAccessibility(editor);
        EXPECT_TRUE(deliver("one ", ActionMode::pasteAndSend));
        EXPECT_TRUE(deliver("two ", ActionMode::pasteAndSend));
        editor.expectText("one \ntwo \n");
    }
}

TEST_F(Insertion, ATextThatAHungApplicationDoesNotReadIsOnTheClipboardAndSaidToBeThere)
{
    const TextEditor editor(desk.display, Kind::mousepad);
    editor.signal(SIGSTOP);
    const auto delivered = deliver("kept ");
    ASSERT_FALSE(delivered);
    EXPECT_EQ(delivered.error().reason, "The application did not take the text.");
    EXPECT_NE(delivered.error().rescue, "");
    EXPECT_EQ(clipboardText(), "kept ");
    editor.signal(SIGCONT);
}

TEST_F(Insertion, TheContextOfAnEditorIsReadAndAHungOneCostsLittle)
{
    const TextEditor editor(desk.display, Kind::mousepad, "Dear Sir, ");
    waitForAccessibility(editor);
    desk.display.press("ctrl+End");
    FocusContext read;
    runUntil([&] {
        read = await(context.read());
        return !read.textBeforeCursor.empty() && !read.windowTitle.empty() && !read.visibleText.empty();
    });
    EXPECT_EQ(read.textBeforeCursor, "Dear Sir, ");
    EXPECT_EQ(read.applicationName, "Mousepad");
    EXPECT_NE(read.windowTitle.find("Mousepad.txt"), std::string::npos) << read.windowTitle;
    EXPECT_NE(read.visibleText.find("Dear Sir, "), std::string::npos) << read.visibleText;

    editor.signal(SIGSTOP);
    EXPECT_TRUE(keepsLimit(260ms, [&] { EXPECT_EQ(await(context.read()).textBeforeCursor, ""); }));
    editor.signal(SIGCONT);
}

} // namespace
