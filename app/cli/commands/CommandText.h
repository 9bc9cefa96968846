#pragma once

#include "models/QuickCommand.h"

#include <optional>
#include <string>

namespace vocalith {

/// A text of the user's as it can be shown on one line of a terminal, in quotation marks.
std::string quoted(const std::string& text);

/// "opens https://example.org", "starts org.example.Editor", "runs the shortcut "lights"".
std::string description(const QuickCommandAction& action);

/// Its phrases: "open mail", "show my mail".
std::string phrasesOf(const QuickCommandDefinition& command);

/// Why the command could never do anything, as a sentence that says what to do; nothing when it could.
std::optional<std::string> whyUseless(const QuickCommandDefinition& command);

} // namespace vocalith
