#pragma once

#include "base/Result.h"
#include "core/storage/AppPaths.h"

#include <functional>
#include <string>

namespace vocalith {

/// What can be reached of the desktop, without keeping anything open.
struct DisplayProbe {
    std::function<bool()> hasX11;        ///< an X server answers
    std::function<bool()> hasWayland;    ///< a Wayland compositor answers
    std::function<bool()> hasLayerShell; ///< and lets a program draw above all windows without taking the focus
};

/// Where the windows go, as Qt names its platforms: "wayland" where the compositor has a layer shell, else "xcb", also
/// within Wayland, since only there a window can be kept from taking the focus. What QT_QPA_PLATFORM says is taken.
/// An error is the sentence for the user: there is nothing to draw on.
Result<std::string, std::string> chooseDisplay(const EnvironmentLookup& environment, const DisplayProbe& probe);

} // namespace vocalith
