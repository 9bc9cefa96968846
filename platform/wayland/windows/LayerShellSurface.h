#pragma once

#include "base/Log.h"
#include "ports/PixelSurface.h"

#include <memory>

namespace vocalith {

class WaylandConnection;

/// A surface on the overlay layer of wlr-layer-shell-unstable-v1: above all windows, full-screen ones too, on the
/// screen that the compositor takes for the focused one. Neither keys nor the pointer reach it. It exists only while it
/// is shown.
class LayerShellSurface final : public PixelSurface {
public:
    explicit LayerShellSurface(WaylandConnection& connection, Logger logger = {});
    ~LayerShellSurface() override;

    static bool isOffered(const WaylandConnection& connection);

    void show(const Geometry& geometry) override;
    void hide() override;
    double scale() const override;
    /// A picture of another size than was asked for is scaled where the compositor can do that, else left out.
    void present(std::span<const std::uint32_t> pixels, int width, int height) override;

private:
    class Surface;
    struct Globals;

    WaylandConnection& m_connection;
    const Logger m_logger;
    std::unique_ptr<Globals> m_globals;
    Subscription m_onScale;
    std::unique_ptr<Surface> m_surface;
};

} // namespace vocalith
