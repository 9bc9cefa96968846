#include "base/Clock.h"

#include "base/OneShot.h"

#include <QTimer>

#include <variant>

namespace vocalith {
namespace {

class QtTimer final : public Timer::Pending {
public:
    QtTimer(Duration delay, std::function<void()> action) : m_action(std::move(action))
    {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            const auto fired = std::move(m_action); // the action may destroy this timer
            fired();
        });
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(delay));
    }

private:
    QTimer m_timer;
    std::function<void()> m_action;
};

} // namespace

Task<Result<void, Cancelled>> sleepFor(Clock& clock, Duration delay)
{
    OneShot<std::monostate> elapsed;
    const auto timer = clock.after(delay, [resolve = elapsed.resolver()] { resolve({}); });
    const auto outcome = co_await elapsed;
    co_return outcome.map([](std::monostate) {});
}

Date SystemClock::now() const
{
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

Instant SystemClock::instant() const
{
    return std::chrono::steady_clock::now();
}

Timer SystemClock::after(Duration delay, std::function<void()> action)
{
    return Timer(std::make_unique<QtTimer>(delay, std::move(action)));
}

} // namespace vocalith
