#pragma once

#include "models/QuickCommand.h"

#include <string>
#include <vector>

namespace vocalith {

/// What a text would do if it were said.
struct CommandTrial {
    bool isMatch = false;
    std::string text; ///< lines for people: which command, by which phrase, where and how near, or the nearest ones
};

CommandTrial tryCommands(const std::string& said, const std::vector<QuickCommandDefinition>& commands);

} // namespace vocalith
