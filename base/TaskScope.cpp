#include "base/TaskScope.h"

#include "base/MainThread.h"

#include <coroutine>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <vector>

namespace vocalith {

struct TaskScope::State {
    StopSource stop;
    std::size_t running = 0;
    std::vector<std::coroutine_handle<>> waiting;

    void finished()
    {
        if (--running > 0)
            return;
        for (const auto waiter : std::exchange(waiting, {}))
            postToMainThread([waiter] { waiter.resume(); });
    }
};

namespace {

/// The outermost frame of a started task: it frees itself at the end, and an exception that reaches it is a bug that
/// nobody handles.
struct Root {
    struct promise_type {
        explicit promise_type(Task<void>&, StopToken token, std::function<void()>&) : m_token(std::move(token)) {}
        Root get_return_object() const noexcept { return {}; }
        std::suspend_never initial_suspend() const noexcept { return {}; }
        std::suspend_never final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
        const StopToken& stopToken() const { return m_token; }

    private:
        StopToken m_token;
    };
};

Root runRoot(Task<void> task, StopToken, std::function<void()> finished)
{
    co_await task;
    finished();
}

template <class State>
struct UntilEmpty {
    State& state;
    bool await_ready() const noexcept { return state.running == 0; }
    void await_suspend(std::coroutine_handle<> awaiter) const { state.waiting.push_back(awaiter); }
    void await_resume() const noexcept {}
};

} // namespace

TaskScope::TaskScope() : m_state(std::make_shared<State>())
{}

TaskScope::~TaskScope()
{
    if (isEmpty())
        return;
    std::fputs("vocalith: a task scope was destroyed while its tasks ran\n", stderr);
    std::abort();
}

void TaskScope::start(Task<void> task)
{
    ++m_state->running;
    runRoot(std::move(task), m_state->stop.get_token(), [state = m_state] { state->finished(); });
}

void TaskScope::requestStop()
{
    std::exchange(m_state->stop, StopSource{}).request_stop();
}

bool TaskScope::isEmpty() const
{
    return m_state->running == 0;
}

Task<void> TaskScope::untilEmpty()
{
    UntilEmpty<State> empty{*m_state};
    co_await empty;
}

} // namespace vocalith
