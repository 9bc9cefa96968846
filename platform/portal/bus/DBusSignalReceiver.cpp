#include "platform/portal/bus/DBusSignalReceiver_p.h"

namespace vocalith {

DBusSignalReceiver::DBusSignalReceiver(std::function<void(const QDBusMessage&)> handler) : m_handler(std::move(handler))
{}

void DBusSignalReceiver::receive(const QDBusMessage& message)
{
    const auto handler = m_handler; // which may end this
    handler(message);
}

} // namespace vocalith
