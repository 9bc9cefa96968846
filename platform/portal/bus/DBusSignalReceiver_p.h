#pragma once

#include <QObject>
#include <QtDBus/QDBusMessage>

#include <functional>

namespace vocalith {

/// What Qt delivers a signal of the bus to; part of a DBusSignal.
class DBusSignalReceiver : public QObject {
    Q_OBJECT

public:
    explicit DBusSignalReceiver(std::function<void(const QDBusMessage&)> handler);

public Q_SLOTS:
    void receive(const QDBusMessage& message);

private:
    const std::function<void(const QDBusMessage&)> m_handler;
};

} // namespace vocalith
