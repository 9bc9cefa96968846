#pragma once

#include "base/Clock.h"
#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/clipboard/WaylandPasteboard.h"
#include "platform/wayland/keyboard/WaylandKeyEvents.h"
#include "platform/wayland/windows/WaylandFocusedApp.h"
#include "tests/support/MainLoop.h"
#include "tests/support/SwayCompositor.h"

#include <gtest/gtest.h>

namespace vocalith::test {

/// A compositor with our ports on it.
struct WaylandStage {
    explicit WaylandStage(int scale = 1) : compositor(scale) {}

    std::string focusedIdentifier()
    {
        const auto application = await(focusedApp.focused());
        return application ? application->identifier : std::string();
    }
    /// Waits until that application has the focus.
    void waitForFocus(const std::string& identifier)
    {
        runUntil([&] { return focusedIdentifier() == identifier; });
    }

    SwayCompositor compositor;
    SystemClock clock;
    std::unique_ptr<WaylandConnection> connection = WaylandConnection::open(compositor.display()).value();
    WaylandPasteboard pasteboard{*connection, clock};
    WaylandKeyEvents keyEvents{*connection, clock};
    WaylandFocusedApp focusedApp{*connection};
};

} // namespace vocalith::test
