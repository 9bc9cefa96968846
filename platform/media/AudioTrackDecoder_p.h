#pragma once

#include "platform/media/MediaSource_p.h"
#include "platform/media/MonoResampler_p.h"

namespace vocalith::media {

/// Decodes the audio track of one file, once, on the thread that opened it. What is damaged is left out; where the file
/// has a gap in its timeline, silence takes its place, so that the times of what follows stay true.
class AudioTrackDecoder {
public:
    static Result<AudioTrackDecoder, ConversionError> open(const std::filesystem::path& file, const StopToken& stop);

    /// Yields the number of samples that the sink was given.
    Result<std::int64_t, ConversionError> decode(const PCMConverter::SampleSink& sink,
                                                 const PCMConverter::ProgressHandler& progress);

private:
    explicit AudioTrackDecoder(std::unique_ptr<MediaSource> source);
    Result<void, ConversionError> openCodec();
    void decodePackets(const PCMConverter::ProgressHandler& progress, SamplePieces& pieces);
    void decodePacket(const AVPacket* packet, SamplePieces& pieces);
    void take(const AVFrame& frame, SamplePieces& pieces);
    void fillGap(double seconds, SamplePieces& pieces);
    void drain(SamplePieces& pieces);
    void report(const PCMConverter::ProgressHandler& progress);

    std::unique_ptr<MediaSource> m_source;
    AVStream* m_track = nullptr;
    double m_duration = 0; ///< seconds, 0 when unknown
    double m_start = 0;    ///< where the file's timeline starts, in seconds
    double m_position = 0; ///< on that timeline: the end of what was decoded
    double m_silence = 0;  ///< seconds that were put in for gaps
    double m_progress = 0;
    CodecHandle m_codec;
    PacketHandle m_packet;
    FrameHandle m_frame;
    std::optional<MonoResampler> m_resampler;
    std::string m_lastError;
};

} // namespace vocalith::media
