#pragma once

#include "base/MainThread.h"
#include "base/Result.h"
#include "base/StopToken.h"

#include <coroutine>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace vocalith {

/// The place where callbacks meet coroutines: a value that arrives once, from any thread, and is awaited once, on the
/// main thread. Every wait that ends outside the program's own code (a timer, a worker's result, a reply) is one of
/// these.
///
/// The await yields the value, or `Cancelled` as soon as the awaiting task is asked to stop; a value that comes after
/// that is dropped. The task is always resumed from the event loop, never from inside `resolve` or `request_stop`.
template <class T>
class OneShot {
    struct State {
        std::mutex mutex;
        std::optional<Result<T, Cancelled>> outcome;
        std::coroutine_handle<> waiting;

        void settle(Result<T, Cancelled> result)
        {
            std::coroutine_handle<> resumed;
            {
                const std::lock_guard lock(mutex);
                if (outcome)
                    return;
                outcome.emplace(std::move(result));
                resumed = std::exchange(waiting, nullptr);
            }
            if (resumed)
                postToMainThread([resumed] { resumed.resume(); });
        }
    };

    struct Settle {
        std::shared_ptr<State> state;
        void operator()() const noexcept { state->settle(failure(Cancelled{})); }
    };

public:
    /// The end that the value is given to. Copies share one value; only the first call counts.
    class Resolver {
    public:
        void operator()(T value) const { m_state->settle(std::move(value)); }

    private:
        friend OneShot;
        explicit Resolver(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        std::shared_ptr<State> m_state;
    };

    OneShot() : m_state(std::make_shared<State>()) {}
    OneShot(const OneShot&) = delete;
    OneShot& operator=(const OneShot&) = delete;

    Resolver resolver() const { return Resolver(m_state); }

    bool await_ready() const noexcept { return false; }
    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> awaiter)
    {
        const StopToken token = awaiter.promise().stopToken();
        if (token.stop_requested())
            m_state->settle(failure(Cancelled{}));
        {
            const std::lock_guard lock(m_state->mutex);
            if (m_state->outcome)
                return false;
            m_state->waiting = awaiter;
        }
        m_onStop.emplace(token, Settle{m_state});
        return true;
    }
    Result<T, Cancelled> await_resume()
    {
        m_onStop.reset();
        return std::move(*m_state->outcome);
    }

private:
    std::shared_ptr<State> m_state;
    std::optional<StopCallback<Settle>> m_onStop;
};

} // namespace vocalith
