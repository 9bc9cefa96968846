#include "platform/media/SamplePieces_p.h"

#include <algorithm>
#include <cmath>

namespace vocalith::media {
namespace {

float inRange(float sample)
{
    return std::isnan(sample) ? 0.0F : std::clamp(sample, -1.0F, 1.0F);
}

} // namespace

void SamplePieces::commit(std::size_t count)
{
    m_filled += count;
    if (m_filled == m_samples.size())
        flush();
}

void SamplePieces::addSilence(std::int64_t count)
{
    while (count > 0 && !m_closed) {
        const auto free = room();
        const auto size = std::min(free.size(), static_cast<std::size_t>(count));
        std::fill_n(free.begin(), size, 0.0F);
        commit(size);
        count -= static_cast<std::int64_t>(size);
    }
}

void SamplePieces::flush()
{
    const auto piece = std::span(m_samples).first(m_filled);
    m_filled = 0;
    if (piece.empty() || m_closed)
        return;
    std::transform(piece.begin(), piece.end(), piece.begin(), inRange);
    m_delivered += static_cast<std::int64_t>(piece.size());
    m_closed = !m_sink(piece);
}

std::int16_t toInt16(float sample)
{
    return static_cast<std::int16_t>(std::clamp(std::lrint(sample * 32768.0F), -32768L, 32767L));
}

} // namespace vocalith::media
