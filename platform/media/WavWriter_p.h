#pragma once

#include "platform/media/OutputFile_p.h"

#include <span>

namespace vocalith::media {

/// Writes 16 kHz mono 16-bit WAV. The header becomes valid in `finish`.
class WavWriter {
public:
    /// The most bytes of sound that the 32-bit sizes of the header can tell of: 37 hours.
    static constexpr std::uint32_t kMostBytes = 0xFFFFFFFFU - 36 - 1;

    explicit WavWriter(OutputFile file, std::uint32_t mostBytes = kMostBytes);

    /// Yields whether they could be written; the reason why not comes from `finish`.
    bool write(std::span<const float> samples);
    Result<void, std::string> finish();

private:
    bool writeHeader();

    OutputFile m_file;
    std::uint32_t m_mostBytes;
    std::uint32_t m_bytes = 0;
    bool m_full = false;
};

} // namespace vocalith::media
