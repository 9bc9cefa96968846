#pragma once

#include "ports/FocusedApp.h"

namespace vocalith {

class X11Connection;

/// The active window by the window manager's word (EWMH), without one the window that has the keyboard focus. All
/// answers are the X server's, so an application that hangs costs nothing: about a millisecond. Main thread.
class X11FocusedApp final : public FocusedApp {
public:
    explicit X11FocusedApp(X11Connection& connection) : m_connection(connection) {}

    Task<std::optional<FocusedApplication>> focused() override;

private:
    X11Connection& m_connection;
};

} // namespace vocalith
