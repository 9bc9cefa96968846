#include "platform/media/OutputFile_p.h"

#include "base/Uuid.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <system_error>

namespace vocalith::media {
namespace {

std::string systemText(int code)
{
    return std::generic_category().message(code);
}

} // namespace

Result<OutputFile, std::string> OutputFile::create(const std::filesystem::path& file)
{
    const auto aside = file.parent_path() / ("." + Uuid::random().toString() + ".part");
    FileDescriptor descriptor(::open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!descriptor)
        return failure(systemText(errno));
    return OutputFile(file, aside, std::move(descriptor));
}

OutputFile::~OutputFile()
{
    if (m_descriptor)
        ::unlink(m_aside.c_str());
}

bool OutputFile::write(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty() && m_error == 0) {
        const auto count = ::write(m_descriptor.get(), bytes.data(), bytes.size());
        if (count > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            m_error = errno;
    }
    return m_error == 0;
}

std::int64_t OutputFile::seek(std::int64_t offset, int whence)
{
    return ::lseek(m_descriptor.get(), offset, whence);
}

Result<void, std::string> OutputFile::finish()
{
    if (m_error == 0 && ::fsync(m_descriptor.get()) != 0)
        m_error = errno;
    if (m_error == 0 && std::rename(m_aside.c_str(), m_file.c_str()) != 0)
        m_error = errno;
    if (m_error != 0)
        return failure(systemText(m_error));
    m_descriptor = FileDescriptor();
    return {};
}

} // namespace vocalith::media
