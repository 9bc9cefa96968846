#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace vocalith {

/// Reads a growing recording piece by piece. Costs what is new, however long the recording is.
class RecordingReader {
public:
    /// What one read yields at most: more than two minutes of audio.
    static constexpr std::uint64_t kMaxBytes = 4ULL << 20U;

    /// Starts after the header. Nothing when the file cannot be opened.
    static std::optional<RecordingReader> open(const std::filesystem::path& file);

    /// The bytes from `lastProcessedBytes` to `end`, at most `kMaxBytes`, and moves on past them.
    std::vector<std::uint8_t> read(std::uint64_t end);
    /// The offset in the file up to which it was read.
    std::uint64_t lastProcessedBytes() const { return m_position; }

private:
    explicit RecordingReader(FileDescriptor fd);

    FileDescriptor m_fd;
    std::uint64_t m_position;
};

} // namespace vocalith
