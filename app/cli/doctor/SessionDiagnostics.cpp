#include "app/cli/doctor/SessionDiagnostics.h"

namespace vocalith {

bool SessionDiagnostics::has(const char* name) const
{
    return !m_environment(name).value_or("").empty();
}

Task<std::vector<Finding>> SessionDiagnostics::examine()
{
    Finding session{"Session", Finding::State::good, {}, {}};
    const std::string desktop = m_environment("XDG_CURRENT_DESKTOP").value_or("");
    if (has("WAYLAND_DISPLAY"))
        session.detail = "Wayland";
    else if (has("DISPLAY"))
        session.detail = "X11";
    else
        session.detail = "no desktop session; the command line works without one";
    if (!desktop.empty())
        session.detail += " (" + desktop + ")";
    std::vector<Finding> findings{std::move(session)};
    co_return findings;
}

} // namespace vocalith
