#pragma once

#include "app/cli/scripts/ScriptsOptions.h"

namespace vocalith {

class Terminal;

/// `vocalith scripts`: prints what there is. Yields the exit code.
int showScripts(const ScriptsOptions& options, Terminal& terminal);

} // namespace vocalith
