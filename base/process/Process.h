#pragma once

#include "base/Clock.h"
#include "base/Result.h"
#include "base/Task.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

struct ProcessRequest {
    std::string program; ///< a path, or a name that is looked up as the shell would
    std::vector<std::string> arguments{};
    std::string input{}; ///< for its standard input, which is then closed
    std::optional<Duration> timeout{};
};

struct ProcessResult {
    std::string output;        ///< the bytes of standard output
    std::string error;         ///< the bytes of standard error
    std::int32_t exitCode = 0; ///< as a shell gives it: 128 and the number of the signal that ended it
    bool timedOut = false;
    bool operator==(const ProcessResult&) const = default;
};

struct ProcessError {
    enum class Kind {
        launch,        ///< it could not be started; `detail` says why
        tooMuchOutput, ///< it was ended because it printed more than 128 MiB
        cancelled
    };
    Kind kind = Kind::launch;
    std::string detail{};
    bool operator==(const ProcessError&) const = default;
};

/// Runs a program with this process's environment, in a process group and session of its own, until it ends. It never
/// waits for more of the program than the program waits for: input that is not read is dropped when it ends, output is
/// taken as it comes. What it leaves running in the background goes on, and is not waited for, except that output which
/// still comes within a tenth of a second, or within two while there has been none at all, is taken too, up to 128 MiB;
/// later output finds no reader. After the timeout, with more than 128 MiB on one of its outputs, and when the awaiting
/// task is asked to stop, the whole group is asked to end (SIGTERM) and, with its leader or after half a second, ended
/// (SIGKILL); the task waits until that has happened. Linux 5.3 or later. Main thread; SIGPIPE is ignored.
Task<Result<ProcessResult, ProcessError>> runProcess(Clock& clock, ProcessRequest request);

} // namespace vocalith
