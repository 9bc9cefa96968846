#pragma once

#include "app/ui/overlay/OverlayWindow.h"
#include "base/Observable.h"

#include <QObject>
#include <QSize>

#include <memory>

class QImage;
class QQuickRenderControl;
class QQuickWindow;

namespace vocalith {

class OverlayScene;
class PixelSurface;

/// The overlay as pictures on a surface of the desktop, for compositors that give every ordinary window the focus. The
/// desktop chooses the screen.
class OverlayPixelWindow final : public QObject, public OverlayWindow {
    Q_OBJECT

public:
    OverlayPixelWindow(OverlayScene& scene, PixelSurface& surface);
    ~OverlayPixelWindow() override;

    void show() override;
    void moveTo(const ScreenRectangle& /*focusedWindow*/) override {}
    void hide() override;

private:
    void place();
    void frameWanted();
    void sceneChanged();
    void draw();
    void prepareTarget();

    OverlayScene& m_scene;
    PixelSurface& m_surface;
    std::unique_ptr<QQuickRenderControl> m_control;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<QImage> m_picture;
    QSize m_size; ///< as the surface was told, logical pixels
    bool m_isShown = false;
    bool m_isWanted = false;  ///< the desktop can take a picture
    bool m_isChanged = false; ///< the scene looks different from what was handed over
    bool m_isDrawing = false; ///< a drawing is posted to the event loop
    Subscription m_frames;
};

} // namespace vocalith
