#include "platform/pulse/PulseSoundPlayer.h"

#include "base/MainThread.h"
#include "platform/pulse/FeedbackSounds_p.h"
#include "platform/pulse/PulsePlayback_p.h"

namespace vocalith {

PulseSoundPlayer::PulseSoundPlayer(Logger logger) : PulseSoundPlayer(std::move(logger), {}, {})
{}

PulseSoundPlayer::PulseSoundPlayer(Logger logger, std::string server, PulseTimes times)
    : m_server(std::make_unique<PulseServer>(std::move(server), times, std::move(logger)))
{}

PulseSoundPlayer::~PulseSoundPlayer()
{
    stop();
}

Result<void, std::string> PulseSoundPlayer::play(Sound sound)
{
    stop();
    const auto queue = std::make_shared<PlaybackQueue>();
    queue->push(feedbackSound(sound));
    queue->finish();
    m_current = std::make_shared<bool>(true);
    const auto ended = [this, current = std::weak_ptr(m_current)](Result<double, AudioPlayerError> outcome) {
        postToMainThread([this, current, outcome = std::move(outcome)] {
            if (current.expired()) // stopped meanwhile
                return;
            stop();
            finished.emit(outcome ? Result<void, std::string>() : failure(userMessage(outcome.error())));
        });
    };
    m_playing = std::make_shared<PulsePlayback>(*m_server, "Vocalith", queue, ended, [](double) {});
    m_server->loop().post([playing = m_playing] { playing->start(); });
    return {};
}

void PulseSoundPlayer::stop()
{
    if (!m_playing)
        return;
    m_current.reset();
    m_server->loop().post([playing = std::exchange(m_playing, nullptr)] { playing->close(); });
}

} // namespace vocalith
