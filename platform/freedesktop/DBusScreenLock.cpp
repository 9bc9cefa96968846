#include "platform/freedesktop/DBusScreenLock.h"

#include "platform/freedesktop/DBusScreenLock_p.h"

#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusServiceWatcher>
#include <QtDBus/QDBusVariant>

#include <utility>

namespace vocalith {
namespace {

const QString kLogin = QStringLiteral("org.freedesktop.login1");
const QString kLoginSession = QStringLiteral("org.freedesktop.login1.Session");
const QString kHint = QStringLiteral("LockedHint");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

} // namespace

DBusScreenLock::DBusScreenLock() : DBusScreenLock(QDBusConnection::sessionBus(), QDBusConnection::systemBus())
{}

DBusScreenLock::DBusScreenLock(const QDBusConnection& session, const QDBusConnection& system)
    : m_watch(std::make_unique<Watch>(*this, session, system))
{}

DBusScreenLock::~DBusScreenLock() = default;

DBusScreenLock::Watch::Watch(DBusScreenLock& lock, QDBusConnection session, QDBusConnection system)
    : m_lock(lock), m_session(std::move(session)), m_system(std::move(system))
{
    if (m_session.isConnected()) {
        followScreenSaver(QStringLiteral("org.freedesktop.ScreenSaver"),
                          QStringLiteral("/org/freedesktop/ScreenSaver"));
        followScreenSaver(QStringLiteral("org.gnome.ScreenSaver"), QStringLiteral("/org/gnome/ScreenSaver"));
    }
    if (m_system.isConnected())
        followSession();
}

/// From whichever path it comes: the desktops differ in that.
void DBusScreenLock::Watch::followScreenSaver(const QString& name, const QString& path)
{
    m_session.connect({}, {}, name, QStringLiteral("ActiveChanged"), this, SLOT(activeChanged(bool)));
    auto* service = new QDBusServiceWatcher(name, m_session, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(service, &QDBusServiceWatcher::serviceUnregistered, this, [this, name] { set(name, false); });
    const auto question = QDBusMessage::createMethodCall(name, path, name, QStringLiteral("GetActive"));
    ask(m_session, question, [this, name](const QVariant& isActive) { set(name, isActive.toBool()); });
}

void DBusScreenLock::Watch::followSession()
{
    auto question =
        QDBusMessage::createMethodCall(kLogin, QStringLiteral("/org/freedesktop/login1"),
                                       QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("GetSession"));
    question << QStringLiteral("auto"); // the caller's own
    ask(m_system, question, [this](const QVariant& session) { followHint(session.value<QDBusObjectPath>().path()); });
}

void DBusScreenLock::Watch::followHint(const QString& sessionPath)
{
    m_system.connect(kLogin, sessionPath, kProperties, QStringLiteral("PropertiesChanged"), this,
                     SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    auto question = QDBusMessage::createMethodCall(kLogin, sessionPath, kProperties, QStringLiteral("Get"));
    question << kLoginSession << kHint;
    ask(m_system, question,
        [this](const QVariant& hint) { set(kHint, hint.value<QDBusVariant>().variant().toBool()); });
}

/// Nothing is asked of a service that is not there.
void DBusScreenLock::Watch::ask(const QDBusConnection& bus, const QDBusMessage& question,
                                std::function<void(const QVariant& answer)> take)
{
    auto call = question;
    call.setAutoStartService(false);
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [take = std::move(take)](QDBusPendingCallWatcher* done) {
        done->deleteLater();
        const auto reply = done->reply();
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
            take(reply.arguments().constFirst());
    });
}

void DBusScreenLock::Watch::activeChanged(bool isActive)
{
    set(message().interface(), isActive);
}

void DBusScreenLock::Watch::propertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList&)
{
    if (interface == kLoginSession && changed.contains(kHint))
        set(kHint, changed.value(kHint).toBool());
}

void DBusScreenLock::Watch::set(const QString& witness, bool says)
{
    if (says)
        m_witnesses.insert(witness);
    else
        m_witnesses.remove(witness);
    m_lock.isLocked.set(!m_witnesses.isEmpty());
}

} // namespace vocalith
