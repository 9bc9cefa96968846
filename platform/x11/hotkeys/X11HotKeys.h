#pragma once

#include "base/Log.h"
#include "ports/HotKeys.h"

#include <memory>
#include <string>

namespace vocalith {

class X11Connection;

/// Hot keys by grabs on the root window, on a connection of their own. A grab holds whatever locks are on, and is moved
/// when the keyboard map puts a modifier elsewhere. While one of the keys is held the server sends us all others; a hot
/// key among them counts whether or not the first one's modifiers are held too. While another program has taken the
/// whole keyboard (an open menu, a locked screen) no key arrives here. Main thread.
class X11HotKeys final : public HotKeys {
public:
    /// An empty name means $DISPLAY. The error says what could not be reached.
    static Result<std::unique_ptr<X11HotKeys>, std::string> open(const std::string& display, Logger logger);
    ~X11HotKeys() override;

    Result<Subscription, HotKeyError> registerHotKey(const HotKey& hotKey, Handler handler) override;
    bool takesKeysOnDemand() const override { return true; }
    Result<Subscription, HotKeyError> monitorModifiers(std::function<void(const ModifierChange&)> handler) override;

private:
    class Grabs;
    class Monitors;

    explicit X11HotKeys(std::unique_ptr<X11Connection> connection, const Logger& logger);

    std::unique_ptr<X11Connection> m_connection;
    std::shared_ptr<Grabs> m_grabs;
    std::shared_ptr<Monitors> m_monitors;
};

} // namespace vocalith
