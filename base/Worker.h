#pragma once

#include "base/OneShot.h"
#include "base/StopToken.h"
#include "base/Task.h"

#include <functional>
#include <memory>

namespace vocalith {

/// One thread that runs the blocking work of the service that owns it, one job after the other in the order of the
/// calls; it begins with the first. Destroying it waits for the job that runs (its stop token is set) and drops those
/// that wait.
class Worker {
public:
    Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker();

    /// Runs `job(StopToken)` on the worker thread and yields what it returns, which must not be void. A stop yields
    /// `Cancelled` at once: a job that waits is dropped, one that runs sees its token and its result is thrown away. So
    /// a job owns what it works on, or shares it, and never refers to the awaiting frame.
    template <class Job>
    auto run(Job job) -> Task<Result<std::invoke_result_t<Job&, StopToken>, Cancelled>>
    {
        using Value = std::invoke_result_t<Job&, StopToken>;
        const auto token = co_await currentStopToken();
        OneShot<Value> done;
        auto shared = std::make_shared<Job>(std::move(job));
        enqueue(token, [shared, resolve = done.resolver()](const StopToken& stop) mutable {
            resolve((*shared)(stop));
            shared.reset();
        });
        shared.reset();
        co_return co_await done;
    }

    /// Runs `job` after those before it, without anybody waiting for it.
    void post(std::function<void()> job);

private:
    struct State;
    void enqueue(StopToken token, std::function<void(const StopToken&)> job);

    std::shared_ptr<State> m_state;
};

} // namespace vocalith
