#include "core/storage/ProcessLock.h"

#include "base/AtomicFile.h"
#include "base/Text.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace vocalith {
namespace {

std::string systemReason()
{
    return std::generic_category().message(errno);
}

void noteHolder(int descriptor)
{
    const std::string text = std::to_string(::getpid()) + "\n";
    // Only for the message of whoever comes second: the lock holds without it.
    if (::ftruncate(descriptor, 0) == 0) {
        const auto written = ::pwrite(descriptor, text.data(), text.size(), 0);
        static_cast<void>(written);
    }
}

} // namespace

Result<ProcessLock, ProcessLock::Error> ProcessLock::take(const std::filesystem::path& file)
{
    const auto folder = createPrivateFolder(file.parent_path());
    if (!folder)
        return failure(Error{false, toString(folder.error())});
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return failure(Error{false, file.string() + ": " + systemReason()});
    ProcessLock lock(descriptor);
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK)
            return failure(Error{false, file.string() + ": " + systemReason()});
        return failure(Error{true, trimmed(readWholeFile(file).value_or(""))});
    }
    noteHolder(descriptor);
    return lock;
}

ProcessLock::ProcessLock(ProcessLock&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1))
{}

ProcessLock& ProcessLock::operator=(ProcessLock&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

ProcessLock::~ProcessLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace vocalith
