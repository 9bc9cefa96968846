#pragma once

#include "base/Observable.h"

#include <cstdint>
#include <span>

namespace vocalith {

/// A surface above all windows that takes no input and never the focus, for desktops where an ordinary window cannot be
/// that. Main thread.
class PixelSurface {
public:
    enum class Edge { top, bottom };
    struct Geometry {
        int width = 0;  ///< logical pixels
        int height = 0; ///< logical pixels
        Edge edge = Edge::bottom;
        int margin = 0; ///< from that edge, logical pixels; it is centred along it
        bool operator==(const Geometry&) const = default;
    };

    virtual ~PixelSurface() = default;

    /// Puts it on the screen that has the focus. Its picture is asked for by `frameWanted`.
    virtual void show(const Geometry& geometry) = 0;
    virtual void hide() = 0;
    /// Physical pixels for one logical pixel.
    virtual double scale() const = 0;
    /// The picture: premultiplied 0xAARRGGBB, rows without a gap; width and height are those of the geometry times the
    /// scale, rounded up. Copied before this returns.
    virtual void present(std::span<const std::uint32_t> pixels, int width, int height) = 0;

    /// The desktop is ready for another picture, at most once for each that the screen shows.
    Signal<> frameWanted;
};

} // namespace vocalith
