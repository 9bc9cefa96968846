#include "platform/portal/bus/PortalBus_p.h"

#include "base/OneShot.h"
#include "base/Uuid.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusServiceWatcher>

#include <fmt/format.h>

namespace vocalith {
namespace {

using Kind = PortalError::Kind;

const auto kService = QStringLiteral("org.freedesktop.portal.Desktop");
const auto kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto kRequest = QStringLiteral("org.freedesktop.portal.Request");
const auto kSession = QStringLiteral("org.freedesktop.portal.Session");
constexpr int kPatience = 10'000; // milliseconds for an answer that needs no user; the portals may have to be started
constexpr unsigned kGranted = 0;
constexpr unsigned kDeclined = 1;

PortalError errorOf(const QDBusError& error)
{
    const auto detail = error.message().toStdString();
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownObject:
    case QDBusError::UnknownProperty:
    case QDBusError::Disconnected: return {Kind::unavailable, detail};
    case QDBusError::AccessDenied: return {Kind::refused, detail};
    default: return {Kind::failed, detail};
    }
}

QDBusConnection connectionTo(const std::string& address)
{
    const auto name = QString::fromStdString("vocalith-portals-" + Uuid::random().toString());
    if (address.empty())
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    return QDBusConnection::connectToBus(QString::fromStdString(address), name);
}

/// An object path may come as one or as a text.
QString pathIn(const QVariant& value)
{
    const auto path = qvariant_cast<QDBusObjectPath>(value).path();
    return path.isEmpty() ? value.toString() : path;
}

} // namespace

PortalBus::PortalBus(const std::string& applicationID, const std::string& address, Logger logger)
    : m_bus(connectionTo(address)), m_logger(std::move(logger)),
      m_watcher(std::make_unique<QDBusServiceWatcher>(kService, m_bus, QDBusServiceWatcher::WatchForUnregistration))
{
    QObject::connect(m_watcher.get(), &QDBusServiceWatcher::serviceUnregistered, &m_pending, [this] {
        m_logger.warning("The portals have left the bus");
        vanished.emit();
    });
    registerApplication(applicationID);
}

PortalBus::~PortalBus()
{
    m_watcher.reset();
    QDBusConnection::disconnectFromBus(m_bus.name());
}

void PortalBus::registerApplication(const std::string& applicationID)
{
    auto message = QDBusMessage::createMethodCall(
        kService, kPath, QStringLiteral("org.freedesktop.host.portal.Registry"), QStringLiteral("Register"));
    message << QString::fromStdString(applicationID) << QVariantMap();
    send(message, kPatience, [this](const Answer& answer) {
        if (!answer)
            m_logger.info(
                fmt::format("The portals did not take the application's identifier: {}", answer.error().detail));
        m_isRegistered = true;
        for (const auto& told : std::exchange(m_onRegistered, {}))
            told(true);
    });
}

Task<bool> PortalBus::registered()
{
    if (m_isRegistered)
        co_return true;
    OneShot<bool> done;
    m_onRegistered.emplace_back(done.resolver());
    const auto outcome = co_await done;
    co_return outcome.has_value();
}

void PortalBus::send(const QDBusMessage& message, int timeout, std::function<void(Answer)> answered)
{
    if (!m_bus.isConnected()) {
        const auto refuse = [answered] {
            answered(failure(PortalError{Kind::unavailable, "There is no session bus."}));
        };
        QMetaObject::invokeMethod(&m_pending, refuse, Qt::QueuedConnection);
        return;
    }
    auto* const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, timeout), &m_pending);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, answered] {
        watcher->deleteLater();
        const auto reply = watcher->reply();
        if (watcher->isError())
            answered(failure(errorOf(watcher->error())));
        else
            answered(reply.arguments());
    });
}

void PortalBus::call(const QString& interface, const QString& method, const QVariantList& arguments,
                     std::function<void(Answer)> answered)
{
    auto message = QDBusMessage::createMethodCall(kService, kPath, interface, method);
    message.setArguments(arguments);
    send(message, kPatience, std::move(answered));
}

Task<PortalBus::Answer> PortalBus::call(QString interface, QString method, QVariantList arguments)
{
    const bool isRegistered = co_await registered();
    if (!isRegistered)
        co_return failure(PortalError{Kind::cancelled});
    OneShot<Answer> answered;
    call(interface, method, arguments, answered.resolver());
    auto outcome = co_await answered;
    if (!outcome)
        co_return failure(PortalError{Kind::cancelled});
    co_return std::move(*outcome);
}

QString PortalBus::newToken()
{
    return QStringLiteral("vocalith%1").arg(++m_tokens);
}

Task<Result<QVariantMap, PortalError>> PortalBus::request(QString interface, QString method, QVariantList arguments,
                                                          QVariantMap options)
{
    const auto token = newToken();
    options.insert(QStringLiteral("handle_token"), token);
    arguments << options;
    // Listened to before the call, since the answer may be quicker than its reply.
    const auto sender = m_bus.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    const auto path = QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
    OneShot<Result<QVariantList, PortalError>> responded;
    const auto listener =
        onResponse(path, [resolve = responded.resolver()](const auto& message) { resolve(message.arguments()); });
    const auto onVanished = vanished.subscribe([resolve = responded.resolver()] {
        resolve(failure(PortalError{Kind::failed, "the desktop's portals ended"}));
    });
    const auto reply = co_await call(interface, method, arguments);
    if (!reply && reply.error().kind == Kind::cancelled)
        closeRequest(path);
    if (!reply)
        co_return failure(reply.error());
    const auto outcome = co_await responded;
    if (!outcome) {
        closeRequest(path);
        co_return failure(PortalError{Kind::cancelled});
    }
    if (!*outcome)
        co_return failure(outcome->error());
    const auto& response = **outcome;
    const auto code = response.value(0).toUInt();
    if (code == kDeclined)
        co_return failure(PortalError{Kind::refused});
    if (code != kGranted)
        co_return failure(PortalError{Kind::failed, "the desktop ended its question"});
    co_return qdbus_cast<QVariantMap>(response.value(1));
}

Task<Result<QString, PortalError>> PortalBus::createSession(QString interface)
{
    QVariantMap options;
    options.insert(QStringLiteral("session_handle_token"), newToken());
    const QString method = QStringLiteral("CreateSession");
    const QVariantList none;
    const auto created = co_await request(interface, method, none, options);
    if (!created)
        co_return failure(created.error());
    co_return pathIn(created->value(QStringLiteral("session_handle")));
}

void PortalBus::closeRequest(const QString& path)
{
    m_bus.send(QDBusMessage::createMethodCall(kService, path, kRequest, QStringLiteral("Close")));
}

void PortalBus::closeSession(const QString& session)
{
    m_bus.send(QDBusMessage::createMethodCall(kService, session, kSession, QStringLiteral("Close")));
}

std::unique_ptr<DBusSignal> PortalBus::onResponse(const QString& path, DBusSignal::Handler handler)
{
    const DBusSignalSource source{kService, path, kRequest, QStringLiteral("Response")};
    return std::make_unique<DBusSignal>(m_bus, source, std::move(handler));
}

std::unique_ptr<DBusSignal> PortalBus::onSignal(const QString& interface, const QString& name,
                                                DBusSignal::Handler handler)
{
    const DBusSignalSource source{kService, kPath, interface, name};
    return std::make_unique<DBusSignal>(m_bus, source, std::move(handler));
}

std::unique_ptr<DBusSignal> PortalBus::onClosed(const QString& session, std::function<void()> handler)
{
    const DBusSignalSource source{kService, session, kSession, QStringLiteral("Closed")};
    return std::make_unique<DBusSignal>(m_bus, source, [handler](const QDBusMessage&) { handler(); });
}

} // namespace vocalith
