#pragma once

#include "base/Clock.h"

#include <functional>
#include <memory>
#include <utility>

namespace vocalith {

/// Runs the last of several actions, once the calls have been quiet for a while. Copies share the one pending action;
/// it is dropped with the last copy. Main thread; the clock outlives it.
class Debouncer {
public:
    Debouncer(Clock& clock, Duration delay) : m_clock(&clock), m_delay(delay), m_box(std::make_shared<Box>()) {}

    /// Drops the pending action, if any, and runs `action` on the main thread, `delay` from now.
    void operator()(std::function<void()> action) const
    {
        m_box->item = m_clock->after(m_delay, [weakBox = std::weak_ptr(m_box), action = std::move(action)]() mutable {
            // The timer holds this closure, and the action may hold a copy of the debouncer: end that ring first.
            const auto run = std::move(action);
            if (const auto box = weakBox.lock())
                box->item.reset();
            run();
        });
    }

    /// Drops the pending action, if any.
    void cancel() const { m_box->item.reset(); }

private:
    struct Box {
        Timer item;
    };

    Clock* m_clock;
    Duration m_delay;
    std::shared_ptr<Box> m_box;
};

} // namespace vocalith
