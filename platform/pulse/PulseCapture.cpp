#include "platform/pulse/PulseCapture_p.h"

#include <fmt/format.h>

#include <array>

namespace vocalith {
namespace {

using Kind = AudioInputError::Kind;

/// Small, so that the first words are not waited for: 20 ms.
constexpr std::uint32_t kFragmentBytes = kAudioSampleRate / 50 * sizeof(std::int16_t);
/// What scheduling alone may take is no gap.
constexpr std::size_t kShortestGap = kAudioSampleRate / 10;

std::size_t samplesIn(pa_usec_t time)
{
    return time * kAudioSampleRate / PA_USEC_PER_SEC;
}

pa_usec_t usec(std::chrono::microseconds time)
{
    return static_cast<pa_usec_t>(time.count());
}

} // namespace

void PulseListener::samplesArrived(std::span<const std::int16_t> samples)
{
    const std::lock_guard lock(m_mutex);
    if (m_listener)
        m_listener->samplesArrived(samples);
}

void PulseListener::ended(Result<void, AudioInputError> reason)
{
    const std::lock_guard lock(m_mutex);
    if (auto* listener = std::exchange(m_listener, nullptr))
        listener->streamEnded(std::move(reason));
}

void PulseListener::release()
{
    const std::lock_guard lock(m_mutex);
    m_listener = nullptr;
}

PulseCapture::PulseCapture(PulseServer& server, AudioInputRequest request, AudioInputListener& listener)
    : m_server(server), m_request(std::move(request)), m_listener(listener)
{}

void PulseCapture::start(Accepted accepted)
{
    m_accepted = std::move(accepted);
    const auto connection = m_server.connection();
    m_connection = connection;
    connection->add(*this);
}

void PulseCapture::close()
{
    m_watchdog.stop();
    m_replacementLimit.stop();
    m_answerLimit.stop();
    if (const auto inquiry = std::exchange(m_inquiry, nullptr))
        inquiry->close();
    m_stream.reset();
    if (const auto connection = std::exchange(m_connection, nullptr))
        connection->remove(*this);
}

void PulseCapture::connected()
{
    m_connection->startTimer(m_answerLimit, m_server.times().answer, [this] {
        finish({Kind::serverLost, "the audio server does not answer"});
    });
    look();
}

void PulseCapture::look()
{
    if (m_inquiry) {
        m_lookAgain = true;
        return;
    }
    m_inquiry = std::make_shared<PulseInquiry>(m_server, [this](Result<PulseServerState, AudioInputError> state) {
        m_inquiry.reset();
        if (state)
            surveyed(*state);
        else if (m_accepted) // a capture that runs learns on its own connection when the server is gone
            finish(state.error());
        else if (m_connection && m_replacementLimit.isSet()) // it was too busy to say, and may say it the next time
            awaitReplacement(state.error().detail);
        if (std::exchange(m_lookAgain, false) && m_connection)
            look();
    });
    const auto inquiry = m_inquiry; // it may be answered before it returns
    inquiry->start();
}

void PulseCapture::surveyed(const PulseServerState& state)
{
    if (!state.source(m_failedSource))
        m_failedSource.clear();
    const auto source = state.sourceFor(m_request);
    if (source && source->name != m_failedSource) {
        if (source->name != m_source || !isAttachedWell(state))
            attach(*source);
        return;
    }
    if (isAttachedWell(state)) // the default is nothing to record from any more, but what was recorded is still there
        return;
    detach();
    if (m_accepted)
        finish(source ? AudioInputError{Kind::noDevice, "the source refuses"} : source.error());
    else
        awaitReplacement(source ? "the source gave up" : source.error().detail);
}

bool PulseCapture::isAttachedWell(const PulseServerState& state) const
{
    if (!m_stream || !state.source(m_source))
        return false;
    return !m_wasMoved || m_source == pa_stream_get_device_name(m_stream.get());
}

void PulseCapture::attach(const PulseSource& source)
{
    detach();
    m_replacementLimit.stop();
    m_source = source.name;
    m_attachedAt = pa_rtclock_now();
    // No media role: roles make servers pause music or switch headsets to their telephone quality, and share one
    // stored volume among all programs of the role.
    const char* purpose = m_request.source == AudioSource::microphone ? "Dictation" : "Recording of what is played";
    const pa_sample_spec spec{PA_SAMPLE_S16NE, kAudioSampleRate, 1};
    m_stream.reset(pa_stream_new(&m_connection->context(), purpose, &spec, nullptr));
    setCallbacks();
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<std::uint32_t>(-1);
    buffer.fragsize = kFragmentBytes;
    // Unmuted, because a volume control may have stored a mute for this program long ago; a muted device stays muted.
    const auto flags =
        static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_START_UNMUTED | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(m_stream.get(), m_source.c_str(), &buffer, flags) < 0)
        return streamFailed();
    if (!m_accepted)
        watch();
}

void PulseCapture::setCallbacks()
{
    pa_stream_set_state_callback(
        m_stream.get(), [](pa_stream*, void* capture) { static_cast<PulseCapture*>(capture)->streamChanged(); }, this);
    pa_stream_set_read_callback(
        m_stream.get(), [](pa_stream*, std::size_t, void* capture) { static_cast<PulseCapture*>(capture)->readData(); },
        this);
    pa_stream_set_moved_callback(
        m_stream.get(),
        [](pa_stream*, void* capture) {
            static_cast<PulseCapture*>(capture)->m_wasMoved = true;
            static_cast<PulseCapture*>(capture)->look();
        },
        this);
    pa_stream_set_suspended_callback(
        m_stream.get(), [](pa_stream*, void* capture) { static_cast<PulseCapture*>(capture)->m_hasGap = true; }, this);
}

void PulseCapture::detach()
{
    m_stream.reset();
    m_source.clear();
    m_wasMoved = false;
    m_lastData = 0;
    m_hasGap = true;
    m_watchdog.stop();
}

void PulseCapture::streamChanged()
{
    const auto state = pa_stream_get_state(m_stream.get());
    if (state == PA_STREAM_READY)
        streamReady();
    else if (!PA_STREAM_IS_GOOD(state))
        streamFailed();
}

void PulseCapture::streamReady()
{
    if (!m_accepted)
        return;
    m_answerLimit.stop();
    m_attachedAt = pa_rtclock_now();
    m_coveredTo = m_attachedAt;
    const auto accepted = *std::exchange(m_accepted, std::nullopt);
    watch();
    Result<void, AudioInputError> good; // named: gcc 12 takes the temporary for uninitialised
    accepted(std::move(good));
}

void PulseCapture::streamFailed()
{
    if (!m_connection->isReady()) // the connection tells
        return;
    const auto error = m_connection->lastError();
    if (m_accepted)
        return finish(error);
    m_failedSource = m_source;
    detach();
    awaitReplacement(error.detail);
    if (m_connection)
        look();
}

void PulseCapture::awaitReplacement(std::string whatHappened)
{
    const AudioInputError lost{Kind::deviceLost, std::move(whatHappened)};
    if (!m_request.deviceId.empty())
        return finish(lost);
    if (!m_replacementLimit.isSet())
        m_connection->startTimer(m_replacementLimit, m_server.times().replacement, [this, lost] { finish(lost); });
    // Nobody may tell of the replacement, see PulseServer::freshConnection.
    m_connection->startTimer(m_watchdog, m_server.times().replacement / 8, [this] { look(); });
}

void PulseCapture::readData()
{
    for (;;) {
        const void* data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(m_stream.get(), &data, &bytes) < 0 || bytes == 0)
            return;
        const auto count = bytes / sizeof(std::int16_t);
        if (data)
            deliver(static_cast<const std::int16_t*>(data), count);
        else
            deliverSilence(count); // the server lost this much
        pa_stream_drop(m_stream.get());
    }
}

void PulseCapture::deliver(const std::int16_t* samples, std::size_t count)
{
    const auto now = pa_rtclock_now();
    if (std::exchange(m_hasGap, false)) {
        const auto passed = samplesIn(now - m_coveredTo);
        if (passed > count + kShortestGap)
            deliverSilence(passed - count);
    }
    m_lastData = now;
    m_coveredTo = now;
    m_listener.samplesArrived({samples, count});
}

void PulseCapture::deliverSilence(std::size_t count)
{
    static constexpr std::array<std::int16_t, kAudioSampleRate> kSilence{};
    while (count > 0) {
        const auto part = std::min(count, kSilence.size());
        m_listener.samplesArrived({kSilence.data(), part});
        count -= part;
    }
}

/// One wake-up every few seconds while a stream runs: the timer is set again from when the last data came.
void PulseCapture::watch()
{
    const auto& times = m_server.times();
    const auto now = pa_rtclock_now();
    auto due = m_lastData ? m_lastData + usec(times.stall) : m_attachedAt + usec(times.firstData);
    if (due <= now) {
        if (pa_stream_is_suspended(m_stream.get()) != 1)
            return finish({Kind::serverLost, "the audio server gives no data any more"});
        due = now + usec(times.stall); // somebody has suspended the device, and may well resume it
    }
    const auto delay = std::chrono::ceil<std::chrono::milliseconds>(std::chrono::microseconds(due - now));
    m_connection->startTimer(m_watchdog, delay, [this] {
        look(); // see PulseServer::freshConnection
        watch();
    });
}

void PulseCapture::finish(AudioInputError error)
{
    m_server.logger().warning(fmt::format("Audio input ended: {}", error.detail));
    if (error.kind == Kind::serverLost && m_connection)
        m_connection->distrust();
    const auto accepted = std::exchange(m_accepted, std::nullopt);
    close();
    if (accepted)
        (*accepted)(failure(std::move(error)));
    else
        m_listener.ended(failure(std::move(error)));
}

} // namespace vocalith
