#pragma once

#include "app/cli/Options.h"
#include "base/Task.h"

namespace vocalith {

class Terminal;

/// Hands a request to the running program and says when that does not work. Yields the exit code.
Task<int> askRunningInstance(RemoteOptions options, RunningInstance& instance, Terminal& terminal);

} // namespace vocalith
