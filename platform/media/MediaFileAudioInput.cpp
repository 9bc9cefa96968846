#include "platform/media/MediaFileAudioInput.h"

#include "platform/media/SamplePieces_p.h"

#include <algorithm>
#include <array>
#include <thread>

namespace vocalith {
namespace {

using Opened = Result<std::unique_ptr<AudioInputStream>, AudioInputError>;

constexpr std::size_t kPieceSize = kAudioSampleRate / 10;

Failure<AudioInputError> unreadable(const ConversionError& error)
{
    return failure(AudioInputError{AudioInputError::Kind::sourceUnreadable, userMessage(error)});
}

class MediaFileStream final : public AudioInputStream {
public:
    MediaFileStream(const PCMConverter& converter, std::filesystem::path file, AudioInputListener& listener)
        : m_converter(converter), m_file(std::move(file)), m_listener(listener),
          m_thread([this](const StopToken& stop) { deliver(stop); })
    {}

private:
    void deliver(const StopToken& stop)
    {
        const auto sink = [&](std::span<const float> samples) { return deliverPieces(samples, stop); };
        const auto count = m_converter.convert(m_file, sink, {}, stop);
        if (stop.stop_requested())
            return;
        if (count)
            m_listener.streamEnded({});
        else
            m_listener.streamEnded(unreadable(count.error()));
    }

    bool deliverPieces(std::span<const float> samples, const StopToken& stop)
    {
        std::array<std::int16_t, kPieceSize> piece{};
        while (!samples.empty() && !stop.stop_requested()) {
            const auto size = std::min(samples.size(), piece.size());
            std::transform(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(size), piece.begin(),
                           media::toInt16);
            m_listener.samplesArrived(std::span(piece).first(size));
            samples = samples.subspan(size);
        }
        return !stop.stop_requested();
    }

    const PCMConverter& m_converter;
    std::filesystem::path m_file;
    AudioInputListener& m_listener;
    std::jthread m_thread; ///< last: it uses the others until it has ended
};

} // namespace

MediaFileAudioInput::MediaFileAudioInput(const PCMConverter& converter, std::filesystem::path file)
    : m_converter(converter), m_file(std::move(file))
{}

Task<Result<std::vector<AudioDevice>, AudioInputError>> MediaFileAudioInput::microphones()
{
    std::vector<AudioDevice> devices;
    devices.push_back({.id = m_file.string(), .name = m_file.filename().string(), .isDefault = true});
    co_return devices;
}

Task<Opened> MediaFileAudioInput::open(AudioInputRequest request, AudioInputListener& listener)
{
    if (request.source != AudioSource::microphone)
        co_return failure(AudioInputError{AudioInputError::Kind::unsupported, "a file holds no system audio"});

    auto examine = [converter = &m_converter, file = m_file](const StopToken&) { return converter->examine(file); };
    const auto examined = co_await m_worker.run(examine);
    if (!examined)
        co_return failure(AudioInputError{AudioInputError::Kind::failed, "cancelled"});
    const auto& info = *examined;
    if (!info)
        co_return unreadable(info.error());
    if (!info->hasAudio) {
        const ConversionError noAudio{.kind = ConversionError::Kind::noAudio, .file = m_file};
        co_return unreadable(noAudio);
    }
    co_return std::make_unique<MediaFileStream>(m_converter, m_file, listener);
}

} // namespace vocalith
