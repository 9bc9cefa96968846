#include "app/desktop/ports/DisplayChoice.h"

#include <gtest/gtest.h>

#include <map>

using namespace vocalith;

namespace {

struct Session {
    const char* name;
    std::map<std::string, std::string> environment;
    bool hasX11 = false;
    bool hasWayland = false;
    bool hasLayerShell = false;
    std::string chosen; ///< a part of the sentence where nothing can be chosen
};

TEST(DisplayChoice, TheOverlayGoesWhereItStaysOutOfTheFocus)
{
    const std::map<std::string, std::string> both{{"DISPLAY", ":7"}, {"WAYLAND_DISPLAY", "wayland-7"}};
    const std::map<std::string, std::string> onlyX11{{"DISPLAY", ":7"}, {"WAYLAND_DISPLAY", ""}};
    const std::map<std::string, std::string> onlyWayland{{"WAYLAND_DISPLAY", "wayland-7"}};
    auto forced = both;
    forced["QT_QPA_PLATFORM"] = "offscreen";
    const std::vector<Session> sessions{
        {"X11", onlyX11, true, false, false, "xcb"},
        {"an X server that has gone", onlyX11, false, false, false, "The display :7 does not answer"},
        {"sway", both, true, true, true, "wayland"},
        {"sway without XWayland", onlyWayland, false, true, true, "wayland"},
        {"GNOME", both, true, true, false, "xcb"},
        {"GNOME without XWayland", onlyWayland, false, true, false, "wayland"},
        {"GNOME whose XWayland does not answer", both, false, true, false, "wayland"},
        {"a Wayland session that has ended, with an X server", both, true, false, true, "xcb"},
        {"nothing answers", both, false, false, true, "The display wayland-7 does not answer"},
        {"a terminal", {}, true, true, true, "neither DISPLAY nor WAYLAND_DISPLAY is set"},
        {"what the user wants", forced, false, false, false, "offscreen"},
    };
    for (const auto& session : sessions) {
        SCOPED_TRACE(session.name);
        const EnvironmentLookup environment = [&](const std::string& name) -> std::optional<std::string> {
            const auto found = session.environment.find(name);
            return found == session.environment.end() ? std::nullopt : std::optional(found->second);
        };
        const bool isWayland = session.environment.contains("WAYLAND_DISPLAY");
        const DisplayProbe probe{[&] { return session.hasX11; }, [&] { return session.hasWayland; },
                                 [&] {
                                     EXPECT_TRUE(session.hasWayland && isWayland) << "there is nobody to ask";
                                     return session.hasLayerShell;
                                 }};
        const auto choice = chooseDisplay(environment, probe);
        if (choice)
            EXPECT_EQ(*choice, session.chosen);
        else
            EXPECT_NE(choice.error().find(session.chosen), std::string::npos) << choice.error();
    }
}

} // namespace
