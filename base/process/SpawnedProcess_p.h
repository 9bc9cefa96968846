#pragma once

#include "base/FileDescriptor.h"
#include "base/Result.h"

#include <string>
#include <vector>

#include <sys/types.h>

namespace vocalith {

/// A child process and this end of its pipes; whoever has it reaps it.
struct SpawnedProcess {
    pid_t id = 0;           ///< of the process, and of its group and its session, which it leads
    FileDescriptor running; ///< becomes readable when it has ended
    FileDescriptor input;
    FileDescriptor output;
    FileDescriptor error;
};

/// Starts `program`, which is looked up in PATH unless it has a slash, with this process's environment and in a session
/// of its own: what reads the keyboard there finds no terminal, where it would be stopped as a background job of ours.
/// The error is a sentence's rest for people: why it could not be started.
Result<SpawnedProcess, std::string> spawnProcess(const std::string& program, const std::vector<std::string>& arguments);

} // namespace vocalith
