#pragma once

#include "base/Log.h"
#include "base/Task.h"

#include <memory>
#include <string>

namespace vocalith {

class PortalBus;

/// The versions of the portals that serve here; 0 for one that is missing.
struct PortalOffer {
    unsigned globalShortcuts = 0;
    unsigned remoteDesktop = 0;
    unsigned clipboard = 0;
    bool operator==(const PortalOffer&) const = default;
};

/// The desktop's portals (XDG Desktop Portal), over a connection to the bus of our own: the application is registered
/// under its identifier before anything else is asked for, which portals since 1.20 know and later ones insist on. Main
/// thread; it outlives all that uses it.
class PortalConnection {
public:
    /// An empty address means the session bus. The identifier is that of the desktop entry.
    explicit PortalConnection(const std::string& applicationID, const std::string& busAddress = {}, Logger logger = {});
    ~PortalConnection();

    bool isConnected() const;
    /// Asks which portals there are. A stop yields none.
    Task<PortalOffer> offer();

    PortalBus& bus() { return *m_bus; } ///< for the classes of this folder

private:
    std::unique_ptr<PortalBus> m_bus;
};

} // namespace vocalith
