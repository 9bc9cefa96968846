#pragma once

#include "ports/ScreenLock.h"

#include <memory>

class QDBusConnection;

namespace vocalith {

/// What the desktop's screen saver says (org.freedesktop.ScreenSaver and org.gnome.ScreenSaver on the session bus), and
/// the hint that lockers leave with logind on the system bus. logind's own Lock is only a wish, and an Unlock does not
/// follow when a locker is opened with a password; so it is not listened to. The composition owns it; main thread.
/// Never waits for an answer.
class DBusScreenLock final : public ScreenLock {
public:
    DBusScreenLock();
    /// The session and the system bus, or a test's.
    DBusScreenLock(const QDBusConnection& session, const QDBusConnection& system);
    ~DBusScreenLock() override;

private:
    class Watch;
    const std::unique_ptr<Watch> m_watch;
};

} // namespace vocalith
