#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

namespace vocalith {

/// The power of the samples since the meter was last read.
struct PowerWindow {
    double sumOfSquares = 0; ///< of samples as fractions of full scale
    std::uint64_t count = 0;

    void add(std::span<const std::int16_t> samples);
};

/// Turns power readings into what the overlay draws. Main thread.
///
/// A reading is the power (mean square) in dB relative to full scale, at least -160. `audioLevel` is 0 up to -55 dB
/// (a quiet room), 1 from -5 dB on, and linear in dB between. When a reading finds no new samples the one before
/// stands, for at most ten readings.
class AudioLevelMeter {
public:
    static constexpr std::size_t kVisualLevels = 24;
    /// One minute at the meter's pace: memory stays the same however long the recording is.
    static constexpr std::size_t kRawLevels = 2000;
    static constexpr float kFloorDecibels = -160;

    static float decibels(const PowerWindow& window);
    static float levelOf(float decibels);

    void read(const PowerWindow& window);
    void reset();

    float audioLevel() const { return m_visual.back(); }
    /// The last levels, the newest at the end; zeros before the first.
    const std::vector<float>& visualAudioLevels() const { return m_visual; }
    /// The last readings of this recording in dB, the newest at the end.
    const std::deque<float>& rawAudioPowerLevels() const { return m_raw; }

private:
    std::vector<float> m_visual = std::vector<float>(kVisualLevels);
    std::deque<float> m_raw;
    int m_emptyReadings = 0;
};

} // namespace vocalith
