#pragma once

#include "base/Clock.h"

#include <functional>

namespace vocalith {

/// Gives back what an engine holds in memory after a time without requests. Part of a service, main thread. A timer
/// runs only while something is held and nobody uses it.
class IdleRelease {
public:
    IdleRelease(Clock& clock, Duration delay, std::function<void()> release);

    /// A request in progress, from its beginning to its end.
    class Use {
    public:
        explicit Use(IdleRelease& owner);
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use();
        /// The request ends with nothing held, as far as it knows.
        void nothingHeld() { m_mayHold = false; }

    private:
        IdleRelease& m_owner;
        bool m_mayHold = true;
    };

private:
    Clock& m_clock;
    Duration m_delay;
    std::function<void()> m_release;
    int m_uses = 0;
    Timer m_timer;
};

} // namespace vocalith
