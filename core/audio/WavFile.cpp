#include "core/audio/WavFile.h"

#include "ports/AudioInput.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

namespace vocalith {

namespace {

static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");

constexpr std::uint16_t kPCMFormat = 1;
constexpr std::uint16_t kBytesPerSample = 2;

WavError systemError(const char* operation)
{
    const int code = errno;
    const auto detail = std::string(operation) + ": " + std::generic_category().message(code);
    switch (code) {
    case ENOENT: return {WavError::Kind::notFound, detail};
    case ENOSPC:
    case EDQUOT: return {WavError::Kind::diskFull, detail};
    case EFBIG: return {WavError::Kind::tooLarge, detail};
    default: return {WavError::Kind::failed, detail};
    }
}

template <class Integer>
void put(std::span<std::byte> bytes, std::size_t offset, Integer value)
{
    std::memcpy(bytes.subspan(offset, sizeof value).data(), &value, sizeof value);
}

template <class Integer>
Integer get(std::span<const std::byte> bytes, std::size_t offset)
{
    Integer value{};
    std::memcpy(&value, bytes.subspan(offset, sizeof value).data(), sizeof value);
    return value;
}

void putTag(std::span<std::byte> bytes, std::size_t offset, std::string_view tag)
{
    std::memcpy(bytes.subspan(offset, tag.size()).data(), tag.data(), tag.size());
}

bool hasTag(std::span<const std::byte> bytes, std::size_t offset, std::string_view tag)
{
    return std::memcmp(bytes.subspan(offset, tag.size()).data(), tag.data(), tag.size()) == 0;
}

std::array<std::byte, kWavHeaderSize> makeHeader(std::uint64_t dataBytes)
{
    std::array<std::byte, kWavHeaderSize> header{};
    putTag(header, 0, "RIFF");
    put(header, 4, static_cast<std::uint32_t>(dataBytes + kWavHeaderSize - 8));
    putTag(header, 8, "WAVEfmt ");
    put(header, 16, std::uint32_t{16});
    put(header, 20, kPCMFormat);
    put(header, 22, std::uint16_t{1});
    put(header, 24, static_cast<std::uint32_t>(kAudioSampleRate));
    put(header, 28, static_cast<std::uint32_t>(kAudioSampleRate * kBytesPerSample));
    put(header, 32, kBytesPerSample);
    put(header, 34, static_cast<std::uint16_t>(kBytesPerSample * 8));
    putTag(header, 36, "data");
    put(header, 40, static_cast<std::uint32_t>(dataBytes));
    return header;
}

/// Fills `bytes` from the file at `offset`; false when the file ends before.
bool readAt(int fd, std::span<std::byte> bytes, std::uint64_t offset)
{
    while (!bytes.empty()) {
        const auto count = ::pread(fd, bytes.data(), bytes.size(), static_cast<::off_t>(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        offset += static_cast<std::uint64_t>(count);
    }
    return true;
}

std::uint64_t sizeOf(int fd)
{
    struct ::stat status {};
    return ::fstat(fd, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

} // namespace

double WavInfo::duration() const
{
    const auto bytesPerSecond = static_cast<double>(sampleRate) * channels * bitsPerSample / 8;
    return bytesPerSecond > 0 ? static_cast<double>(dataBytes) / bytesPerSecond : 0;
}

Result<WavInfo, WavError> readWavHeader(int fd)
{
    const auto fileSize = sizeOf(fd);
    std::array<std::byte, 12> riff{};
    if (!readAt(fd, riff, 0) || !hasTag(riff, 0, "RIFF") || !hasTag(riff, 8, "WAVE"))
        return failure(WavError{WavError::Kind::notWav, "no RIFF header"});

    WavInfo info;
    std::uint64_t offset = riff.size();
    std::array<std::byte, 8> chunk{};
    while (readAt(fd, chunk, offset)) {
        offset += chunk.size();
        const auto size = get<std::uint32_t>(chunk, 4);
        std::array<std::byte, 16> format{};
        if (hasTag(chunk, 0, "fmt ") && size >= format.size() && readAt(fd, format, offset)) {
            info.channels = get<std::uint16_t>(format, 2);
            info.sampleRate = get<std::uint32_t>(format, 4);
            info.bitsPerSample = get<std::uint16_t>(format, 14);
        } else if (hasTag(chunk, 0, "data") && info.sampleRate > 0) {
            info.dataOffset = offset;
            info.dataBytes = std::min<std::uint64_t>(size, fileSize - std::min(fileSize, offset));
            return info;
        }
        offset += size + (size & 1U); // chunks start at even offsets
    }
    return failure(WavError{WavError::Kind::notWav, "no format and data chunk"});
}

Result<WavInfo, WavError> readWavHeader(const std::filesystem::path& file)
{
    const FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.isOpen())
        return failure(systemError("open"));
    return readWavHeader(fd.get());
}

WavWriter::WavWriter(FileDescriptor fd, Options options) : m_fd(std::move(fd)), m_options(std::move(options))
{}

Result<WavWriter, WavError> WavWriter::create(const std::filesystem::path& file)
{
    return create(file, Options{});
}

Result<WavWriter, WavError> WavWriter::create(const std::filesystem::path& file, Options options)
{
    FileDescriptor fd(::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!fd.isOpen())
        return failure(systemError("create"));
    // A file system without locks costs the protection from a second process, not the recording.
    ::flock(fd.get(), LOCK_EX | LOCK_NB);
    WavWriter writer(std::move(fd), std::move(options));
    if (const auto written = writer.writeHeader(); !written) {
        ::unlink(file.c_str());
        return failure(written.error());
    }
    return writer;
}

Result<void, WavError> WavWriter::write(std::span<const std::byte> bytes, std::uint64_t offset,
                                        std::uint64_t& written) const
{
    written = 0;
    while (written < bytes.size()) {
        const auto rest = bytes.subspan(written);
        const auto count =
            m_options.writeAt(m_fd.get(), rest.data(), rest.size(), static_cast<::off_t>(offset + written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failure(systemError("write"));
        if (count == 0)
            return failure(WavError{WavError::Kind::failed, "write: nothing was written"});
        written += static_cast<std::uint64_t>(count);
    }
    return {};
}

Result<void, WavError> WavWriter::writeHeader() const
{
    // One write within one page: whoever reads the file sees the old header or the new one.
    const auto header = makeHeader(m_dataBytes);
    std::uint64_t written = 0;
    return write(header, 0, written);
}

Result<void, WavError> WavWriter::append(std::span<const std::int16_t> samples)
{
    const auto room = (m_options.maxDataBytes - m_dataBytes) / kBytesPerSample;
    const auto fitting = samples.first(std::min<std::uint64_t>(samples.size(), room));
    std::uint64_t written = 0;
    const auto data = write(std::as_bytes(fitting), kWavHeaderSize + m_dataBytes, written);
    m_dataBytes += written - written % kBytesPerSample;
    if (written % kBytesPerSample != 0) [[maybe_unused]]
        const int cut = ::ftruncate(m_fd.get(), static_cast<::off_t>(kWavHeaderSize + m_dataBytes));
    if (written > 0) {
        // Only now: the header never names what is not there.
        if (const auto header = writeHeader(); !header)
            return failure(header.error());
    }
    if (!data)
        return failure(data.error());
    if (fitting.size() < samples.size())
        return failure(WavError{WavError::Kind::tooLarge, "the recording has reached the size limit of a WAV file"});
    return {};
}

Result<void, WavError> WavWriter::flushToDisk() const
{
    if (::fsync(m_fd.get()) != 0)
        return failure(systemError("fsync"));
    return {};
}

} // namespace vocalith
