#pragma once

#include "base/Observable.h"

#include <functional>

namespace vocalith {

class OverlayManager;
class ScreenLock;

/// Leaves the user's shortcuts to the desktop while the screen is locked, and while a shortcut is recorded. What is
/// dictated as the screen is locked ends there and is kept: nobody is left who could see to it. Lives as long as the
/// program; main thread.
class ShortcutSuspension {
public:
    /// `suspend` is told whenever that changes.
    ShortcutSuspension(ScreenLock& screenLock, OverlayManager& overlay, std::function<void(bool)> suspend);

    void setRecordingShortcut(bool isRecording);

private:
    void lockChanged(bool isLocked);
    void update();

    OverlayManager& m_overlay;
    const std::function<void(bool)> m_suspend;
    bool m_isLocked = false;
    bool m_isRecordingShortcut = false;
    Subscription m_subscription;
};

} // namespace vocalith
