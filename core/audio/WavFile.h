#pragma once

#include "base/FileDescriptor.h"
#include "base/Result.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>

namespace vocalith {

/// The bytes before the first sample in every file that a WavWriter makes.
inline constexpr std::uint64_t kWavHeaderSize = 44;
/// The most audio bytes that a RIFF header can name, in whole 16-bit samples: about 37 hours.
inline constexpr std::uint64_t kWavMaxDataBytes = 0xFFFFFFFFULL - (kWavHeaderSize - 8) - 1;

struct WavError {
    enum class Kind {
        notFound, ///< there is no such file
        notWav,   ///< no complete header with a format and a data chunk
        diskFull, ///< no room on the disk, or the user's quota is used up
        tooLarge, ///< the file has reached the size limit of its format or of the system
        failed    ///< any other failure; `detail` says which
    };
    Kind kind = Kind::failed;
    std::string detail; ///< for the log
    bool operator==(const WavError&) const = default;
};

/// What the header of a WAV file says, held against what is really in the file.
struct WavInfo {
    std::uint16_t channels = 0;
    std::uint32_t sampleRate = 0; ///< Hz
    std::uint16_t bitsPerSample = 0;
    std::uint64_t dataOffset = 0; ///< of the first audio byte
    std::uint64_t dataBytes = 0;  ///< the audio bytes that the header names, at most those that the file has
    bool operator==(const WavInfo&) const = default;

    double duration() const; ///< seconds
};

/// Reads a RIFF/WAVE header of any chunk order before the data chunk. A file that ends before its data do is no error.
Result<WavInfo, WavError> readWavHeader(int fd);
Result<WavInfo, WavError> readWavHeader(const std::filesystem::path& file);

/// Writes a new WAV file: 16 kHz, mono, 16-bit signed little-endian. The header names the audio that is in the file
/// after every append, never more, so whenever the program is killed a playable file remains. While the writer lives it
/// holds an exclusive flock(2) on the file, which tells other processes that the recording is a live one. The file is
/// readable by its owner only. Any one thread at a time.
class WavWriter {
public:
    /// Writes like pwrite(2): the number of bytes written, or -1 and errno.
    using WriteAt = std::function<::ssize_t(int fd, const void* bytes, std::size_t count, ::off_t offset)>;

    struct Options {
        WriteAt writeAt = ::pwrite;
        std::uint64_t maxDataBytes = kWavMaxDataBytes;
    };

    /// Makes the file, which must not exist, with an empty recording in it.
    static Result<WavWriter, WavError> create(const std::filesystem::path& file, Options options);
    static Result<WavWriter, WavError> create(const std::filesystem::path& file);

    /// Adds samples. After a failure the file is valid and holds all that could be written of them.
    Result<void, WavError> append(std::span<const std::int16_t> samples);
    /// Returns once all that was appended is on the disk. Slow.
    Result<void, WavError> flushToDisk() const;

    /// The audio bytes in the file, as its header names them.
    std::uint64_t dataBytes() const { return m_dataBytes; }

private:
    WavWriter(FileDescriptor fd, Options options);
    /// Yields the bytes written up to the failure, if there was one, through `written`.
    Result<void, WavError> write(std::span<const std::byte> bytes, std::uint64_t offset, std::uint64_t& written) const;
    Result<void, WavError> writeHeader() const;

    FileDescriptor m_fd;
    Options m_options;
    std::uint64_t m_dataBytes = 0;
};

} // namespace vocalith
