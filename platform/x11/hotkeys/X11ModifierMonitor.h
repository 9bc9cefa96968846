#pragma once

#include "base/Log.h"
#include "base/Result.h"
#include "ports/HotKeys.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vocalith {

class X11Connection;

/// Tells how the modifier keys change, whoever has the keyboard, through the server's RECORD extension. Of other keys
/// and the mouse's buttons and wheel it tells only that one went down, and even that only while a modifier is held.
/// Main thread; ends when it is destroyed, never from within its handler.
class X11ModifierMonitor {
public:
    struct Handlers {
        std::function<void(const ModifierChange&)> changed;
        /// Whether the key is one of our own hot keys in an event of this state: whoever has registered it is told of
        /// it, and it makes no combination.
        std::function<bool(unsigned char code, unsigned state)> isHotKey;
    };

    /// `control` outlives the monitor; what is recorded comes through another connection, to the same display.
    static Result<std::unique_ptr<X11ModifierMonitor>, HotKeyError> open(X11Connection& control, Handlers handlers,
                                                                         const Logger& logger);
    ~X11ModifierMonitor();
    X11ModifierMonitor(const X11ModifierMonitor&) = delete;
    X11ModifierMonitor& operator=(const X11ModifierMonitor&) = delete;

private:
    /// A key or a button of the mouse.
    struct Key {
        int event;
        unsigned char code;
        unsigned state;
    };
    struct Recorded;

    X11ModifierMonitor(X11Connection& control, std::unique_ptr<X11Connection> data, unsigned long context,
                       Handlers handlers);
    void readHeldKeys();
    void handle(const Key& key);
    std::uint64_t flags() const;

    X11Connection& m_control;
    const Handlers m_handlers;
    const unsigned long m_context;
    std::map<unsigned char, std::uint64_t> m_held; ///< the flags of the modifier keys that are down
    std::shared_ptr<Recorded> m_recorded;
    std::unique_ptr<X11Connection> m_data; ///< before what its callback uses is gone
};

} // namespace vocalith
