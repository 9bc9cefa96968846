#pragma once

#include "app/ui/overlay/OverlayWindow.h"

#include <QObject>

#include <functional>
#include <memory>

class QQuickWindow;
class QScreen;

namespace vocalith {

class OverlayScene;

/// The overlay as a window of the display, for X11: it goes past the window manager, which could give it the focus, and
/// stays above windows that fill the screen.
class OverlayQuickWindow final : public QObject, public OverlayWindow {
    Q_OBJECT

public:
    /// `isComposited` says whether something on the desktop blends windows now; where nothing does, the window is cut
    /// to the shape of the scene.
    OverlayQuickWindow(OverlayScene& scene, std::function<bool()> isComposited);
    ~OverlayQuickWindow() override;

    void show() override;
    void moveTo(const ScreenRectangle& focusedWindow) override;
    void hide() override;

    QQuickWindow& window() { return *m_window; }

private:
    void place(QScreen* screen);
    void cutOut();

    OverlayScene& m_scene;
    const std::function<bool()> m_isComposited;
    std::unique_ptr<QQuickWindow> m_window;
};

} // namespace vocalith
