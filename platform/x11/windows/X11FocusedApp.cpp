#include "platform/x11/windows/X11FocusedApp.h"

#include "platform/x11/X11Connection.h"
#include "platform/x11/windows/X11Windows_p.h"

#include <string_view>

namespace vocalith {
namespace {

std::string withoutPathAndSuffix(const std::string& desktopFile)
{
    constexpr std::string_view kSuffix = ".desktop";
    auto name = desktopFile.substr(desktopFile.rfind('/') + 1);
    if (name.ends_with(kSuffix))
        name.resize(name.size() - kSuffix.size());
    return name;
}

/// The desktop entry that the window names, in the ways that toolkits have for it; else its class.
std::string identifierOf(X11Windows& windows, unsigned long window, const std::string& windowClass)
{
    for (const auto* property : {"_GTK_APPLICATION_ID", "_KDE_NET_WM_DESKTOP_FILE", "_BAMF_DESKTOP_FILE"}) {
        if (auto name = withoutPathAndSuffix(windows.text(window, property)); !name.empty())
            return name;
    }
    return windowClass;
}

} // namespace

Task<std::optional<FocusedApplication>> X11FocusedApp::focused()
{
    X11Windows windows(m_connection);
    const auto window = windows.active();
    if (m_connection.isLost() || window == 0)
        co_return std::nullopt;
    FocusedApplication application;
    application.name = windows.windowClass(window);
    application.identifier = identifierOf(windows, window, application.name);
    // A window manager gives the focus to a hidden window of its own when no other has it.
    if (application.name.empty() && windows.numbers(window, "WM_STATE").empty())
        co_return std::nullopt;
    application.windowTitle = windows.title(window);
    application.processId = windows.processId(window);
    if (application.processId == 0) {
        if (const auto said = windows.numbers(window, "_NET_WM_PID"); !said.empty())
            application.processId = static_cast<int>(said[0]);
    }
    application.isTerminal = isTerminalEmulator(application.identifier) || isTerminalEmulator(application.name);
    application.window = windows.rectangle(window);
    co_return application;
}

} // namespace vocalith
