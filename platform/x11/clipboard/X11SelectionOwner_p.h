#pragma once

#include "base/Clock.h"
#include "ports/Pasteboard.h"

#include <functional>
#include <list>
#include <vector>

union _XEvent;

namespace vocalith {

class X11Connection;

/// What a selection holds under one target.
struct X11SelectionForm {
    unsigned long target = 0;
    unsigned long type = 0;
    int format = 8;                      ///< bits of a unit: 8, 16 or 32
    PasteboardSnapshot::Payload payload; ///< a unit of 32 bits takes four bytes
};
using X11SelectionContent = std::vector<X11SelectionForm>;

/// Hands data to other clients: small ones at once, large ones in pieces as the receiver takes them (INCR), so that no
/// transfer holds up the event loop. A receiver that does nothing for ten seconds is left alone. Main thread.
class X11OutgoingTransfers {
public:
    X11OutgoingTransfers(X11Connection& connection, Clock& clock) : m_connection(connection), m_clock(clock) {}

    /// `done` is called when all has been handed over, maybe before this returns. An error says that the window is
    /// gone.
    bool send(unsigned long requestor, unsigned long property, const X11SelectionForm& form,
              std::function<void()> done);
    void handle(const _XEvent& event);

private:
    struct Transfer {
        unsigned long requestor;
        unsigned long property;
        X11SelectionForm form;
        std::function<void()> done;
        std::size_t sent = 0;
        Timer giveUp{};
    };
    using Transfers = std::list<Transfer>;

    std::size_t pieceSize() const;
    void sendPiece(Transfers::iterator transfer);
    void write(const Transfer& transfer, std::size_t length);
    void end(Transfers::iterator transfer);

    X11Connection& m_connection;
    Clock& m_clock;
    Transfers m_transfers;
};

/// Owns one selection (CLIPBOARD, PRIMARY) and answers those who ask for it. Main thread.
class X11SelectionOwner {
public:
    /// Told when a data type has been handed to a window.
    using Served = std::function<void(unsigned long requestor, unsigned long target)>;

    X11SelectionOwner(X11Connection& connection, Clock& clock, unsigned long window, unsigned long selection);

    /// Yields whether the server has made this the owner. Two round trips.
    bool own(X11SelectionContent content, Served served);
    void disown();
    bool isOwner() const { return m_isOwner; }
    const X11SelectionContent& content() const { return m_content; }
    /// Whether an event about the owner is older than what was done here last, or its echo.
    bool isStale(unsigned long serial) const { return serial <= m_lastChange; }

    /// Yields whether the event took the selection away.
    bool handle(const _XEvent& event);

private:
    void answer(const _XEvent& event);
    bool convert(unsigned long requestor, unsigned long target, unsigned long property);
    bool convertMany(unsigned long requestor, unsigned long property);
    bool writeMeta(unsigned long requestor, unsigned long target, unsigned long property);

    X11Connection& m_connection;
    X11OutgoingTransfers m_transfers;
    const unsigned long m_window;
    const unsigned long m_selection;
    X11SelectionContent m_content;
    Served m_served;
    unsigned long m_ownedSince = 0; ///< the server's time
    unsigned long m_lastChange = 0; ///< serial number of the request
    bool m_isOwner = false;
};

} // namespace vocalith
