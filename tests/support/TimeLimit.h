#pragma once

#include "base/Clock.h"

#include <functional>

namespace vocalith::test {

/// Whether `action` takes no longer than `limit`. A busy machine adds to every time, so it is done again for a while:
/// what keeps the limit once can keep it, and what waits too long does so each time.
inline bool keepsLimit(Duration limit, const std::function<void()>& action)
{
    const SystemClock clock;
    const auto end = clock.instant() + std::chrono::seconds(20);
    while (clock.instant() < end) {
        const auto start = clock.instant();
        action();
        if (clock.instant() - start <= limit)
            return true;
    }
    return false;
}

} // namespace vocalith::test
