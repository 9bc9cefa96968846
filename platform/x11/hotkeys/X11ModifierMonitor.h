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
/// it learns only that one went down, and tells even that only while a modifier is held. Main thread; ends when it is
/// destroyed, never from within its handler.
class X11ModifierMonitor {
public:
    using Handler = std::function<void(const ModifierChange&)>;

    /// `control` outlives the monitor; what is recorded comes through another connection, to the same display.
    static Result<std::unique_ptr<X11ModifierMonitor>, HotKeyError> open(X11Connection& control, Handler handler,
                                                                         const Logger& logger);
    ~X11ModifierMonitor();
    X11ModifierMonitor(const X11ModifierMonitor&) = delete;
    X11ModifierMonitor& operator=(const X11ModifierMonitor&) = delete;

private:
    struct Key {
        bool isDown;
        unsigned char code;
        unsigned group;
    };
    struct Recorded;

    X11ModifierMonitor(X11Connection& control, std::unique_ptr<X11Connection> data, unsigned long context,
                       Handler handler);
    void readHeldKeys();
    void handle(const Key& key);
    std::uint64_t flags() const;

    X11Connection& m_control;
    const Handler m_handler;
    const unsigned long m_context;
    std::map<unsigned char, std::uint64_t> m_held; ///< the flags of the modifier keys that are down
    std::shared_ptr<Recorded> m_recorded;
    std::unique_ptr<X11Connection> m_data; ///< before what its callback uses is gone
};

} // namespace vocalith
