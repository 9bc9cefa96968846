#include "platform/atspi/AtspiConnection_p.h"

#include "base/Uuid.h"

#include <QtDBus/QDBusVariant>

#include <chrono>

namespace vocalith {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 5s; // the session bus may have to start it
constexpr const char* kStatus = "org.a11y.Status";

AtspiReference launcher()
{
    return {"org.a11y.Bus", "/org/a11y/bus"};
}

} // namespace

AtspiAccessibility::Connection::Connection(Clock& clock, std::string sessionBus)
    : m_clock(clock), m_sessionAddress(std::move(sessionBus))
{}

void AtspiAccessibility::Connection::start()
{
    if (!isConnected() && m_tasks.isEmpty())
        m_tasks.start(connect());
}

Task<void> AtspiAccessibility::Connection::settled(Instant deadline)
{
    if (m_tasks.isEmpty())
        co_return;
    OneShot<bool> settled;
    m_waiting.push_back(settled.resolver());
    const auto limit = m_clock.after(deadline - m_clock.instant(), [resolve = settled.resolver()] { resolve(false); });
    co_await settled;
}

Task<void> AtspiAccessibility::Connection::connect()
{
    m_bus.reset();
    if (!m_session || !m_session->isConnected()) {
        const auto session = co_await open(m_sessionAddress);
        m_session = session;
    }
    if (m_session) {
        const AtspiCall getAddress{launcher(), "org.a11y.Bus", "GetAddress"};
        AtspiReply reply(*m_session, getAddress, m_clock.instant() + kPatience);
        const auto answer = co_await reply.message;
        const auto address = textOf(answer);
        if (address && !address->empty()) {
            const auto bus = co_await open(*address);
            m_bus = bus;
        }
    }
    if (m_bus)
        co_await requestAccessibility();
    for (const auto& resolve : std::exchange(m_waiting, {}))
        resolve(true);
}

Task<std::shared_ptr<AtspiBus>> AtspiAccessibility::Connection::open(std::string address)
{
    auto connect = [address = QString::fromStdString(address)](const StopToken&) {
        const auto name = QString::fromStdString("vocalith-atspi-" + Uuid::random().toString());
        return address.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)
                                 : QDBusConnection::connectToBus(address, name);
    };
    auto connection = co_await m_worker.run(std::move(connect));
    if (!connection)
        co_return nullptr;
    auto bus = std::make_shared<AtspiBus>(*connection, m_clock);
    co_return bus->isConnected() ? bus : nullptr;
}

Task<bool> AtspiAccessibility::Connection::status(const char* name)
{
    AtspiReply reply(*m_session, AtspiCall::property(launcher(), kStatus, name), m_clock.instant() + kPatience);
    const auto answer = co_await reply.message;
    const auto value = answer ? valueOf(*answer) : std::nullopt;
    co_return value && value->toBool();
}

Task<void> AtspiAccessibility::Connection::setEnabled(bool isEnabled)
{
    const QVariantList arguments{QString(kStatus), QString("IsEnabled"), QVariant::fromValue(QDBusVariant(isEnabled))};
    const AtspiCall set{launcher(), "org.freedesktop.DBus.Properties", "Set", arguments};
    AtspiReply reply(*m_session, set, m_clock.instant() + kPatience);
    co_await reply.message;
}

Task<void> AtspiAccessibility::Connection::requestAccessibility()
{
    const bool isEnabled = co_await status("IsEnabled");
    if (isEnabled)
        co_return;
    co_await setEnabled(true);
    m_haveEnabled = true;
}

Task<void> AtspiAccessibility::Connection::shutDown()
{
    m_tasks.requestStop();
    co_await m_tasks.untilEmpty();
    if (!m_session || !std::exchange(m_haveEnabled, false))
        co_return;
    const bool isUsed = co_await status("ScreenReaderEnabled");
    if (!isUsed)
        co_await setEnabled(false);
}

} // namespace vocalith
