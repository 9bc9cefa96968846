#include "app/desktop/hosts/MicrophoneMeter.h"

#include <mutex>

namespace vocalith {
namespace {

constexpr std::chrono::milliseconds kReadingInterval(50);
constexpr std::chrono::seconds kRetryInterval(2);

/// The sentences of an input speak of a recording, of which there is none here.
std::string problemOf(const AudioInputError& error)
{
    switch (error.kind) {
    case AudioInputError::Kind::deviceLost: return "The microphone was disconnected. Connect it again.";
    case AudioInputError::Kind::serverLost: return userMessage(AudioInputError{AudioInputError::Kind::noServer, {}});
    default: return userMessage(error);
    }
}

} // namespace

class MicrophoneMeter::Listener final : public AudioInputListener {
public:
    void samplesArrived(std::span<const std::int16_t> samples) override
    {
        const std::lock_guard lock(m_mutex);
        m_window.add(samples);
    }
    void streamEnded(Result<void, AudioInputError> reason) override
    {
        const std::lock_guard lock(m_mutex);
        if (!reason)
            m_error = reason.error();
    }

    PowerWindow take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_window, PowerWindow());
    }
    std::optional<AudioInputError> error()
    {
        const std::lock_guard lock(m_mutex);
        return m_error;
    }

private:
    std::mutex m_mutex;
    PowerWindow m_window;
    std::optional<AudioInputError> m_error;
};

MicrophoneMeter::MicrophoneMeter(AudioInput& input, Clock& clock) : m_input(input), m_clock(clock)
{
    m_check.start = [this] {
        if (!std::exchange(m_isWanted, true))
            m_opening.start(listen());
    };
    m_check.stop = [this] { stop(); };
}

MicrophoneMeter::~MicrophoneMeter() = default;

Task<void> MicrophoneMeter::shutDown()
{
    stop();
    co_await m_opening.untilEmpty();
}

Task<void> MicrophoneMeter::listen()
{
    const auto stop = co_await currentStopToken();
    auto listener = std::make_unique<Listener>();
    AudioInputRequest request;
    auto opened = co_await m_input.open(request, *listener);
    if (stop.stop_requested())
        co_return;
    if (!opened) {
        fail(opened.error());
        co_return;
    }
    m_check.problem.set({});
    m_meter.reset();
    m_listener = std::move(listener);
    m_stream = std::move(*opened);
    read();
}

/// What the user does about it shows by itself.
void MicrophoneMeter::fail(const AudioInputError& error)
{
    m_stream.reset();
    m_check.level.set(0);
    m_check.problem.set(problemOf(error));
    m_timer = m_clock.after(kRetryInterval, [this] { m_opening.start(listen()); });
}

void MicrophoneMeter::stop()
{
    m_isWanted = false;
    m_opening.requestStop();
    m_timer.reset();
    m_stream.reset();
    m_check.level.set(0);
    m_check.problem.set({});
}

void MicrophoneMeter::read()
{
    m_meter.read(m_listener->take());
    m_check.level.set(m_meter.audioLevel());
    if (const auto error = m_listener->error()) {
        fail(*error);
        return;
    }
    m_timer = m_clock.after(kReadingInterval, [this] { read(); });
}

} // namespace vocalith
