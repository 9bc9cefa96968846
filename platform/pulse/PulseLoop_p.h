#pragma once

#include "platform/pulse/PulseHandles_p.h"

#include <functional>
#include <mutex>
#include <vector>

namespace vocalith {

/// The thread on which everything that has to do with the audio server happens. It starts with the first job and sleeps
/// without waking up while there is nothing to do.
///
/// Other threads never take the main loop's own lock: they hand over jobs, so that nothing the client library does on
/// its thread (looking up a host, reading the X display's properties) can hold them up.
class PulseLoop {
public:
    PulseLoop();
    PulseLoop(const PulseLoop&) = delete;
    PulseLoop& operator=(const PulseLoop&) = delete;
    ~PulseLoop();

    /// Ends the thread, and runs the jobs that it did not come to; no job is posted after that. What belongs to the
    /// loop may then be given up on this thread.
    void stop();

    /// Runs `job` on the loop's thread after those before it. Any thread.
    void post(std::function<void()> job);
    pa_mainloop_api& api() const { return *pa_threaded_mainloop_get_api(m_loop.get()); }

private:
    void runJobs();

    PulseHandle<pa_threaded_mainloop> m_loop;
    int m_wakeUp = -1; ///< an eventfd that the loop watches
    pa_io_event* m_watch = nullptr;
    bool m_started = false;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_jobs;
};

} // namespace vocalith
