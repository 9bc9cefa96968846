#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/Result.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct _XDisplay;
union _XEvent;

namespace vocalith {

/// A connection to the X server whose events come through the main thread's event loop. An error that the server
/// reports is logged and nothing else happens, unless an X11ErrorTrap waits for it; when the server goes away the
/// connection is lost, and calls do nothing any more. Main thread; it outlives all that uses it.
///
/// Xlib has one error handler for a whole process. The one that is set here ignores the errors of other connections;
/// what they do when they are lost stays as it is.
class X11Connection {
public:
    /// An empty name means $DISPLAY. The error says what could not be reached.
    static Result<std::unique_ptr<X11Connection>, std::string> open(const std::string& name = {}, Logger logger = {});
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    _XDisplay* display() const { return m_display; }
    unsigned long root() const { return m_root; }
    bool isLost() const { return m_isLost; }

    /// The number of a name; asked for once. 0 when the connection is lost.
    unsigned long atom(const std::string& name);
    /// Empty for a number without a name.
    std::string atomName(unsigned long atom);

    /// The key at the place that the virtual code means, if this keyboard has it.
    std::optional<unsigned char> keyCode(int virtualKeyCode) const;

    /// The server's time now, for the requests that need one. One round trip.
    unsigned long serverTime();

    /// Sends what has been asked, and tells of the events that come within a millisecond, as soon as there are any: an
    /// answer that is nearly here costs less so than a turn of the event loop. Yields whether there were any.
    bool waitBriefly();

    /// Every event that arrives. Those of the generic kind have their data (XGetEventData) while they are told.
    Signal<_XEvent> event;
    Signal<> lost;

private:
    friend class X11ErrorTrap;
    struct Attached;
    struct Source;

    X11Connection(_XDisplay* display, Logger logger);
    void attach();
    void dispatch();
    void dispatchNext();
    void setLost();
    void handleError(unsigned long serial, int code, int request);

    struct Trap {
        unsigned long first; ///< serial numbers of requests
        unsigned long last;
        int error = 0;
    };

    _XDisplay* m_display;
    const Logger m_logger;
    unsigned long m_root = 0;
    unsigned long m_window = 0; ///< hidden, for the server's time
    bool m_isLost = false;
    std::map<std::string, unsigned long> m_atoms;
    std::map<unsigned long, std::string> m_atomNames;
    std::vector<Trap*> m_traps;
    std::unique_ptr<Source> m_source;
};

/// Collects the errors of the requests that are made while it lives. Lives on the stack; may be nested.
class X11ErrorTrap {
public:
    explicit X11ErrorTrap(X11Connection& connection);
    ~X11ErrorTrap();
    X11ErrorTrap(const X11ErrorTrap&) = delete;
    X11ErrorTrap& operator=(const X11ErrorTrap&) = delete;

    /// Waits until the server has handled all requests so far, one round trip. Yields the code of the first error, or
    /// 0.
    int finish();

private:
    X11Connection& m_connection;
    X11Connection::Trap m_trap;
};

} // namespace vocalith
