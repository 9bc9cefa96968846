#include "platform/media/AudioTrackDecoder_p.h"

#include <algorithm>
#include <cmath>

namespace vocalith::media {
namespace {

using Kind = ConversionError::Kind;

constexpr int kMostReadFailures = 100; ///< in a row, before the rest of the file is given up
constexpr double kSmallestGap = 0.1;   ///< seconds; timestamps are often off by less
constexpr double kLargestGap = 600;    ///< seconds; a larger jump is a wrong timestamp
constexpr double kMostSilence = 4 * 3600;
constexpr double kProgressStep = 0.002;

} // namespace

AudioTrackDecoder::AudioTrackDecoder(std::unique_ptr<MediaSource> source)
    : m_source(std::move(source)), m_track(m_source->audioTrack()), m_duration(m_source->info().duration),
      m_packet(av_packet_alloc()), m_frame(av_frame_alloc())
{}

Result<AudioTrackDecoder, ConversionError> AudioTrackDecoder::open(const std::filesystem::path& file,
                                                                   const StopToken& stop)
{
    auto source = MediaSource::open(file, stop);
    if (!source)
        return failure(source.error());
    AudioTrackDecoder decoder(std::move(*source));
    if (const auto opened = decoder.openCodec(); !opened)
        return failure(opened.error());
    return decoder;
}

Result<void, ConversionError> AudioTrackDecoder::openCodec()
{
    if (!m_track)
        return failure(m_source->error(Kind::noAudio, "no audio track"));
    auto& format = m_source->format();
    for (auto* stream : std::span(format.streams, format.nb_streams))
        stream->discard = stream == m_track ? AVDISCARD_DEFAULT : AVDISCARD_ALL;

    const auto* decoder = avcodec_find_decoder(m_track->codecpar->codec_id);
    if (!decoder)
        return failure(m_source->error(Kind::damaged,
                                       std::string("no decoder for ") + avcodec_get_name(m_track->codecpar->codec_id)));
    m_codec.reset(avcodec_alloc_context3(decoder));
    m_codec->pkt_timebase = m_track->time_base;
    int result = avcodec_parameters_to_context(m_codec.get(), m_track->codecpar);
    if (result >= 0)
        result = avcodec_open2(m_codec.get(), decoder, nullptr);
    if (result < 0)
        return failure(m_source->error(Kind::damaged, std::string(decoder->name) + ": " + errorText(result)));
    return {};
}

Result<std::int64_t, ConversionError> AudioTrackDecoder::decode(const PCMConverter::SampleSink& sink,
                                                                const PCMConverter::ProgressHandler& progress)
{
    SamplePieces pieces(sink);
    const auto& format = m_source->format();
    const bool startKnown = format.start_time != AV_NOPTS_VALUE;
    m_start = startKnown ? static_cast<double>(format.start_time) / AV_TIME_BASE : 0;
    m_position = m_start;

    decodePackets(progress, pieces);
    if (!m_source->stopRequested() && !pieces.closed()) {
        decodePacket(nullptr, pieces);
        drain(pieces);
        pieces.flush();
    }
    if (pieces.closed())
        return pieces.delivered();
    if (m_source->stopRequested())
        return failure(m_source->error(Kind::damaged, {}));
    if (pieces.delivered() == 0)
        return failure(m_source->error(Kind::damaged, m_lastError.empty() ? "no sound in it" : m_lastError));
    if (progress)
        progress(1);
    return pieces.delivered();
}

void AudioTrackDecoder::decodePackets(const PCMConverter::ProgressHandler& progress, SamplePieces& pieces)
{
    int failures = 0;
    while (!m_source->stopRequested() && !pieces.closed() && failures < kMostReadFailures) {
        const int result = av_read_frame(&m_source->format(), m_packet.get());
        if (result == AVERROR_EOF || result == AVERROR_EXIT)
            return;
        if (result < 0) {
            m_lastError = errorText(result);
            ++failures;
            continue;
        }
        failures = 0;
        if (m_packet->stream_index == m_track->index) {
            decodePacket(m_packet.get(), pieces);
            report(progress);
        }
        av_packet_unref(m_packet.get());
    }
}

void AudioTrackDecoder::decodePacket(const AVPacket* packet, SamplePieces& pieces)
{
    if (const int result = avcodec_send_packet(m_codec.get(), packet); result < 0)
        m_lastError = errorText(result); // a damaged packet: the next one may be good again
    while (!pieces.closed() && avcodec_receive_frame(m_codec.get(), m_frame.get()) >= 0)
        take(*m_frame, pieces);
}

void AudioTrackDecoder::take(const AVFrame& frame, SamplePieces& pieces)
{
    if (frame.nb_samples <= 0 || frame.sample_rate <= 0)
        return;
    if (frame.best_effort_timestamp != AV_NOPTS_VALUE) {
        const double start = static_cast<double>(frame.best_effort_timestamp) * av_q2d(m_track->time_base);
        fillGap(start - m_position, pieces);
        m_position = start;
    }
    m_position += static_cast<double>(frame.nb_samples) / frame.sample_rate;

    if (m_resampler && !m_resampler->fits(frame))
        drain(pieces);
    if (!m_resampler)
        m_resampler = MonoResampler::forFrame(frame);
    if (m_resampler)
        m_resampler->push(frame, pieces);
    else
        m_lastError = "sound of a form that cannot be converted";
}

void AudioTrackDecoder::fillGap(double seconds, SamplePieces& pieces)
{
    if (seconds < kSmallestGap || seconds > kLargestGap || m_silence + seconds > kMostSilence)
        return;
    m_silence += seconds;
    drain(pieces);
    pieces.addSilence(std::llround(seconds * kConvertedRate));
}

void AudioTrackDecoder::drain(SamplePieces& pieces)
{
    if (m_resampler)
        m_resampler->drain(pieces);
    m_resampler.reset();
}

void AudioTrackDecoder::report(const PCMConverter::ProgressHandler& progress)
{
    if (!progress)
        return;
    const double reached = m_duration > 0 ? (m_position - m_start) / m_duration : m_source->fractionRead();
    // The whole is reached only when the conversion has succeeded.
    const double bounded = std::min(reached, 1 - kProgressStep);
    if (bounded < m_progress + kProgressStep)
        return;
    m_progress = bounded;
    progress(bounded);
}

} // namespace vocalith::media
