#include "platform/portal/bus/DBusSignal_p.h"

#include "platform/portal/bus/DBusSignalReceiver_p.h"

namespace vocalith {

DBusSignal::DBusSignal(QDBusConnection bus, DBusSignalSource source, Handler handler)
    : m_bus(std::move(bus)), m_source(std::move(source)),
      m_receiver(std::make_unique<DBusSignalReceiver>(std::move(handler)))
{
    m_bus.connect(m_source.service, m_source.path, m_source.interface, m_source.name, m_receiver.get(),
                  SLOT(receive(QDBusMessage)));
}

DBusSignal::~DBusSignal()
{
    m_bus.disconnect(m_source.service, m_source.path, m_source.interface, m_source.name, m_receiver.get(),
                     SLOT(receive(QDBusMessage)));
}

} // namespace vocalith
