#include "platform/pulse/PulseLoop_p.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <utility>

namespace vocalith {

PulseLoop::PulseLoop() : m_loop(pa_threaded_mainloop_new()), m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    pa_threaded_mainloop_set_name(m_loop.get(), "vocalith-audio");
    const auto woken = [](pa_mainloop_api*, pa_io_event*, int, pa_io_event_flags_t, void* self) {
        static_cast<PulseLoop*>(self)->runJobs();
    };
    m_watch = api().io_new(&api(), m_wakeUp, PA_IO_EVENT_INPUT, woken, this);
}

PulseLoop::~PulseLoop()
{
    stop();
    api().io_free(m_watch);
    m_loop.reset();
    close(m_wakeUp);
}

void PulseLoop::stop()
{
    if (std::exchange(m_started, false))
        pa_threaded_mainloop_stop(m_loop.get());
    runJobs();
}

void PulseLoop::post(std::function<void()> job)
{
    const std::lock_guard lock(m_mutex);
    m_jobs.push_back(std::move(job));
    eventfd_write(m_wakeUp, 1);
    if (!m_started)
        m_started = pa_threaded_mainloop_start(m_loop.get()) == 0;
}

void PulseLoop::runJobs()
{
    eventfd_t ignored = 0;
    eventfd_read(m_wakeUp, &ignored);
    std::vector<std::function<void()>> jobs;
    {
        const std::lock_guard lock(m_mutex);
        jobs.swap(m_jobs);
    }
    for (auto& job : jobs)
        std::exchange(job, nullptr)();
}

} // namespace vocalith
