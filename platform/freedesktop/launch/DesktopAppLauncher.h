#pragma once

#include "ports/AppLauncher.h"

#include <memory>

class QDBusConnection;

namespace vocalith {

class Clock;
class DesktopEntry;
class DetachedPrograms;

/// Opens addresses with `xdg-open` and starts applications by their desktop entries. A program that still runs after
/// three seconds, or two for an application, counts as started. The composition owns it; main thread.
class DesktopAppLauncher final : public AppLauncher {
public:
    explicit DesktopAppLauncher(Clock& clock);
    /// `bus` is the session bus, or a test's.
    DesktopAppLauncher(Clock& clock, const QDBusConnection& bus);
    ~DesktopAppLauncher() override;

    Task<Result<void, AppLaunchError>> openURL(std::string url) override;
    Task<Result<void, AppLaunchError>> launchApp(std::string bundleID) override;

private:
    Task<Result<void, AppLaunchError>> activate(std::string id);

    Clock& m_clock;
    std::unique_ptr<QDBusConnection> m_bus; ///< null until it is needed
    const std::unique_ptr<DetachedPrograms> m_programs;
};

} // namespace vocalith
