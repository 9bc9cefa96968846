#pragma once

#include "base/TaskScope.h"
#include "base/Worker.h"
#include "platform/atspi/AtspiAccessibility.h"
#include "platform/atspi/AtspiBus_p.h"

#include <memory>
#include <vector>

namespace vocalith {

/// The way to the accessibility bus: the session bus says where it is. Connections are made on a worker thread, since
/// making one waits for the bus.
class AtspiAccessibility::Connection {
public:
    Connection(Clock& clock, std::string sessionBus);

    bool isConnected() const { return m_bus && m_bus->isConnected(); }
    /// Null while there is none. Those who work with it keep it.
    const std::shared_ptr<AtspiBus>& bus() const { return m_bus; }

    /// Connects where that is not so and does not happen yet.
    void start();
    /// Waits while it connects, at most until `deadline`.
    Task<void> settled(Instant deadline);
    Task<void> shutDown();

private:
    Task<void> connect();
    Task<std::shared_ptr<AtspiBus>> open(std::string address);
    Task<void> requestAccessibility();
    Task<bool> status(const char* name);
    Task<void> setEnabled(bool isEnabled);

    Clock& m_clock;
    const std::string m_sessionAddress;
    std::shared_ptr<AtspiBus> m_session;
    std::shared_ptr<AtspiBus> m_bus;
    bool m_haveEnabled = false;
    std::vector<OneShot<bool>::Resolver> m_waiting;
    TaskScope m_tasks;
    Worker m_worker; // last: its jobs end first
};

} // namespace vocalith
