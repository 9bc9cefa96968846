#include "platform/atspi/AtspiAccessibility.h"

#include "platform/atspi/AtspiConnection_p.h"
#include "platform/atspi/AtspiElement_p.h"

namespace vocalith {
namespace {

constexpr std::chrono::milliseconds kTimeLimit{200};
constexpr std::chrono::seconds kConnectLimit{5};

bool lists(const AtspiAnswer& interfaces, const char* interface)
{
    const auto value = interfaces ? valueOf(*interfaces) : std::nullopt;
    return value && value->toStringList().contains(QLatin1String(interface));
}

Task<AtspiTraits> traitsOf(AtspiBus& bus, AtspiReference node, Instant deadline)
{
    const AtspiReference application{node.service, atspi::kRootPath};
    const AtspiReference daemon{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
    const AtspiCall process{daemon, "org.freedesktop.DBus", "GetConnectionUnixProcessID", {node.service}};
    AtspiReply roleReply(bus, {node, atspi::kAccessible, "GetRole"}, deadline);
    AtspiReply stateReply(bus, {node, atspi::kAccessible, "GetState"}, deadline);
    AtspiReply interfacesReply(bus, {node, atspi::kAccessible, "GetInterfaces"}, deadline);
    AtspiReply toolkitReply(bus, AtspiCall::property(application, atspi::kApplication, "ToolkitName"), deadline);
    AtspiReply processReply(bus, process, deadline);
    const auto role = co_await roleReply.message;
    const auto state = co_await stateReply.message;
    const auto interfaces = co_await interfacesReply.message;
    const auto toolkit = co_await toolkitReply.message;
    const auto processId = co_await processReply.message;

    AtspiTraits traits;
    // Without an answer it may well be one.
    traits.isSecure = numberOf(role).value_or(static_cast<int>(atspi::Role::passwordText)) ==
                      static_cast<int>(atspi::Role::passwordText);
    traits.hasText = lists(interfaces, atspi::kText);
    traits.isEditable =
        state && atspi::has(statesOf(*state), atspi::State::editable) && lists(interfaces, atspi::kEditableText);
    traits.countsUtf16 = textOf(toolkit).value_or("").starts_with("Qt");
    traits.processId = numberOf(processId).value_or(0);
    co_return traits;
}

} // namespace

AtspiAccessibility::AtspiAccessibility(Clock& clock, std::string sessionBus)
    : m_connection(std::make_unique<Connection>(clock, std::move(sessionBus))), m_clock(clock)
{
    m_connection->start();
}

AtspiAccessibility::~AtspiAccessibility() = default;

bool AtspiAccessibility::isProcessTrusted() const
{
    return m_connection->isConnected();
}

Task<bool> AtspiAccessibility::connected()
{
    m_connection->start();
    co_await m_connection->settled(m_clock.instant() + kConnectLimit);
    co_return m_connection->isConnected();
}

Task<std::unique_ptr<FocusedElement>> AtspiAccessibility::focusedElement()
{
    const Instant deadline = m_clock.instant() + kTimeLimit;
    m_connection->start();
    co_await m_connection->settled(deadline);
    const std::shared_ptr<AtspiBus> bus = m_connection->bus();
    if (!bus)
        co_return nullptr;
    const auto focus = co_await findFocus(*bus, deadline);
    if (!focus)
        co_return nullptr;
    const auto traits = co_await traitsOf(*bus, focus->node, deadline);
    co_return std::make_unique<AtspiElement>(bus, *focus, traits);
}

Task<void> AtspiAccessibility::shutDown()
{
    return m_connection->shutDown();
}

} // namespace vocalith
