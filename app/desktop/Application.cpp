#include "app/desktop/Application.h"

#include "app/desktop/ports/DisplayChoice.h"
#include "app/ui/WindowApplication.h"
#include "platform/wayland/WaylandConnection.h"
#include "platform/wayland/windows/LayerShellSurface.h"
#include "platform/x11/X11Connection.h"

#include <QCoreApplication>

#include <iostream>
#include <variant>

namespace vocalith {
namespace {

DisplayProbe probe()
{
    return {[] { return X11Connection::open().has_value(); }, [] { return WaylandConnection::open().has_value(); },
            [] {
                const auto wayland = WaylandConnection::open();
                return wayland && LayerShellSurface::isOffered(**wayland);
            }};
}

} // namespace

std::unique_ptr<QCoreApplication> makeApplication(const Command& command, int& argc, char** argv)
{
    auto plain = std::make_unique<QCoreApplication>(argc, argv);
    if (!std::holds_alternative<RunOptions>(command))
        return plain;
    const auto display = chooseDisplay(environmentVariable, probe());
    if (!display) {
        std::cerr << "vocalith: " << display.error() << '\n';
        return nullptr;
    }
    plain.reset(); // there can be one application object at a time
    return makeWindowApplication(*display, argc, argv);
}

} // namespace vocalith
