#pragma once

#include "app/cli/completion/CompletionOptions.h"

#include <string>

namespace vocalith {

/// The script that has the shell complete commands, options, and the keys and values of settings, for which it asks the
/// program.
std::string completionScript(const CompletionOptions& options);

} // namespace vocalith
