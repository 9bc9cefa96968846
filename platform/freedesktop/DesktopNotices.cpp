#include "platform/freedesktop/DesktopNotices.h"

#include "ports/ApplicationID.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

#include <QCoreApplication>
#include <QStringList>
#include <QVariantMap>

namespace vocalith {
namespace {

constexpr int kAnswerLimit = 3000; // milliseconds

QDBusMessage notification(const QString& text)
{
    const auto end = text.indexOf(QLatin1String(". "));
    const auto title = end < 0 ? text : text.left(end + 1);
    // The body may be read as markup, so what could be taken for it is escaped.
    const auto body = end < 0 ? QString() : text.mid(end + 2).toHtmlEscaped();
    const QString application = QLatin1String(kApplicationID);
    const QVariantMap hints{{QStringLiteral("desktop-entry"), application}};
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    message << QStringLiteral("Vocalith") << 0U << application << title << body << QStringList() << hints << -1;
    return message;
}

} // namespace

DesktopNotices::DesktopNotices(Logger logger) : DesktopNotices(std::move(logger), QDBusConnection::sessionBus())
{}

DesktopNotices::DesktopNotices(Logger logger, const QDBusConnection& bus)
    : m_logger(std::move(logger)), m_bus(std::make_unique<QDBusConnection>(bus))
{}

DesktopNotices::~DesktopNotices() = default;

void DesktopNotices::show(std::string_view text)
{
    const std::string whole(text);
    m_logger.info("Notice: " + whole);
    if (!m_bus->isConnected())
        return missed(whole, "there is no session bus");
    auto* answer =
        new QDBusPendingCallWatcher(m_bus->asyncCall(notification(QString::fromStdString(whole)), kAnswerLimit));
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer,
                     [this, whole, alive = std::weak_ptr(m_isAlive)](QDBusPendingCallWatcher* call) {
                         call->deleteLater();
                         const QDBusPendingReply<std::uint32_t> reply = *call;
                         if (reply.isError() && !alive.expired())
                             missed(whole, reply.error().message().toStdString());
                     });
}

void DesktopNotices::missed(const std::string& text, const std::string& why)
{
    m_logger.warning("The notice could not be shown: " + why);
    undelivered.emit(text);
}

} // namespace vocalith
