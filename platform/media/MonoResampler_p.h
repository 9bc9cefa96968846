#pragma once

#include "platform/media/FFmpegHandles_p.h"
#include "platform/media/SamplePieces_p.h"

#include <optional>

namespace vocalith::media {

/// Turns decoded frames of one form (sample format, rate, channels) into 16 kHz mono.
class MonoResampler {
public:
    /// The resampler for frames like this one; nothing when no such sound can be converted.
    static std::optional<MonoResampler> forFrame(const AVFrame& frame);

    bool fits(const AVFrame& frame) const;
    void push(const AVFrame& frame, SamplePieces& pieces);
    /// Yields what is still held back. Nothing may be pushed afterwards.
    void drain(SamplePieces& pieces);

private:
    MonoResampler(ResamplerHandle context, const AVFrame& frame)
        : m_context(std::move(context)), m_format(frame.format), m_rate(frame.sample_rate), m_layout(layoutOf(frame))
    {}
    void convert(const std::uint8_t* const* input, int count, SamplePieces& pieces);

    /// What matters of a channel layout; a custom one counts by its number of channels.
    struct Layout {
        AVChannelOrder order = AV_CHANNEL_ORDER_UNSPEC;
        int channels = 0;
        std::uint64_t mask = 0;
        bool operator==(const Layout&) const = default;
    };
    static Layout layoutOf(const AVFrame& frame);

    ResamplerHandle m_context;
    int m_format;
    int m_rate;
    Layout m_layout;
};

} // namespace vocalith::media
