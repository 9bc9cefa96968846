#pragma once

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

#include <functional>
#include <memory>

namespace vocalith {

class DBusSignalReceiver;

/// Where a signal of the bus comes from.
struct DBusSignalSource {
    QString service;
    QString path;
    QString interface;
    QString name;
};

/// Tells of a signal of the bus for as long as it lives. Main thread.
class DBusSignal {
public:
    using Handler = std::function<void(const QDBusMessage&)>;

    DBusSignal(QDBusConnection bus, DBusSignalSource source, Handler handler);
    ~DBusSignal();
    DBusSignal(const DBusSignal&) = delete;
    DBusSignal& operator=(const DBusSignal&) = delete;

private:
    QDBusConnection m_bus;
    const DBusSignalSource m_source;
    std::unique_ptr<DBusSignalReceiver> m_receiver;
};

} // namespace vocalith
