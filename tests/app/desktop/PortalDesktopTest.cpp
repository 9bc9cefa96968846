#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/app/desktop/ResidentProgram.h"
#include "tests/support/FakePortal.h"
#include "tests/support/MainLoop.h"
#include "tests/support/SwayCompositor.h"
#include "tests/support/WaylandFilter.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace vocalith;
using namespace vocalith::test;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* kSentence = "hello world";
constexpr const char* kPrecious = "what the user had copied before";
constexpr const char* kPlainText = "text/plain;charset=utf-8";

/// A Wayland desktop that lets programs do nothing but through its portals.
struct PortalDesktop {
    explicit PortalDesktop(FakePortal::Desktop how = {}) : portals(how) {}

    std::vector<std::string> environment() const
    {
        return changed(compositor.environment(),
                       {"WAYLAND_DISPLAY=" + filter.display(), "DBUS_SESSION_BUS_ADDRESS=" + portals.address()});
    }

    /// Until the paste keys have been pressed so many times.
    void waitForPaste(int count = 1) const
    {
        runUntil([&] { return std::ranges::count(portals.keys(), "keysym 118 up") == count; });
    }

    /// What the focused application gets when it pastes.
    std::string pasted(const std::string& type)
    {
        const auto pasted = portals.paste(type);
        runUntil([&] { return pasted->isDone; });
        return pasted->bytes;
    }

    SwayCompositor compositor;
    WaylandFilter filter{compositor.display(),
                         {"zwlr_data_control_manager_v1", "zwp_virtual_keyboard_manager_v1", "zwlr_layer_shell_v1",
                          "zwlr_foreign_toplevel_manager_v1"}};
    FakePortal portals;
};

TEST(DesktopPrograms, OnADesktopWithPortalsTheHeldShortcutBringsTheTextToTheApplication)
{
    PortalDesktop desktop;
    auto& portals = desktop.portals;
    ResidentProgram program(desktop.environment());
    EXPECT_EQ(program.command({"start"}), "Error: Vocalith is not running. Start it with: vocalith run\n");
    EXPECT_THAT(program.command({"doctor"}), HasSubstr("RemoteDesktop portal, not allowed so far"));
    program.start();
    runUntil([&] { return portals.shortcuts().size() == 1 && portals.questions() == 1; });
    portals.copy({{kPlainText, kPrecious}});

    const auto shortcut = portals.shortcuts()[0].id;
    portals.press(shortcut);
    program.speak(kSentence);
    portals.release(shortcut);
    desktop.waitForPaste();
    EXPECT_EQ(desktop.pasted(kPlainText), program.lastText() + " ");
    runUntil([&] { return portals.offered() == std::vector<std::string>{kPlainText}; });
    EXPECT_EQ(desktop.pasted(kPlainText), kPrecious);

    // The user has looked what the indicator of remote control does, and dictates again.
    portals.endSessions();
    EXPECT_EQ(program.command({"start"}), "");
    program.speak(kSentence);
    EXPECT_EQ(program.command({"stop"}), "");
    desktop.waitForPaste(2);
    EXPECT_EQ(desktop.pasted(kPlainText), program.lastText(2) + " ");
    program.terminate();
    EXPECT_TRUE(runUntil([&] { return portals.openSessions() == 0; }));

    program.start();
    EXPECT_TRUE(runUntil([&] { return portals.openSessions() == 2; }));
    EXPECT_EQ(portals.questions(), 1) << "the desktop's token was not kept";
    EXPECT_THAT(program.command({"doctor"}), HasSubstr("RemoteDesktop portal, allowed before"));
    program.terminate();
}

TEST(DesktopPrograms, WhenTheUserDeclinesTheTextIsInTheHistory)
{
    PortalDesktop desktop({.saysNo = true});
    ResidentProgram program(desktop.environment());
    program.start();
    EXPECT_TRUE(runUntil([&] { return testing::Matches(HasSubstr("Allow remote control"))(program.log()); }));
    EXPECT_EQ(program.command({"start"}), "");
    program.speak(kSentence);
    EXPECT_EQ(program.command({"stop"}), "");
    EXPECT_THAT(program.lastText(), HasSubstr("hello"));
    EXPECT_TRUE(runUntil([&] { return testing::Matches(HasSubstr("Could not deliver the text"))(program.log()); }));
    EXPECT_THAT(desktop.portals.keys(), Not(Contains("keysym 118 down")));
    program.terminate();
}

} // namespace
