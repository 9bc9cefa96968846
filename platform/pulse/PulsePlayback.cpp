#include "platform/pulse/PulsePlayback_p.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

using Kind = AudioPlayerError::Kind;

constexpr int kRate = 16000; // what converters yield
constexpr std::chrono::milliseconds kTick(200);
constexpr std::uint32_t kBufferBytes = kRate / 2 * sizeof(float); // half a second hides what the machine is busy with

Kind kindOf(AudioInputError::Kind kind)
{
    switch (kind) {
    case AudioInputError::Kind::noServer: return Kind::noServer;
    case AudioInputError::Kind::permissionDenied: return Kind::permissionDenied;
    case AudioInputError::Kind::noDevice: return Kind::noDevice;
    case AudioInputError::Kind::serverLost:
    case AudioInputError::Kind::deviceLost: return Kind::serverLost;
    case AudioInputError::Kind::unsupported:
    case AudioInputError::Kind::sourceUnreadable:
    case AudioInputError::Kind::failed: return Kind::failed;
    }
    return Kind::failed;
}

} // namespace

PulsePlayback::PulsePlayback(PulseServer& server, std::string name, std::shared_ptr<PlaybackQueue> queue, Ended ended,
                             Tell tell)
    : m_server(server), m_name(std::move(name)), m_queue(std::move(queue)), m_ended(std::move(ended)),
      m_tell(std::move(tell))
{}

void PulsePlayback::start()
{
    const auto connection = m_server.connection();
    m_connection = connection;
    connection->add(*this);
}

void PulsePlayback::close()
{
    m_tick.stop();
    m_limit.stop();
    m_asking.reset();
    m_draining.reset();
    m_stream.reset();
    if (const auto connection = std::exchange(m_connection, nullptr))
        connection->remove(*this);
}

void PulsePlayback::connected()
{
    m_connection->startTimer(m_limit, m_server.times().answer, [this] {
        fail({AudioInputError::Kind::serverLost, "the audio server does not answer"});
    });
    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, kRate, 1};
    m_stream.reset(pa_stream_new(&m_connection->context(), m_name.c_str(), &spec, nullptr));
    setCallbacks();
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<std::uint32_t>(-1);
    buffer.tlength = kBufferBytes;
    buffer.prebuf = static_cast<std::uint32_t>(-1);
    buffer.minreq = static_cast<std::uint32_t>(-1);
    const auto flags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_START_UNMUTED);
    if (pa_stream_connect_playback(m_stream.get(), nullptr, &buffer, flags, nullptr, nullptr) < 0)
        fail(m_connection->lastError());
}

void PulsePlayback::setCallbacks()
{
    pa_stream_set_state_callback(
        m_stream.get(), [](pa_stream*, void* playback) { static_cast<PulsePlayback*>(playback)->streamChanged(); },
        this);
    pa_stream_set_write_callback(
        m_stream.get(), [](pa_stream*, std::size_t, void* playback) { static_cast<PulsePlayback*>(playback)->pump(); },
        this);
}

void PulsePlayback::streamChanged()
{
    const auto state = pa_stream_get_state(m_stream.get());
    if (state == PA_STREAM_READY) {
        m_limit.stop();
        m_lastProgress = pa_rtclock_now();
        askPosition();
        pump();
    } else if (!PA_STREAM_IS_GOOD(state) && m_connection->isReady()) { // else the connection tells
        fail(m_connection->lastError());
    }
}

void PulsePlayback::pump()
{
    if (!m_stream || pa_stream_get_state(m_stream.get()) != PA_STREAM_READY)
        return;
    std::array<float, 4096> samples{};
    for (;;) {
        const auto bytes = pa_stream_writable_size(m_stream.get());
        if (bytes == static_cast<std::size_t>(-1))
            return fail(m_connection->lastError());
        const auto wanted = std::min(bytes / sizeof(float), samples.size());
        const auto count = m_queue->pop(std::span(samples).first(wanted));
        if (count == 0)
            break;
        const auto* data = samples.data();
        if (pa_stream_write(m_stream.get(), data, count * sizeof(float), nullptr, 0, PA_SEEK_RELATIVE) < 0)
            return fail(m_connection->lastError());
        m_writtenSamples += count;
    }
    if (m_queue->isAtEnd() && !m_draining)
        drain();
}

void PulsePlayback::drain()
{
    if (m_writtenSamples == 0)
        return finish(0.0);
    const auto drained = [](pa_stream*, int success, void* self) {
        auto& playback = *static_cast<PulsePlayback*>(self);
        if (success != 0)
            playback.finish(playback.written());
        else
            playback.fail(playback.m_connection->lastError());
    };
    m_draining.reset(pa_stream_drain(m_stream.get(), drained, this));
}

/// The server is asked each time: what the library reckons by itself goes on when the server has stopped.
void PulsePlayback::askPosition()
{
    if (!m_asking) {
        const auto answered = [](pa_stream*, int success, void* playback) {
            static_cast<PulsePlayback*>(playback)->m_asking.reset();
            if (success != 0)
                static_cast<PulsePlayback*>(playback)->positionKnown();
        };
        m_asking.reset(pa_stream_update_timing_info(m_stream.get(), answered, this));
    }
    const auto now = pa_rtclock_now();
    const bool hasNothingToPlay = m_position >= written() && !m_queue->isAtEnd();
    if (hasNothingToPlay || pa_stream_is_suspended(m_stream.get()) == 1)
        m_lastProgress = now;
    const auto limit = m_position > 0 ? m_server.times().stall : m_server.times().firstData;
    if (now - m_lastProgress > static_cast<pa_usec_t>(std::chrono::microseconds(limit).count()))
        return fail({AudioInputError::Kind::serverLost, "the audio server does not play any more"});
    m_connection->startTimer(m_tick, kTick, [this] { askPosition(); });
}

void PulsePlayback::positionKnown()
{
    pa_usec_t time = 0;
    if (pa_stream_get_time(m_stream.get(), &time) < 0)
        return;
    const double position = std::min(static_cast<double>(time) / PA_USEC_PER_SEC, written());
    if (position <= m_position)
        return;
    m_position = position;
    m_lastProgress = pa_rtclock_now();
    m_tell(position);
}

void PulsePlayback::fail(const AudioInputError& error)
{
    m_server.logger().warning(fmt::format("Playing ended: {}", error.detail));
    if (error.kind == AudioInputError::Kind::serverLost && m_connection)
        m_connection->distrust();
    finish(failure(AudioPlayerError{kindOf(error.kind), error.detail}));
}

void PulsePlayback::finish(Result<double, AudioPlayerError> outcome)
{
    close();
    m_ended(std::move(outcome));
}

double PulsePlayback::written() const
{
    return static_cast<double>(m_writtenSamples) / kRate;
}

} // namespace vocalith
