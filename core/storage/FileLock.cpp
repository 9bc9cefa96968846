#include "core/storage/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace vocalith {

FileLock::FileLock(const std::filesystem::path& file)
    : m_file(::open((file.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR))
{
    do {
        m_isHeld = m_file >= 0 && ::flock(m_file, LOCK_EX) == 0;
    } while (!m_isHeld && m_file >= 0 && errno == EINTR);
}

FileLock::~FileLock()
{
    if (m_file >= 0)
        ::close(m_file);
}

} // namespace vocalith
