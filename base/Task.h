#pragma once

#include "base/StopToken.h"

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>

namespace vocalith {

template <class T = void>
class Task;

namespace detail {

/// Hands control back to whoever awaited the task, without growing the stack.
struct ResumeAwaiter {
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) const noexcept
    {
        const auto awaiter = finished.promise().awaiter();
        return awaiter ? awaiter : std::noop_coroutine();
    }
    void await_resume() const noexcept {}
};

class TaskPromiseBase {
public:
    std::suspend_always initial_suspend() const noexcept { return {}; }
    ResumeAwaiter final_suspend() const noexcept { return {}; }
    void unhandled_exception() { m_exception = std::current_exception(); }

    const StopToken& stopToken() const { return m_stopToken; }
    std::coroutine_handle<> awaiter() const { return m_awaiter; }
    void start(std::coroutine_handle<> awaiter, StopToken token)
    {
        m_awaiter = awaiter;
        m_stopToken = std::move(token);
    }

protected:
    void rethrow() const
    {
        if (m_exception)
            std::rethrow_exception(m_exception);
    }

private:
    StopToken m_stopToken;
    std::coroutine_handle<> m_awaiter;
    std::exception_ptr m_exception;
};

template <class T>
class TaskPromise : public TaskPromiseBase {
public:
    Task<T> get_return_object();
    template <class Value>
    void return_value(Value&& value)
    {
        m_value.emplace(std::forward<Value>(value));
    }
    T result()
    {
        rethrow();
        return std::move(*m_value);
    }

private:
    std::optional<T> m_value;
};

template <>
class TaskPromise<void> : public TaskPromiseBase {
public:
    Task<void> get_return_object();
    void return_void() const {}
    void result() const { rethrow(); }
};

} // namespace detail

/// A piece of asynchronous work on the main thread. It starts when it is awaited (or given to a TaskScope), takes over
/// the stop token of its awaiter and runs to its end: being asked to stop makes the leaf that it waits for yield
/// `Cancelled`, and the task decides what to do about it. An exception means a bug and travels to the awaiter.
template <class T>
class [[nodiscard]] Task {
public:
    using promise_type = detail::TaskPromise<T>;

    Task(Task&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Task& operator=(Task&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Task()
    {
        if (m_handle)
            m_handle.destroy();
    }

    bool await_ready() const noexcept { return false; }
    template <class Promise>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> awaiter)
    {
        m_handle.promise().start(awaiter, awaiter.promise().stopToken());
        return m_handle;
    }
    T await_resume() { return m_handle.promise().result(); }

private:
    friend promise_type;
    explicit Task(std::coroutine_handle<promise_type> handle) : m_handle(handle) {}

    std::coroutine_handle<promise_type> m_handle;
};

template <class T>
Task<T> detail::TaskPromise<T>::get_return_object()
{
    return Task<T>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

inline Task<void> detail::TaskPromise<void>::get_return_object()
{
    return Task<void>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

/// `const auto token = co_await currentStopToken();` inside a task.
class CurrentStopToken {
public:
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> awaiter)
    {
        m_token = awaiter.promise().stopToken();
        return false;
    }
    StopToken await_resume() { return std::move(m_token); }

private:
    StopToken m_token;
};

inline CurrentStopToken currentStopToken()
{
    return {};
}

} // namespace vocalith
