#include "app/ui/overlay/OverlayPixelWindow.h"

#include "app/ui/overlay/OverlayScene.h"
#include "ports/PixelSurface.h"

#include <QtGui/QImage>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickRenderControl>
#include <QtQuick/QQuickRenderTarget>
#include <QtQuick/QQuickWindow>

#include <cmath>

namespace vocalith {
namespace {

constexpr int kMargin = 64;

} // namespace

OverlayPixelWindow::OverlayPixelWindow(OverlayScene& scene, PixelSurface& surface)
    : m_scene(scene), m_surface(surface), m_control(std::make_unique<QQuickRenderControl>()),
      m_window(std::make_unique<QQuickWindow>(m_control.get())), m_picture(std::make_unique<QImage>())
{
    m_window->setColor(Qt::transparent);
    m_scene.root().setParentItem(m_window->contentItem());
    m_scene.setSeesThrough(true);
    connect(m_control.get(), &QQuickRenderControl::renderRequested, this, &OverlayPixelWindow::sceneChanged);
    connect(m_control.get(), &QQuickRenderControl::sceneChanged, this, &OverlayPixelWindow::sceneChanged);
    connect(&m_scene, &OverlayScene::sizeChanged, this, &OverlayPixelWindow::sceneChanged);
    m_frames = m_surface.frameWanted.subscribe([this] { frameWanted(); });
}

OverlayPixelWindow::~OverlayPixelWindow()
{
    m_scene.root().setParentItem(nullptr);
    m_control->invalidate();
}

void OverlayPixelWindow::show()
{
    m_isShown = true;
    m_isChanged = true;
    m_control->polishItems();
    place();
}

void OverlayPixelWindow::hide()
{
    m_isShown = false;
    m_isWanted = false;
    m_surface.hide();
}

/// A surface of another size has to be agreed on first: a picture is wanted again after that.
void OverlayPixelWindow::place()
{
    m_size = m_scene.size();
    m_isWanted = false;
    const bool notch = m_scene.style() == RecordingDisplayStyle::notch;
    m_scene.root().setSize(m_size);
    m_window->contentItem()->setSize(m_size);
    m_window->setGeometry(0, 0, m_size.width(), m_size.height());
    m_surface.show({m_size.width(), m_size.height(), notch ? PixelSurface::Edge::top : PixelSurface::Edge::bottom,
                    notch ? 0 : kMargin});
}

void OverlayPixelWindow::frameWanted()
{
    m_isWanted = true;
    if (m_isShown && (m_isChanged || m_surface.scale() != m_picture->devicePixelRatio()))
        draw();
}

/// Several properties change together, and only what they come to is drawn.
void OverlayPixelWindow::sceneChanged()
{
    m_isChanged = true;
    if (!m_isShown || !m_isWanted || std::exchange(m_isDrawing, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isDrawing = false;
            if (m_isShown && m_isWanted && m_isChanged)
                draw();
        },
        Qt::QueuedConnection);
}

void OverlayPixelWindow::draw()
{
    m_control->polishItems();
    if (m_scene.size() != m_size)
        return place();
    prepareTarget();
    m_isChanged = false;
    m_isWanted = false;
    m_control->sync();
    m_control->render(); // what has changed; the rest of the picture stands
    const auto* first = reinterpret_cast<const std::uint32_t*>(m_picture->constBits());
    const auto pixels = m_picture->size();
    m_surface.present({first, static_cast<std::size_t>(pixels.width()) * pixels.height()}, pixels.width(),
                      pixels.height());
}

void OverlayPixelWindow::prepareTarget()
{
    const double scale = m_surface.scale();
    const QSize pixels(static_cast<int>(std::ceil(m_size.width() * scale)),
                       static_cast<int>(std::ceil(m_size.height() * scale)));
    if (m_picture->size() == pixels && m_picture->devicePixelRatio() == scale)
        return;
    *m_picture = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    m_picture->setDevicePixelRatio(scale);
    m_picture->fill(Qt::transparent);
    auto target = QQuickRenderTarget::fromPaintDevice(m_picture.get());
    target.setDevicePixelRatio(scale);
    m_window->setRenderTarget(target);
}

} // namespace vocalith
