#include "app/overlay/ShortcutSuspension.h"

#include "app/overlay/OverlayManager.h"
#include "ports/ScreenLock.h"

#include <QtGlobal>

namespace vocalith {

ShortcutSuspension::ShortcutSuspension(ScreenLock& screenLock, OverlayManager& overlay,
                                       std::function<void(bool)> suspend)
    : m_overlay(overlay), m_suspend(std::move(suspend)),
      m_subscription(screenLock.isLocked.subscribe([this](bool isLocked) { lockChanged(isLocked); }))
{
    if (screenLock.isLocked.get())
        lockChanged(true);
}

void ShortcutSuspension::setRecordingShortcut(bool isRecording)
{
    m_isRecordingShortcut = isRecording;
    update();
}

void ShortcutSuspension::suspendForGood()
{
    m_isForGood = true;
    update();
}

void ShortcutSuspension::lockChanged(bool isLocked)
{
    m_isLocked = isLocked;
    // First: a shortcut that is taken away counts as released, and the text would go to the locked screen.
    if (isLocked)
        m_overlay.interrupt(QT_TRANSLATE_NOOP("Vocalith", "The screen was locked before the text was delivered."));
    update();
}

void ShortcutSuspension::update()
{
    m_suspend(m_isLocked || m_isRecordingShortcut || m_isForGood);
}

} // namespace vocalith
