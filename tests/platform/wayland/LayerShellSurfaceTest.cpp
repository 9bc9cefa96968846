#include "platform/wayland/windows/LayerShellSurface.h"
#include "tests/platform/wayland/WaylandStage.h"

#include <cstdlib>

namespace vocalith {
namespace {

using namespace vocalith::test;

constexpr std::uint32_t kColour = 0xff2266cc;

/// A surface that paints itself in one colour whenever it is asked to.
struct Painted {
    explicit Painted(WaylandStage& stage) : surface(*stage.connection)
    {
        asked = surface.frameWanted.subscribe([this] {
            ++frames;
            const int width = static_cast<int>(size.width * surface.scale());
            const int height = static_cast<int>(size.height * surface.scale());
            const std::vector<std::uint32_t> pixels(std::size_t(width) * std::size_t(height), kColour);
            surface.present(pixels, width, height);
        });
    }
    void show(const PixelSurface::Geometry& geometry)
    {
        size = geometry;
        const int before = frames;
        surface.show(geometry);
        runUntil([&] { return frames >= before + 3; }); // so that the second of them is on the screen
    }

    LayerShellSurface surface;
    PixelSurface::Geometry size;
    int frames = 0;
    Subscription asked;
};

/// The rectangle of that colour on the screen as left, top, right, bottom; nothing where there is none.
std::vector<int> placeOf(const Screenshot& screen)
{
    std::vector<int> place;
    for (int y = 0; y < screen.height; ++y) {
        for (int x = 0; x < screen.width; ++x) {
            if (screen.at(x, y) != (kColour & 0xffffffU))
                continue;
            if (place.empty())
                place = {x, y, x, y};
            place = {std::min(place[0], x), place[1], std::max(place[2], x), y};
        }
    }
    return place;
}

TEST(LayerShellSurfaceTest, StandsAboveTheWindowsAndLeavesTheFocusWhereItWas)
{
    WaylandStage stage;
    const auto terminal = stage.compositor.startTerminal();
    stage.waitForFocus("foot");
    {
        Painted panel(stage);
        panel.show({.width = 200, .height = 50, .edge = PixelSurface::Edge::bottom, .margin = 20});
        EXPECT_EQ(placeOf(stage.compositor.screenshot()), (std::vector{300, 530, 499, 579}));
        EXPECT_EQ(stage.focusedIdentifier(), "foot");
        const auto source = stage.keyEvents.createSource(KeyEvents::SourceState::privateState);
        EXPECT_TRUE(await(source->type("still here")));
        runUntil([&] { return stage.compositor.typed() == "still here"; });

        stage.compositor.run("swaymsg -s $XDG_RUNTIME_DIR/sway-ipc.*.sock fullscreen enable");
        panel.show({.width = 300, .height = 40, .edge = PixelSurface::Edge::top, .margin = 5});
        EXPECT_EQ(placeOf(stage.compositor.screenshot()), (std::vector{250, 5, 549, 44}));
        if (const char* const folder = std::getenv("VOCALITH_SCREENSHOTS"))
            stage.compositor.run("grim " + std::string(folder) + "/layer.png");

        panel.surface.hide();
        await(stage.connection->synchronized());
        const int frames = panel.frames;
        EXPECT_TRUE(placeOf(stage.compositor.screenshot()).empty());
        EXPECT_EQ(panel.frames, frames) << "nothing is painted while it is hidden";
        panel.show({.width = 200, .height = 50});
        EXPECT_EQ(placeOf(stage.compositor.screenshot()), (std::vector{300, 550, 499, 599}));
    }
    EXPECT_TRUE(await(stage.connection->synchronized()));
    EXPECT_TRUE(placeOf(stage.compositor.screenshot()).empty());
}

TEST(LayerShellSurfaceTest, PaintsAllPixelsOfAFineScreen)
{
    WaylandStage stage(2);
    Painted panel(stage);
    panel.show({.width = 100, .height = 20, .margin = 10});
    EXPECT_EQ(panel.surface.scale(), 2.0);
    EXPECT_EQ(placeOf(stage.compositor.screenshot()), (std::vector{300, 540, 499, 579}));
}

TEST(LayerShellSurfaceTest, ComesBackWhenItsScreenDoes)
{
    WaylandStage stage;
    Painted panel(stage);
    panel.show({.width = 200, .height = 50});
    const std::string swaymsg = "swaymsg -s $XDG_RUNTIME_DIR/sway-ipc.*.sock ";
    stage.compositor.run(swaymsg + "create_output; " + swaymsg + "output HEADLESS-1 disable");
    const int frames = panel.frames;
    runUntil([&] { return panel.frames >= frames + 3; });
    EXPECT_FALSE(placeOf(stage.compositor.screenshot()).empty());
}

TEST(WaylandFocusedAppTest, SaysWhatTheUserWorksIn)
{
    WaylandStage stage;
    EXPECT_EQ(stage.focusedIdentifier(), "");
    auto terminal = stage.compositor.startTerminal();
    stage.waitForFocus("foot");
    auto application = await(stage.focusedApp.focused()).value();
    EXPECT_TRUE(application.isTerminal);
    EXPECT_EQ(application.windowTitle, "foot");
    const auto editor = stage.compositor.start({"mousepad", "--disable-server"});
    stage.waitForFocus("mousepad");
    application = await(stage.focusedApp.focused()).value();
    EXPECT_FALSE(application.isTerminal);
    EXPECT_NE(application.windowTitle.find("Untitled"), std::string::npos) << application.windowTitle;
    terminal.kill();
    EXPECT_EQ(stage.focusedIdentifier(), "mousepad");
}

} // namespace
} // namespace vocalith
