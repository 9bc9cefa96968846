#pragma once

#include "ports/FocusedApp.h"

#include <memory>

namespace vocalith {

class WaylandConnection;

/// The active window through wlr-foreign-toplevel-management-unstable-v1. The compositor tells of every change, so that
/// an answer takes no time; process and place of the window are not told.
class WaylandFocusedApp final : public FocusedApp {
public:
    explicit WaylandFocusedApp(WaylandConnection& connection);
    ~WaylandFocusedApp() override;

    static bool isOffered(const WaylandConnection& connection);

    Task<std::optional<FocusedApplication>> focused() override;

private:
    struct Windows;
    std::unique_ptr<Windows> m_windows;
};

} // namespace vocalith
