#include "base/process/ProcessEnd.h"

#include <sys/syscall.h>
#include <sys/wait.h>

namespace vocalith {

FileDescriptor watchProcess(pid_t id)
{
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, id, 0)));
}

std::int32_t reapProcess(pid_t id)
{
    siginfo_t end{};
    const bool isKnown = ::waitid(P_PID, static_cast<id_t>(id), &end, WEXITED) == 0;
    return isKnown && end.si_code != CLD_EXITED ? 128 + end.si_status : end.si_status;
}

} // namespace vocalith
