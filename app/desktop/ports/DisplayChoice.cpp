#include "app/desktop/ports/DisplayChoice.h"

namespace vocalith {

Result<std::string, std::string> chooseDisplay(const EnvironmentLookup& environment, const DisplayProbe& probe)
{
    const auto value = [&](const char* name) { return environment(name).value_or(""); };
    if (const auto chosen = value("QT_QPA_PLATFORM"); !chosen.empty())
        return chosen;
    const std::string x11 = value("DISPLAY");
    const std::string wayland = value("WAYLAND_DISPLAY");
    if (x11.empty() && wayland.empty())
        return failure(std::string("There is no desktop session here: neither DISPLAY nor WAYLAND_DISPLAY is set. "
                                   "Start Vocalith from your desktop, or dictate on the terminal with: vocalith "
                                   "dictate"));
    const bool hasX11 = !x11.empty() && probe.hasX11();
    const bool hasWayland = !wayland.empty() && probe.hasWayland();
    if (hasWayland && (probe.hasLayerShell() || !hasX11))
        return std::string("wayland");
    if (hasX11)
        return std::string("xcb");
    return failure("The display " + (wayland.empty() ? x11 : wayland) +
                   " does not answer. Start Vocalith from within your desktop session, or dictate on the terminal "
                   "with: vocalith dictate");
}

} // namespace vocalith
