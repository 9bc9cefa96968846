#include "platform/portal/bus/PortalConnection.h"

#include "platform/portal/bus/PortalBus_p.h"

#include <QtDBus/QDBusVariant>

namespace vocalith {
namespace {

Task<unsigned> versionOf(PortalBus& bus, QString interface)
{
    const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
    const QString method = QStringLiteral("Get");
    const QVariantList arguments{interface, QStringLiteral("version")};
    const auto answer = co_await bus.call(properties, method, arguments);
    if (!answer || answer->isEmpty())
        co_return 0U;
    co_return qvariant_cast<QDBusVariant>(answer->first()).variant().toUInt();
}

} // namespace

PortalConnection::PortalConnection(const std::string& applicationID, const std::string& busAddress, Logger logger)
    : m_bus(std::make_unique<PortalBus>(applicationID, busAddress, std::move(logger)))
{}

PortalConnection::~PortalConnection() = default;

bool PortalConnection::isConnected() const
{
    return m_bus->isConnected();
}

Task<PortalOffer> PortalConnection::offer()
{
    const auto shortcuts = QString::fromLatin1(portal::globalShortcuts);
    const auto desktop = QString::fromLatin1(portal::remoteDesktop);
    const auto clipboard = QString::fromLatin1(portal::clipboard);
    const auto shortcutsVersion = co_await versionOf(*m_bus, shortcuts);
    const auto desktopVersion = co_await versionOf(*m_bus, desktop);
    const auto clipboardVersion = co_await versionOf(*m_bus, clipboard);
    co_return PortalOffer{shortcutsVersion, desktopVersion, clipboardVersion};
}

} // namespace vocalith
