#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "ports/Notices.h"

#include <cstdint>
#include <memory>
#include <string>

class QDBusConnection;

namespace vocalith {

/// Notices by the desktop's notification service (Desktop Notifications Specification 1.2). Where there is none, others
/// are told; all of them are in the log. The composition owns it; main thread. Never waits for an answer.
class DesktopNotices final : public Notices {
public:
    explicit DesktopNotices(Logger logger);
    /// `bus` is the session bus, or a test's.
    DesktopNotices(Logger logger, const QDBusConnection& bus);
    ~DesktopNotices() override;

    /// The text's first sentence becomes the title, the rest the body.
    void show(std::string_view text) override;

    Signal<std::string> undelivered; ///< the whole text, once it is clear that nobody shows it

private:
    void missed(const std::string& text, const std::string& why);

    const Logger m_logger;
    const std::unique_ptr<QDBusConnection> m_bus;
    const std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true); ///< for answers that come late
};

} // namespace vocalith
