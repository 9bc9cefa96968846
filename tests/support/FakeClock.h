#pragma once

#include "base/Clock.h"

#include <map>

namespace vocalith::test {

/// A clock that stands still until the test moves it. Starts at 2026-03-01T12:00:00Z.
class FakeClock final : public Clock {
public:
    Date now() const override { return m_now; }
    Instant instant() const override { return m_instant; }
    Timer after(Duration delay, std::function<void()> action) override;

    /// Moves both times on and fires the timers on the way, each at its own instant, in order.
    void advance(Duration by);
    /// Moves the time of day alone, as a user who sets the clock does.
    void setDate(Date now) { m_now = now; }
    std::size_t pendingTimers() const { return m_timers.size(); }

private:
    class FakeTimer;
    using Timers = std::multimap<Instant, std::function<void()>>;

    void moveTo(Instant instant);

    Date m_now = std::chrono::sys_days{std::chrono::year{2026} / 3 / 1} + std::chrono::hours{12};
    Instant m_instant{std::chrono::hours{1}};
    Timers m_timers;
    std::map<const FakeTimer*, Timers::iterator> m_positions;
};

} // namespace vocalith::test
