#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vocalith {

/// Looks for voice in a recording, for the log. It judges frames of 10 ms: one is active when its power is above
/// -45 dB of full scale; the recording is when at least 100 ms of active frames follow one another. Takes the samples
/// in pieces of any size and keeps only sums.
class SilenceProbe {
public:
    void scan(std::span<const std::int16_t> samples);

    bool isActive() const;
    std::uint64_t scannedSamples() const { return m_scanned; }
    std::uint64_t activeSamples() const { return m_active; }
    std::uint64_t maxConsecutive() const { return m_maxConsecutive; } ///< active samples
    /// "ACTIVE, 32000 of 64000 samples (max consecutive: 12000)", or "SILENT, ..."
    std::string summary() const;

private:
    void endFrame();

    double m_frameSum = 0;
    std::size_t m_frameCount = 0;
    std::uint64_t m_scanned = 0;
    std::uint64_t m_active = 0;
    std::uint64_t m_consecutive = 0;
    std::uint64_t m_maxConsecutive = 0;
};

} // namespace vocalith
