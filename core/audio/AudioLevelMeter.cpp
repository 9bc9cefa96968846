#include "core/audio/AudioLevelMeter.h"

#include <algorithm>
#include <cmath>

namespace vocalith {

namespace {

constexpr double kFullScale = 32768;
constexpr float kQuietDecibels = -55;
constexpr float kLoudDecibels = -5;
constexpr int kMaxEmptyReadings = 10;

} // namespace

void PowerWindow::add(std::span<const std::int16_t> samples)
{
    for (const auto sample : samples)
        sumOfSquares += (sample / kFullScale) * (sample / kFullScale);
    count += samples.size();
}

float AudioLevelMeter::decibels(const PowerWindow& window)
{
    if (window.count == 0 || window.sumOfSquares <= 0)
        return kFloorDecibels;
    const auto power = window.sumOfSquares / static_cast<double>(window.count);
    return std::max(kFloorDecibels, static_cast<float>(10 * std::log10(power)));
}

float AudioLevelMeter::levelOf(float decibels)
{
    return std::clamp((decibels - kQuietDecibels) / (kLoudDecibels - kQuietDecibels), 0.0F, 1.0F);
}

void AudioLevelMeter::read(const PowerWindow& window)
{
    m_emptyReadings = window.count > 0 ? 0 : m_emptyReadings + 1;
    const bool stands = m_emptyReadings > 0 && m_emptyReadings <= kMaxEmptyReadings && !m_raw.empty();
    const float reading = stands ? m_raw.back() : decibels(window);
    m_raw.push_back(reading);
    if (m_raw.size() > kRawLevels)
        m_raw.pop_front();
    std::rotate(m_visual.begin(), m_visual.begin() + 1, m_visual.end());
    m_visual.back() = levelOf(reading);
}

void AudioLevelMeter::reset()
{
    *this = {};
}

} // namespace vocalith
