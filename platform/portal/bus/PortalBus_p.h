#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/Result.h"
#include "base/Task.h"
#include "platform/portal/bus/DBusSignal_p.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <vector>

class QDBusServiceWatcher;

namespace vocalith {

struct PortalError {
    enum class Kind {
        unavailable, ///< this portal does not exist here
        refused,     ///< the user said no
        failed,      ///< anything else; `detail` says what
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
};

namespace portal {
inline constexpr const char* globalShortcuts = "org.freedesktop.portal.GlobalShortcuts";
inline constexpr const char* remoteDesktop = "org.freedesktop.portal.RemoteDesktop";
inline constexpr const char* clipboard = "org.freedesktop.portal.Clipboard";
} // namespace portal

/// How one talks with the portals. Part of a PortalConnection.
class PortalBus {
public:
    using Answer = Result<QVariantList, PortalError>;

    PortalBus(const std::string& applicationID, const std::string& address, Logger logger);
    ~PortalBus();
    PortalBus(const PortalBus&) = delete;
    PortalBus& operator=(const PortalBus&) = delete;

    bool isConnected() const { return m_bus.isConnected(); }

    /// Calls a method of the portals' object and tells `answered` once, from the event loop.
    void call(const QString& interface, const QString& method, const QVariantList& arguments,
              std::function<void(Answer)> answered);
    Task<Answer> call(QString interface, QString method, QVariantList arguments);
    /// Calls a method whose answer comes later, usually from the user. `options` are its last argument. A stop
    /// withdraws the question.
    Task<Result<QVariantMap, PortalError>> request(QString interface, QString method, QVariantList arguments,
                                                   QVariantMap options);
    /// The path of a new session of that portal.
    Task<Result<QString, PortalError>> createSession(QString interface);
    void closeSession(const QString& session);

    /// Tells of a signal of the portals' object, or of one at another path.
    std::unique_ptr<DBusSignal> onSignal(const QString& interface, const QString& name, DBusSignal::Handler handler);
    std::unique_ptr<DBusSignal> onClosed(const QString& session, std::function<void()> handler);

    /// The portals have left the bus, and all sessions with them.
    Signal<> vanished;

private:
    std::unique_ptr<DBusSignal> onResponse(const QString& path, DBusSignal::Handler handler);
    void closeRequest(const QString& path);
    void registerApplication(const std::string& applicationID);
    Task<bool> registered();
    void send(const QDBusMessage& message, int timeout, std::function<void(Answer)> answered);
    QString newToken();

    QDBusConnection m_bus;
    const Logger m_logger;
    QObject m_pending; ///< owns the calls that wait for an answer
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    bool m_isRegistered = false;
    std::vector<std::function<void(bool)>> m_onRegistered;
    unsigned m_tokens = 0;
};

} // namespace vocalith
