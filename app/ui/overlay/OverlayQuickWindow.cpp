#include "app/ui/overlay/OverlayQuickWindow.h"

#include "app/ui/overlay/OverlayScene.h"
#include "ports/Accessibility.h"

#include <QtGui/QCursor>
#include <QtGui/QGuiApplication>
#include <QtGui/QRegion>
#include <QtGui/QScreen>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>

#include <cmath>

namespace vocalith {
namespace {

constexpr int kMargin = 64; // from the lower edge, logical pixels: clear of most task bars

/// The screen's part of the desktop in physical pixels: Qt scales its size, not its place.
QRect physical(const QScreen& screen)
{
    const auto geometry = screen.geometry();
    return {geometry.topLeft(), geometry.size() * screen.devicePixelRatio()};
}

qint64 areaOf(const QRect& rectangle)
{
    return rectangle.isEmpty() ? 0 : static_cast<qint64>(rectangle.width()) * rectangle.height();
}

QScreen* screenWith(const ScreenRectangle& window)
{
    const QRect wanted(window.x, window.y, window.width, window.height);
    QScreen* best = nullptr;
    qint64 most = 0;
    const auto screens = QGuiApplication::screens();
    for (auto* screen : screens) {
        const auto shared = areaOf(physical(*screen).intersected(wanted));
        if (shared > most) {
            most = shared;
            best = screen;
        }
    }
    return best;
}

QScreen* screenOfPointer()
{
    auto* screen = QGuiApplication::screenAt(QCursor::pos());
    return screen ? screen : QGuiApplication::primaryScreen();
}

/// Row by row, because a region made of a path has corners.
QRegion roundedRegion(QSize size, int radius, bool roundAbove)
{
    QRegion region(roundAbove ? QRect(0, radius, size.width(), size.height() - 2 * radius)
                              : QRect(0, 0, size.width(), size.height() - radius));
    for (int row = 0; row < radius; ++row) {
        const double height = radius - row - 0.5; // of the row's middle above the centres of the corners
        const int inset = static_cast<int>(std::lround(radius - std::sqrt(radius * radius - height * height)));
        const int width = size.width() - 2 * inset;
        if (roundAbove)
            region += QRect(inset, row, width, 1);
        region += QRect(inset, size.height() - 1 - row, width, 1);
    }
    return region;
}

} // namespace

OverlayQuickWindow::OverlayQuickWindow(OverlayScene& scene, std::function<bool()> isComposited)
    : m_scene(scene), m_isComposited(std::move(isComposited)), m_window(std::make_unique<QQuickWindow>())
{
    m_window->setTitle(QStringLiteral("Vocalith"));
    m_window->setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint |
                       Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput | Qt::NoDropShadowWindowHint);
    m_window->setColor(Qt::transparent);
    m_scene.root().setParentItem(m_window->contentItem());
    connect(&m_scene, &OverlayScene::sizeChanged, this, [this] {
        if (m_window->isVisible())
            place(m_window->screen());
    });
    // Fonts, glyphs and the window itself are there before the first dictation.
    m_window->create();
    place(screenOfPointer());
    m_window->grabWindow();
}

OverlayQuickWindow::~OverlayQuickWindow()
{
    m_scene.root().setParentItem(nullptr);
}

void OverlayQuickWindow::show()
{
    place(screenOfPointer());
    m_window->show();
    m_window->raise();
}

void OverlayQuickWindow::moveTo(const ScreenRectangle& focusedWindow)
{
    auto* screen = screenWith(focusedWindow);
    if (screen && screen != m_window->screen())
        place(screen);
}

void OverlayQuickWindow::hide()
{
    m_window->hide();
}

void OverlayQuickWindow::place(QScreen* screen)
{
    if (!screen)
        return;
    if (m_window->screen() != screen)
        m_window->setScreen(screen);
    const auto size = m_scene.size();
    const auto area = screen->geometry();
    const int left = area.x() + (area.width() - size.width()) / 2;
    const bool notch = m_scene.style() == RecordingDisplayStyle::notch;
    const int top = notch ? area.y() : area.y() + area.height() - kMargin - size.height();
    m_scene.root().setSize(size);
    m_window->setGeometry(left, top, size.width(), size.height());
    cutOut();
}

void OverlayQuickWindow::cutOut()
{
    const bool composited = m_isComposited && m_isComposited();
    m_scene.setSeesThrough(composited);
    if (composited)
        return m_window->setMask({});
    const bool notch = m_scene.style() == RecordingDisplayStyle::notch;
    m_window->setMask(roundedRegion(m_scene.size(), m_scene.radius(), !notch));
}

} // namespace vocalith
