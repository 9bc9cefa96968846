#pragma once

#include "models/QuickCommand.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vocalith {

/// A command, and how near one of its phrases came to what was said.
struct CommandMatch {
    QuickCommandDefinition command;
    std::string phrase; ///< of the command, as the user wrote it
    int distance = 0;   ///< characters that would have to be added, left out or replaced
    std::string window; ///< the part of what was said that is nearest to the phrase, in small letters
    bool operator==(const CommandMatch&) const = default;
};

/// A command that was not said, but nearly.
struct NearCommand {
    CommandMatch match;
    bool isPhraseTooLong = false; ///< for what was said: such a phrase counts for nothing, however near it is
};

/// Finds the command that a transcript says. What is compared are characters as people perceive them, without regard to
/// capitals and to punctuation around the transcript. A phrase is looked for at every place of the transcript, in
/// windows of its own length. Disabled commands and empty phrases are never considered. Any thread.
class CommandMatcher {
public:
    /// A phrase counts up to this distance, whatever its length: one of four characters or fewer matches anything that
    /// is no shorter.
    const int maxDistance = 4;

    /// The nearest command; of several equally near the first of the list.
    std::optional<CommandMatch> match(std::string_view transcript,
                                      const std::vector<QuickCommandDefinition>& commands) const;

    /// At most `count` enabled commands with their nearest phrases, the nearest first, however far they are. For people
    /// who wonder what does not match; takes much longer than `match`.
    std::vector<NearCommand> nearest(std::string_view transcript, const std::vector<QuickCommandDefinition>& commands,
                                     std::size_t count) const;
};

/// How many characters of the phrase are compared; 0 when there is nothing to compare.
std::size_t comparedLength(std::string_view phrase);

} // namespace vocalith
