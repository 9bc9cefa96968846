#pragma once

#include "base/TaskScope.h"

#include <QObject>

#include <memory>

namespace vocalith {

class FocusedApp;
class OverlayModel;
class OverlayWindow;

/// Brings the overlay's window up and down as its model says, on the screen that the user works on. The composition
/// owns it; main thread.
class OverlayPresenter final : public QObject {
    Q_OBJECT

public:
    OverlayPresenter(OverlayModel& model, OverlayWindow& window, FocusedApp& focusedApp);

    /// To be awaited before destruction.
    Task<void> shutDown();

private:
    void visibleChanged();
    Task<void> findScreen();

    OverlayModel& m_model;
    OverlayWindow& m_window;
    FocusedApp& m_focusedApp;
    TaskScope m_search;
};

} // namespace vocalith
