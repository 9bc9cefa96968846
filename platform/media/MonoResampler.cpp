#include "platform/media/MonoResampler_p.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

#include <numeric>
#include <span>
#include <vector>

namespace vocalith::media {
namespace {

// Outside of these a header lies, and a few bytes would become hours.
constexpr int kLowestRate = 1000;
constexpr int kHighestRate = 6'144'000;

/// How loud a channel is in the mix: as in the usual mix-down of surround sound, where speech is in front.
double weightOf(AVChannel channel)
{
    switch (channel) {
    case AV_CHAN_LOW_FREQUENCY:
    case AV_CHAN_LOW_FREQUENCY_2: return 0;
    case AV_CHAN_FRONT_CENTER: return 1;
    case AV_CHAN_FRONT_LEFT:
    case AV_CHAN_FRONT_RIGHT: return M_SQRT1_2;
    default: return 0.5;
    }
}

/// The share of each channel in the mono sound. They add up to 1, so the mix never clips.
std::vector<double> mixOf(const AVChannelLayout& layout)
{
    std::vector<double> mix;
    mix.reserve(static_cast<std::size_t>(layout.nb_channels));
    for (int i = 0; i < layout.nb_channels; ++i)
        mix.push_back(layout.order == AV_CHANNEL_ORDER_NATIVE
                          ? weightOf(av_channel_layout_channel_from_index(&layout, static_cast<unsigned>(i)))
                          : 1);
    const double sum = std::accumulate(mix.begin(), mix.end(), 0.0);
    if (sum == 0) // low frequencies only: better those than silence
        return std::vector<double>(mix.size(), 1.0 / static_cast<double>(mix.size()));
    for (auto& share : mix)
        share /= sum;
    return mix;
}

} // namespace

MonoResampler::Layout MonoResampler::layoutOf(const AVFrame& frame)
{
    const auto& layout = frame.ch_layout;
    return {layout.order, layout.nb_channels, layout.order == AV_CHANNEL_ORDER_NATIVE ? layout.u.mask : 0};
}

std::optional<MonoResampler> MonoResampler::forFrame(const AVFrame& frame)
{
    if (frame.sample_rate < kLowestRate || frame.sample_rate > kHighestRate || frame.ch_layout.nb_channels < 1)
        return std::nullopt;
    AVChannelLayout mono{};
    av_channel_layout_default(&mono, 1);
    // The mix is our own, so the resampler needs to know only how many channels there are.
    AVChannelLayout channels{};
    channels.order = AV_CHANNEL_ORDER_UNSPEC;
    channels.nb_channels = frame.ch_layout.nb_channels;
    SwrContext* raw = nullptr;
    const int allocated = swr_alloc_set_opts2(&raw, &mono, AV_SAMPLE_FMT_FLT, kConvertedRate, &channels,
                                              static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    ResamplerHandle context(raw);
    if (allocated < 0)
        return std::nullopt;
    const auto mix = mixOf(frame.ch_layout);
    if (swr_set_matrix(raw, mix.data(), static_cast<int>(mix.size())) < 0 || swr_init(raw) < 0)
        return std::nullopt;
    return MonoResampler(std::move(context), frame);
}

bool MonoResampler::fits(const AVFrame& frame) const
{
    return frame.format == m_format && frame.sample_rate == m_rate && layoutOf(frame) == m_layout;
}

void MonoResampler::push(const AVFrame& frame, SamplePieces& pieces)
{
    convert(frame.extended_data, frame.nb_samples, pieces);
}

void MonoResampler::drain(SamplePieces& pieces)
{
    convert(nullptr, 0, pieces);
}

void MonoResampler::convert(const std::uint8_t* const* input, int count, SamplePieces& pieces)
{
    // The resampler keeps the input that did not fit; further calls fetch it.
    while (!pieces.closed()) {
        const auto room = pieces.room();
        auto* output = reinterpret_cast<std::uint8_t*>(room.data());
        const int made = swr_convert(m_context.get(), &output, static_cast<int>(room.size()),
                                     const_cast<const std::uint8_t**>(input), count);
        if (made <= 0)
            return;
        pieces.commit(static_cast<std::size_t>(made));
        count = 0;
    }
}

} // namespace vocalith::media
