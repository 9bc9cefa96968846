#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>

#include <sys/types.h>

namespace vocalith {

/// Becomes readable when that child has ended (pidfd_open(2), Linux 5.3 or later). Closed where it cannot be watched;
/// errno says why.
FileDescriptor watchProcess(pid_t id);

/// Waits for the child's end and forgets the child, whose number may be another's from then on. Yields its exit code as
/// a shell gives it: 128 and the number of the signal that ended it. 0 for what is no child.
std::int32_t reapProcess(pid_t id);

} // namespace vocalith
