#pragma once

#include <QMetaType>
#include <QString>
#include <QVariantMap>
#include <QtDBus/QDBusArgument>

namespace vocalith {

/// One shortcut as the portal has it: (sa{sv}).
struct PortalShortcut {
    QString id;
    QVariantMap properties;
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

} // namespace vocalith

Q_DECLARE_METATYPE(vocalith::PortalShortcut)
