#include "platform/x11/X11Connection.h"

#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TextEditor.h"

#include <gtest/gtest.h>

#include <X11/Xlib.h>

namespace {

using namespace vocalith;
using namespace vocalith::test;

TEST(X11Connection, OutlivesErrorsAndTheServer)
{
    XDisplay display;
    const RecordedLog log;
    auto opened = X11Connection::open(display.name(), log.logger());
    ASSERT_TRUE(opened) << opened.error();
    auto& connection = **opened;

    constexpr unsigned long kNoWindow = 0x1234567;
    {
        X11ErrorTrap outer(connection);
        X11ErrorTrap inner(connection);
        XMapWindow(connection.display(), kNoWindow);
        EXPECT_EQ(inner.finish(), BadWindow);
        EXPECT_EQ(outer.finish(), 0);
    }
    EXPECT_EQ(log.lines().size(), 0);
    XMapWindow(connection.display(), kNoWindow);
    EXPECT_GT(connection.serverTime(), 0);
    EXPECT_TRUE(log.has("BadWindow"));

    bool isTold = false;
    const auto subscription = connection.lost.subscribe([&] { isTold = true; });
    display.kill();
    runUntil([&] { return isTold; });
    EXPECT_EQ(connection.serverTime(), 0);
    EXPECT_EQ(connection.atom("SOMETHING NEW"), 0);
}

TEST(X11Connection, SaysWhichServerIsMissing)
{
    const auto opened = X11Connection::open(":9999");
    ASSERT_FALSE(opened);
    EXPECT_NE(opened.error().find("\":9999\""), std::string::npos) << opened.error();
}

TEST(TextEditorTest, SavesWhatIsTyped)
{
    for (const auto kind : {TextEditor::Kind::mousepad, TextEditor::Kind::featherpad, TextEditor::Kind::xterm}) {
        XDisplay display;
        const TextEditor editor(display, kind, kind == TextEditor::Kind::xterm ? "" : "xy");
        display.press("a");
        editor.expectText(kind == TextEditor::Kind::xterm ? "a" : "axy");
    }
}

} // namespace
