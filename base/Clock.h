#pragma once

#include "base/Date.h"
#include "base/Result.h"
#include "base/Task.h"

#include <functional>
#include <memory>

namespace vocalith {

/// A pending one-shot timer. Destroying or resetting it cancels the timer.
class [[nodiscard]] Timer {
public:
    class Pending {
    public:
        virtual ~Pending() = default;
    };

    Timer() = default;
    explicit Timer(std::unique_ptr<Pending> pending) : m_pending(std::move(pending)) {}

    void reset() { m_pending.reset(); }
    /// Whether a timer was set here and not reset since; it stays true after the timer has fired.
    bool isSet() const { return m_pending != nullptr; }

private:
    std::unique_ptr<Pending> m_pending;
};

/// Where all time comes from. The time of day and the instant may be asked on any thread; timers belong to the main
/// thread.
class Clock {
public:
    virtual ~Clock() = default;

    virtual Date now() const = 0;
    virtual Instant instant() const = 0;
    /// Runs `action` once on the main thread, from its event loop, `delay` from now. The action may drop the timer.
    virtual Timer after(Duration delay, std::function<void()> action) = 0;
};

/// Waits for `delay`, or until the awaiting task is asked to stop.
Task<Result<void, Cancelled>> sleepFor(Clock& clock, Duration delay);

/// The machine's clock, with Qt's timers.
class SystemClock final : public Clock {
public:
    Date now() const override;
    Instant instant() const override;
    Timer after(Duration delay, std::function<void()> action) override;
};

} // namespace vocalith
