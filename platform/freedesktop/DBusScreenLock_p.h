#pragma once

#include "platform/freedesktop/DBusScreenLock.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusContext>
#include <QtDBus/QDBusMessage>

#include <functional>

namespace vocalith {

/// Listens on both buses. Qt delivers signals of a bus only to the slots of an object.
class DBusScreenLock::Watch final : public QObject, protected QDBusContext {
    Q_OBJECT

public:
    Watch(DBusScreenLock& lock, QDBusConnection session, QDBusConnection system);

private Q_SLOTS:
    void activeChanged(bool isActive);
    void propertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList& invalidated);

private:
    void followScreenSaver(const QString& name, const QString& path);
    void followSession();
    void followHint(const QString& sessionPath);
    void ask(const QDBusConnection& bus, const QDBusMessage& question,
             std::function<void(const QVariant& answer)> take);
    void set(const QString& witness, bool says);

    DBusScreenLock& m_lock;
    QDBusConnection m_session;
    QDBusConnection m_system;
    QSet<QString> m_witnesses; ///< who says that it is locked
};

} // namespace vocalith
