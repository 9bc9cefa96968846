#pragma once

#include "base/OneShot.h"
#include "platform/portal/bus/PortalBus_p.h"
#include "platform/portal/remote/PortalRemoteDesktop.h"

#include <QtDBus/QDBusObjectPath>

namespace vocalith {

/// The session behind a PortalRemoteDesktop.
struct PortalRemoteDesktop::State {
    State(PortalRemoteDesktop& from, PortalBus& through, std::string restoreToken, StoreToken store, Logger log);
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    QVariant session() const { return QVariant::fromValue(QDBusObjectPath(path)); }
    bool isOf(const QDBusMessage& message) const
    {
        return !path.isEmpty() && qvariant_cast<QDBusObjectPath>(message.arguments().value(0)).path() == path;
    }

    Task<Result<void, PortalError>> open();
    Task<Result<void, PortalError>> selectDevices();
    Task<Result<void, PortalError>> startSession();
    void end();

    PortalRemoteDesktop& owner;
    PortalBus& bus;
    std::string token;
    const StoreToken storeToken;
    const Logger logger;
    QString path; ///< empty without a session
    unsigned devices = 0;
    bool isClipboardEnabled = false;
    bool isStarting = false;
    std::vector<OneShot<bool>::Resolver> waiting;
    std::unique_ptr<DBusSignal> onClosed;
    Subscription onVanished;
};

} // namespace vocalith
