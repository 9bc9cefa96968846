#pragma once

#include "app/cli/Options.h"
#include "base/Result.h"

namespace vocalith {

/// Reads the command line. Help, version and complaints are printed here; the error is then the exit code.
Result<Command, int> parseCommandLine(int argc, const char* const* argv);

} // namespace vocalith
