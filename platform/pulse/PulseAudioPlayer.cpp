#include "platform/pulse/PulseAudioPlayer.h"

#include "base/OneShot.h"
#include "platform/pulse/PulsePlayback_p.h"
#include "ports/PCMConverter.h"

namespace vocalith {
namespace {

/// Called on the loop's thread; what it tells does not outlive the call of `play` that owns the handler.
PulsePlayback::Tell teller(const std::shared_ptr<AudioPlayer::PositionHandler>& handler)
{
    return [weak = std::weak_ptr(handler)](double seconds) {
        postToMainThread([weak, seconds] {
            if (const auto alive = weak.lock(); alive && *alive)
                (*alive)(seconds);
        });
    };
}

} // namespace

PulseAudioPlayer::PulseAudioPlayer(const PCMConverter& converter, Logger logger)
    : PulseAudioPlayer(converter, std::move(logger), {}, {})
{}

PulseAudioPlayer::PulseAudioPlayer(const PCMConverter& converter, Logger logger, std::string server, PulseTimes times)
    : m_converter(converter), m_server(std::make_unique<PulseServer>(std::move(server), times, std::move(logger)))
{}

PulseAudioPlayer::~PulseAudioPlayer() = default;

Task<Result<double, AudioPlayerError>> PulseAudioPlayer::play(std::filesystem::path file, PositionHandler position)
{
    OneShot<Result<double, AudioPlayerError>> ended;
    const auto handler = std::make_shared<PositionHandler>(std::move(position));
    const auto queue = std::make_shared<PlaybackQueue>();
    const auto playback =
        std::make_shared<PulsePlayback>(*m_server, "Recording", queue, ended.resolver(), teller(handler));
    m_server->loop().post([playback] { playback->start(); });
    m_decoder.post([this, file, queue, playback, resolve = ended.resolver()] {
        const auto wakeUp = [&] { m_server->loop().post([playback] { playback->pump(); }); };
        const auto sink = [&](std::span<const float> samples) {
            const bool isWanted = queue->push(samples);
            wakeUp();
            return isWanted;
        };
        const auto decoded = m_converter.convert(file, sink, {}, queue->closed());
        if (!decoded)
            return resolve(
                failure(AudioPlayerError{AudioPlayerError::Kind::sourceUnreadable, userMessage(decoded.error())}));
        queue->finish();
        wakeUp();
    });
    auto outcome = co_await ended;
    queue->close();
    m_server->loop().post([playback] { playback->close(); });
    if (!outcome)
        co_return failure(AudioPlayerError{AudioPlayerError::Kind::cancelled});
    co_return *std::move(outcome);
}

} // namespace vocalith
