#pragma once

#include "base/Observable.h"

#include <functional>

namespace vocalith {

class OverlayManager;
class ScreenLock;

/// Leaves the user's shortcuts to the desktop while the screen is locked, while a shortcut is recorded, and once the
/// program ends. A dictation that runs as the screen is locked, however far it is, ends there and is kept: nobody is
/// left who could see to it, and its text would go to the locked screen. Lives as long as the program; main thread.
class ShortcutSuspension {
public:
    /// `suspend` is told whenever that changes.
    ShortcutSuspension(ScreenLock& screenLock, OverlayManager& overlay, std::function<void(bool)> suspend);

    void setRecordingShortcut(bool isRecording);
    /// The program ends.
    void suspendForGood();

private:
    void lockChanged(bool isLocked);
    void update();

    OverlayManager& m_overlay;
    const std::function<void(bool)> m_suspend;
    bool m_isLocked = false;
    bool m_isRecordingShortcut = false;
    bool m_isForGood = false;
    Subscription m_subscription;
};

} // namespace vocalith
