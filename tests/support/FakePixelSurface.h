#pragma once

#include "ports/PixelSurface.h"

#include <optional>
#include <vector>

namespace vocalith::test {

/// A surface that keeps the last picture. The test says when the screen is ready for another.
class FakePixelSurface final : public PixelSurface {
public:
    void show(const Geometry& geometry) override { shown = geometry; }
    void hide() override { shown.reset(); }
    double scale() const override { return pixelScale; }
    void present(std::span<const std::uint32_t> picture, int pictureWidth, int pictureHeight) override
    {
        pixels.assign(picture.begin(), picture.end());
        width = pictureWidth;
        height = pictureHeight;
        ++pictures;
    }
    std::uint32_t at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }

    std::optional<Geometry> shown;
    double pixelScale = 1;
    std::vector<std::uint32_t> pixels;
    int width = 0;
    int height = 0;
    int pictures = 0;
};

} // namespace vocalith::test
