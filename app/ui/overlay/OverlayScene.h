#pragma once

#include "models/RecordingDisplayStyle.h"

#include <QObject>

#include <memory>

class QQmlEngine;
class QQuickItem;
class QSize;

namespace vocalith {

class DesktopLook;
class OverlayModel;

/// The overlay's picture, loaded and ready. Main thread; a window borrows its root item and gives it back when it goes.
class OverlayScene final : public QObject {
    Q_OBJECT

public:
    OverlayScene(OverlayModel& model, DesktopLook& look, RecordingDisplayStyle style);
    ~OverlayScene() override;

    void setStyle(RecordingDisplayStyle style);
    RecordingDisplayStyle style() const { return m_style; }
    /// Whether what is not drawn lets the desktop shine through. Without that the corners are filled.
    void setSeesThrough(bool seesThrough);
    /// The corner radius of the shape, in logical pixels; the upper corners of a notch have none.
    int radius() const;

    QQuickItem& root() { return *m_root; }
    QSize size() const; ///< logical pixels

Q_SIGNALS:
    void sizeChanged();

private:
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QQuickItem> m_root;
    RecordingDisplayStyle m_style;
};

/// To be called once, before the first window: windows are drawn by the processor. A panel of this size takes less that
/// way than the waking of a graphics card does, and it looks the same on every machine.
void useSoftwareRendering();

} // namespace vocalith
