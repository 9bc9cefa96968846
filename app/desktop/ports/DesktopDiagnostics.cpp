#include "app/desktop/ports/DesktopDiagnostics.h"

#include "core/session/shortcuts/ConfiguredShortcuts.h"
#include "models/KeyboardShortcutText.h"

#include <QtDBus/QDBusConnection>

namespace vocalith {
namespace {

using State = Finding::State;

Finding shortcutFinding(const PersistentAppStorage& storage)
{
    std::string keys;
    for (const auto& configured : configuredShortcuts(storage)) {
        if (areAssigned(configured.shortcut.keys))
            keys += (keys.empty() ? "" : ", ") + toString(*configured.shortcut.keys);
    }
    if (keys.empty())
        return {"Shortcut", State::limited, "none chosen yet", "Start Vocalith, which asks for one: vocalith run"};
    return {"Shortcut", State::good, keys, {}};
}

} // namespace

/// What is not the display's own.
void DesktopDiagnostics::addServices(std::vector<Finding>& findings, const DesktopPorts& ports, bool isAccessible) const
{
    if (ports.hasHotKeys()) // keys that nobody listens to are no shortcut
        findings.push_back(shortcutFinding(m_storage));
    if (!QDBusConnection::sessionBus().isConnected())
        findings.push_back({"Session bus", State::missing,
                            "no D-Bus: no commands to the running program, no portals, notices or context",
                            "Start Vocalith from within your desktop session."});
    else if (isAccessible)
        findings.push_back({"Accessibility", State::good, "AT-SPI2", {}});
    else
        findings.push_back({"Accessibility", State::limited, "no accessibility bus: no context for prompts",
                            "Install the package at-spi2-core and log in again."});
}

Task<std::vector<Finding>> DesktopDiagnostics::examine()
{
    std::vector<Finding> findings;
    const auto has = [this](const char* variable) { return !m_environment(variable).value_or("").empty(); };
    if (!has("DISPLAY") && !has("WAYLAND_DISPLAY"))
        co_return findings; // that there is no desktop session is said elsewhere
    const auto ports = co_await DesktopPorts::open(m_environment, m_paths, m_clock, m_log);
    const bool isAccessible = co_await ports->accessibility().connected();
    findings = ports->findings();
    if (ports->isReached())
        addServices(findings, *ports, isAccessible);
    co_await ports->shutDown();
    co_return findings;
}

} // namespace vocalith
