#include "tests/support/FakeClock.h"

namespace vocalith::test {

class FakeClock::FakeTimer final : public Timer::Pending {
public:
    explicit FakeTimer(FakeClock& clock) : m_clock(clock) {}
    ~FakeTimer() override
    {
        const auto position = m_clock.m_positions.find(this);
        if (position == m_clock.m_positions.end())
            return;
        m_clock.m_timers.erase(position->second);
        m_clock.m_positions.erase(position);
    }

private:
    FakeClock& m_clock;
};

Timer FakeClock::after(Duration delay, std::function<void()> action)
{
    auto timer = std::make_unique<FakeTimer>(*this);
    const auto* key = timer.get();
    const auto due = m_instant + std::max(delay, Duration::zero());
    m_positions[key] = m_timers.emplace(due, std::move(action));
    return Timer(std::move(timer));
}

void FakeClock::advance(Duration by)
{
    const auto end = m_instant + by;
    while (!m_timers.empty() && m_timers.begin()->first <= end) {
        const auto first = m_timers.begin();
        moveTo(first->first);
        const auto action = std::move(first->second);
        std::erase_if(m_positions, [&](const auto& entry) { return entry.second == first; });
        m_timers.erase(first);
        action();
    }
    moveTo(end);
}

void FakeClock::moveTo(Instant instant)
{
    m_now += std::chrono::duration_cast<std::chrono::milliseconds>(instant - m_instant);
    m_instant = instant;
}

} // namespace vocalith::test
