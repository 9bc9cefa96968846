#include "core/audio/SilenceProbe.h"

#include "ports/AudioInput.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {

namespace {

constexpr std::size_t kFrame = kAudioSampleRate / 100;
constexpr std::uint64_t kVoice = 10 * kFrame;
constexpr double kActivePower = 32768.0 * 32768.0 * 3.1623e-5; // -45 dB

} // namespace

void SilenceProbe::scan(std::span<const std::int16_t> samples)
{
    m_scanned += samples.size();
    for (const double sample : samples) {
        m_frameSum += sample * sample;
        if (++m_frameCount == kFrame)
            endFrame();
    }
}

void SilenceProbe::endFrame()
{
    if (m_frameSum / kFrame > kActivePower) {
        m_active += kFrame;
        m_consecutive += kFrame;
        m_maxConsecutive = std::max(m_maxConsecutive, m_consecutive);
    } else {
        m_consecutive = 0;
    }
    m_frameSum = 0;
    m_frameCount = 0;
}

bool SilenceProbe::isActive() const
{
    return m_maxConsecutive >= kVoice;
}

std::string SilenceProbe::summary() const
{
    return fmt::format("{}, {} of {} samples (max consecutive: {})", isActive() ? "ACTIVE" : "SILENT", m_active,
                       m_scanned, m_maxConsecutive);
}

} // namespace vocalith
