#include "base/Worker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace vocalith {
namespace {

struct Job {
    StopToken token;
    std::function<void(const StopToken&)> work;
};

} // namespace

struct Worker::State {
    std::mutex mutex;
    std::condition_variable_any changed;
    std::deque<Job> jobs;
    bool isEnding = false;
    std::jthread thread;

    void loop(const StopToken& shutdown)
    {
        while (auto job = next(shutdown)) {
            if (job->token.stop_requested())
                continue;
            // The job sees one token that is set by its awaiter or by the end of the worker, whichever comes first.
            StopSource either;
            const auto stop = [&either] { either.request_stop(); };
            const std::stop_callback onAwaiter(job->token, stop);
            const std::stop_callback onShutdown(shutdown, stop);
            job->work(either.get_token());
        }
    }

    std::optional<Job> next(const StopToken& shutdown)
    {
        std::unique_lock lock(mutex);
        if (!changed.wait(lock, shutdown, [this] { return !jobs.empty(); }) || shutdown.stop_requested())
            return std::nullopt;
        auto job = std::move(jobs.front());
        jobs.pop_front();
        return job;
    }
};

Worker::Worker() : m_state(std::make_shared<State>())
{}

Worker::~Worker()
{
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->isEnding = true;
    }
    m_state->thread.request_stop();
    if (m_state->thread.joinable())
        m_state->thread.join();
}

void Worker::post(std::function<void()> job)
{
    enqueue({}, [job = std::move(job)](const StopToken&) { job(); });
}

void Worker::enqueue(StopToken token, std::function<void(const StopToken&)> job)
{
    {
        const std::lock_guard lock(m_state->mutex);
        if (m_state->isEnding)
            return; // the job that still runs has asked for more
        m_state->jobs.push_back({std::move(token), std::move(job)});
        if (!m_state->thread.joinable())
            m_state->thread = std::jthread([state = m_state.get()](const StopToken& stop) { state->loop(stop); });
    }
    m_state->changed.notify_one();
}

} // namespace vocalith
