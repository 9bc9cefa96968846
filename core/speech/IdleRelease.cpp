#include "core/speech/IdleRelease.h"

namespace vocalith {

IdleRelease::IdleRelease(Clock& clock, Duration delay, std::function<void()> release)
    : m_clock(clock), m_delay(delay), m_release(std::move(release))
{}

IdleRelease::Use::Use(IdleRelease& owner) : m_owner(owner)
{
    ++m_owner.m_uses;
    m_owner.m_timer.reset();
}

IdleRelease::Use::~Use()
{
    if (--m_owner.m_uses == 0 && m_mayHold)
        m_owner.m_timer = m_owner.m_clock.after(m_owner.m_delay, m_owner.m_release);
}

} // namespace vocalith
