#pragma once

#include "base/Log.h"
#include "base/TaskScope.h"
#include "ports/HotKeys.h"

#include <map>
#include <memory>

namespace vocalith {

class PortalConnection;

/// Shortcuts through the GlobalShortcuts portal. The desktop asks the user about all of them at once and may give them
/// other keys; what is registered in one turn of the event loop is one question. A shortcut takes its keys away from
/// all other programs for as long as the program runs, so keys that people type with are refused.
///
/// The questions run in `tasks`, which is empty before this is destroyed.
class PortalHotKeys final : public HotKeys {
public:
    PortalHotKeys(PortalConnection& portals, TaskScope& tasks, Logger logger = {});
    ~PortalHotKeys() override;

    Result<Subscription, HotKeyError> registerHotKey(const HotKey& hotKey, Handler handler) override;
    /// Each of them would be a question to the user, and kept from all others for good.
    bool takesKeysOnDemand() const override { return false; }
    /// Always unsupported: the portal knows no shortcuts of modifier keys alone.
    Result<Subscription, HotKeyError> monitorModifiers(std::function<void(const ModifierChange&)> handler) override;

    /// The keys that the user has chosen in the desktop, as it describes them, by the shortcut's identity.
    const std::map<Uuid, std::string>& triggers() const;
    Signal<> triggersChanged;

private:
    class Session;
    std::shared_ptr<Session> m_session;
};

} // namespace vocalith
