#pragma once

#include "ports/PCMConverter.h"

#include <vector>

namespace vocalith::media {

inline constexpr int kConvertedRate = 16000; ///< Hz, of all that a conversion yields

/// Collects samples into pieces of a second, brings them into -1..1 and hands them to a sink until it has had enough.
class SamplePieces {
public:
    explicit SamplePieces(const PCMConverter::SampleSink& sink) : m_sink(sink), m_samples(kConvertedRate) {}

    /// Where the next samples are written to; never empty.
    std::span<float> room() { return std::span(m_samples).subspan(m_filled); }
    /// Takes the first `count` samples of `room`.
    void commit(std::size_t count);
    void addSilence(std::int64_t count);
    /// Hands out what is left.
    void flush();

    /// Whether the sink wants no more.
    bool closed() const { return m_closed; }
    std::int64_t delivered() const { return m_delivered; }

private:
    const PCMConverter::SampleSink& m_sink;
    std::vector<float> m_samples;
    std::size_t m_filled = 0;
    std::int64_t m_delivered = 0;
    bool m_closed = false;
};

/// The 16-bit form of a sample: the inverse of how 16-bit samples are decoded, so that they survive unchanged.
std::int16_t toInt16(float sample);

} // namespace vocalith::media
