#include "app/ui/overlay/OverlayPixelWindow.h"
#include "app/ui/overlay/OverlayPresenter.h"
#include "app/ui/overlay/OverlayQuickWindow.h"
#include "tests/app/ui/Display.h"
#include "tests/app/ui/OverlayStage.h"
#include "tests/support/FakeFocusedApp.h"
#include "tests/support/FakePixelSurface.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TextEditor.h"

#include <gtest/gtest.h>

#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QPixmap>
#include <QtGui/QScreen>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>

using namespace vocalith;
using namespace vocalith::test;

namespace {

const QColor kBackground(0x1b, 0x1b, 0x20);

/// The overlay on the display, with everything that belongs to it.
struct Shown : OverlayStage {
    explicit Shown(RecordingDisplayStyle style = RecordingDisplayStyle::panel) : OverlayStage(style)
    {
        QObject::connect(&window.window(), &QQuickWindow::frameSwapped, &window, [this] { ++frames; });
    }
    ~Shown() { await(presenter.shutDown()); }

    void untilDrawn()
    {
        const int before = frames;
        runUntil([&] { return frames > before; });
    }
    QRect geometry() { return window.window().geometry(); }

    OverlayQuickWindow window{scene, {}};
    FakeFocusedApp focusedApp;
    OverlayPresenter presenter{model, window, focusedApp};
    int frames = 0;
};

/// What the display shows there.
QColor pixel(int x, int y)
{
    return QGuiApplication::primaryScreen()->grabWindow(0, x, y, 1, 1).toImage().pixelColor(0, 0);
}

TEST(OverlayWindowTest, TheKeysStayWithTheEditor)
{
    const TextEditor editor(display(), TextEditor::Kind::mousepad);
    const auto focused = display().focusedClass();
    ASSERT_FALSE(focused.empty());
    Shown overlay;
    overlay.record();
    overlay.untilDrawn();
    display().run({"xdotool", "type", "one "});
    const auto middle = overlay.geometry().center();
    display().run({"xdotool", "mousemove", std::to_string(middle.x()), std::to_string(middle.y())});
    overlay.end(dictation_outcome::TooShort{0.1});
    display().run({"xdotool", "type", "two"});
    EXPECT_EQ(display().focusedClass(), focused);
    editor.expectText("one two");
}

TEST(OverlayWindowTest, StandsAboveAWindowThatFillsTheScreen)
{
    const TextEditor editor(display(), TextEditor::Kind::mousepad);
    display().press("F11");
    const auto screen = QGuiApplication::primaryScreen()->geometry();
    const auto window = [] { return display().run({"xdotool", "getactivewindow", "getwindowgeometry"}); };
    runUntil([&] { return window().find(std::to_string(screen.width()) + "x") != std::string::npos; });
    Shown overlay;
    overlay.record();
    overlay.untilDrawn();
    const auto place = overlay.geometry();
    EXPECT_TRUE(runUntil([&] { return pixel(place.left() + 8, place.center().y()) == kBackground; }));
    EXPECT_NE(pixel(place.left(), place.top()), kBackground) << "the corners are cut away";
}

TEST(OverlayWindowTest, BothFormsKnowTheirPlaceAndGrowAwayFromTheirEdge)
{
    const auto screen = QGuiApplication::primaryScreen()->geometry();
    for (const auto style : {RecordingDisplayStyle::panel, RecordingDisplayStyle::notch}) {
        Shown overlay(style);
        overlay.record();
        overlay.untilDrawn();
        const auto before = overlay.geometry();
        overlay.state.textEvent.temporary = std::string(400, 'm') + " end";
        overlay.model.show(overlay.state);
        runUntil([&] { return overlay.geometry().height() > before.height(); });
        const auto after = overlay.geometry();
        EXPECT_LT(after.height(), 260) << "a long text is cut to its last lines";
        EXPECT_NEAR(after.center().x(), screen.center().x(), 1);
        if (style == RecordingDisplayStyle::notch) {
            EXPECT_EQ(before.top(), screen.top());
            EXPECT_EQ(after.top(), screen.top());
        } else {
            EXPECT_EQ(after.bottom(), before.bottom());
            EXPECT_LT(after.bottom(), screen.bottom());
        }
    }
}

TEST(OverlayWindowTest, DrawsNothingWhileHidden)
{
    Shown overlay;
    overlay.record();
    overlay.untilDrawn();
    overlay.hear(0.5F);
    overlay.untilDrawn();
    overlay.model.showIndicator(ProcessingIndicator::State::processing); // with its own small motion
    overlay.untilDrawn();
    overlay.end(dictation_outcome::Cancelled{});
    EXPECT_FALSE(overlay.window.window().isVisible());
    drainMainThread();
    const int before = overlay.frames;
    overlay.hear(0.8F);
    overlay.look.setAppearance(AppAppearance::light);
    const auto moving = overlay.scene.root().findChildren<QObject*>();
    EXPECT_FALSE(moving.isEmpty());
    for (const auto* object : moving) {
        const auto running = object->property("running");
        EXPECT_FALSE(running.toBool()) << object->metaObject()->className() << " runs on";
    }
    drainMainThread();
    EXPECT_EQ(overlay.frames, before);
}

TEST(OverlayPixelWindowTest, HandsOverAPictureForEachThatIsWanted)
{
    OverlayStage stage;
    FakePixelSurface surface;
    surface.pixelScale = 1.5;
    OverlayPixelWindow window(stage.scene, surface);
    QObject::connect(&stage.model, &OverlayModel::visibleChanged, &window,
                     [&] { stage.model.isVisible() ? window.show() : window.hide(); });
    EXPECT_FALSE(surface.shown);
    stage.record();
    ASSERT_TRUE(surface.shown);
    EXPECT_EQ(surface.shown->edge, PixelSurface::Edge::bottom);
    drainMainThread();
    EXPECT_EQ(surface.pictures, 0) << "the screen is not ready yet";
    surface.frameWanted.emit();
    ASSERT_EQ(surface.pictures, 1);
    EXPECT_EQ(surface.width, surface.shown->width * 3 / 2);
    EXPECT_EQ(surface.height, (surface.shown->height * 3 + 1) / 2);
    EXPECT_EQ(surface.at(0, 0), 0U) << "the corners let the desktop shine through";
    EXPECT_EQ(surface.at(12, surface.height / 2), kBackground.rgb());

    surface.frameWanted.emit();
    drainMainThread();
    EXPECT_EQ(surface.pictures, 1) << "nothing has changed";
    stage.hear(0.9F);
    drainMainThread();
    EXPECT_EQ(surface.pictures, 2);
    const auto quiet = surface.pixels;
    stage.hear(0.1F);
    drainMainThread();
    EXPECT_EQ(surface.pictures, 2) << "the screen has not shown the last one yet";
    surface.frameWanted.emit();
    EXPECT_EQ(surface.pictures, 3);
    EXPECT_NE(surface.pixels, quiet);

    const auto small = surface.shown->height;
    stage.state.textEvent.temporary = "and now there is a text too";
    stage.model.show(stage.state);
    surface.frameWanted.emit();
    EXPECT_GT(surface.shown->height, small);
    EXPECT_EQ(surface.pictures, 3) << "another size is agreed on first";
    surface.frameWanted.emit();
    EXPECT_EQ(surface.pictures, 4);
    EXPECT_EQ(surface.at(12, surface.height - 60), kBackground.rgb());
    EXPECT_EQ(surface.height, (surface.shown->height * 3 + 1) / 2);
    surface.pixelScale = 2;
    surface.frameWanted.emit();
    EXPECT_EQ(surface.width, surface.shown->width * 2) << "it moved to a finer screen";

    stage.end(dictation_outcome::Cancelled{});
    EXPECT_FALSE(surface.shown);
    const int last = surface.pictures;
    surface.frameWanted.emit();
    drainMainThread();
    EXPECT_EQ(surface.pictures, last);
}

} // namespace
