#include "core/audio/RecordingReader.h"

#include "core/audio/WavFile.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

namespace vocalith {

RecordingReader::RecordingReader(FileDescriptor fd) : m_fd(std::move(fd)), m_position(kWavHeaderSize)
{}

std::optional<RecordingReader> RecordingReader::open(const std::filesystem::path& file)
{
    FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd.isOpen())
        return std::nullopt;
    return RecordingReader(std::move(fd));
}

std::vector<std::uint8_t> RecordingReader::read(std::uint64_t end)
{
    std::vector<std::uint8_t> bytes(std::min(kMaxBytes, end - std::min(end, m_position)));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const auto count = ::pread(m_fd.get(), bytes.data() + filled, bytes.size() - filled,
                                   static_cast<::off_t>(m_position + filled));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    m_position += filled;
    return bytes;
}

} // namespace vocalith
