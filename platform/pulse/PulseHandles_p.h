#pragma once

#include <pulse/pulseaudio.h>

#include <chrono>
#include <functional>
#include <memory>

namespace vocalith {

/// How the client library's objects are given up. All but the main loop belong to the main loop's thread. Nothing here
/// waits for the server: it may have stopped, and learns of it when it reads on.
struct PulseDeleter {
    void operator()(pa_threaded_mainloop* loop) const { pa_threaded_mainloop_free(loop); }
    void operator()(pa_context* context) const
    {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
    void operator()(pa_stream* stream) const
    {
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_set_write_callback(stream, nullptr, nullptr);
        pa_stream_set_moved_callback(stream, nullptr, nullptr);
        pa_stream_set_suspended_callback(stream, nullptr, nullptr);
        pa_stream_set_state_callback(stream, nullptr, nullptr);
        // A stream that the server has not confirmed yet cannot be ended yet; the context keeps it until then.
        if (pa_stream_get_state(stream) == PA_STREAM_CREATING)
            pa_stream_set_state_callback(stream, disconnectWhenReady, nullptr);
        else
            pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
    void operator()(pa_operation* operation) const
    {
        pa_operation_cancel(operation); // its callback is not called any more
        pa_operation_unref(operation);
    }
    void operator()(pa_proplist* properties) const { pa_proplist_free(properties); }

private:
    static void disconnectWhenReady(pa_stream* stream, void* /*unused*/)
    {
        if (pa_stream_get_state(stream) == PA_STREAM_READY)
            pa_stream_disconnect(stream);
    }
};

template <class T>
using PulseHandle = std::unique_ptr<T, PulseDeleter>;

/// A one-shot timer of the main loop's thread; it costs nothing while it is not set. The monotonic clock counts, which
/// stands still while the machine sleeps.
class PulseTimer {
public:
    PulseTimer() = default;
    PulseTimer(const PulseTimer&) = delete;
    PulseTimer& operator=(const PulseTimer&) = delete;
    ~PulseTimer() { stop(); }

    /// Replaces what was set before. The action may set or stop the timer again.
    void start(pa_context& context, pa_mainloop_api& api, std::chrono::microseconds delay, std::function<void()> action)
    {
        stop();
        m_api = &api;
        m_action = std::move(action);
        const auto due = pa_rtclock_now() + static_cast<pa_usec_t>(delay.count());
        m_event = pa_context_rttime_new(&context, due, fired, this);
    }
    void stop()
    {
        if (m_event)
            m_api->time_free(m_event);
        m_event = nullptr;
    }
    bool isSet() const { return m_event != nullptr; }

private:
    static void fired(pa_mainloop_api* /*api*/, pa_time_event* /*event*/, const timeval* /*due*/, void* self)
    {
        auto& timer = *static_cast<PulseTimer*>(self);
        timer.stop();
        const auto action = std::move(timer.m_action);
        action();
    }

    pa_mainloop_api* m_api = nullptr;
    pa_time_event* m_event = nullptr;
    std::function<void()> m_action;
};

} // namespace vocalith
