#pragma once

#include "base/Clock.h"
#include "platform/x11/clipboard/X11SelectionOwner_p.h"

#include <deque>
#include <memory>
#include <optional>

namespace vocalith {

/// Reads everything that the owner of a selection offers, one type after the other. An owner that is silent for half a
/// second is given up, so that is the most that a dead one costs; one that is slow all the time costs three seconds.
/// Main thread; it outlives its tasks and conversations.
class X11SelectionReader {
public:
    class Conversation;
    struct Content {
        X11SelectionContent forms;
        bool isComplete = true;
    };

    X11SelectionReader(X11Connection& connection, Clock& clock, unsigned long window)
        : m_connection(connection), m_clock(clock), m_window(window)
    {}

    /// Asks the owner what it offers, and does not wait for the answer. Its half second begins here.
    std::shared_ptr<Conversation> ask(unsigned long selection);
    /// Hears the answer and reads all that it names.
    Task<Result<Content, Cancelled>> read(std::shared_ptr<Conversation> asked);
    /// Has the owner do what the target stands for, and waits until it has, at most that long.
    Task<void> request(unsigned long selection, unsigned long target, Duration patience);

private:
    X11Connection& m_connection;
    Clock& m_clock;
    const unsigned long m_window;
    unsigned m_conversations = 0;
};

} // namespace vocalith
