#pragma once

#include "base/Log.h"
#include "base/Result.h"
#include "base/Task.h"

#include <cstdint>
#include <string>

namespace vocalith {

class Clock;
class PersistentAppStorage;

struct BashScriptError {
    enum class Kind {
        launch,        ///< the shell could not be started; `detail` says why
        tooMuchOutput, ///< the script was ended because it printed more than 128 MiB
        cancelled
    };
    Kind kind = Kind::launch;
    std::string detail{};
    bool operator==(const BashScriptError&) const = default;
};

/// Runs the user's shell scripts on a text. Lives as long as the program; main thread.
class BashScriptService {
public:
    struct BashResult {
        std::string output; ///< all of standard output, as UTF-8; bytes that are none become U+FFFD
        std::string error;  ///< the same of standard error
        std::int32_t exitCode = 0;
        bool timedOut = false;
        bool operator==(const BashResult&) const = default;
    };

    BashScriptService(Clock& clock, PersistentAppStorage& appStorage, Logger logger);

    /// Gives the script the input and its end, and waits until the shell has ended, at most `timeout` seconds. A script
    /// that takes longer is ended with its whole process group, and so is one that prints without end and one whose
    /// task is asked to stop. What a script leaves running in the background when it ends by itself goes on.
    Task<Result<BashResult, BashScriptError>> run(std::string input, std::string script, double timeout);

private:
    Clock& m_clock;
    PersistentAppStorage& m_appStorage;
    const Logger m_logger;
};

} // namespace vocalith
