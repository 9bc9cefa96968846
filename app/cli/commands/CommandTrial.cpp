#include "app/cli/commands/CommandTrial.h"

#include "app/cli/commands/CommandText.h"
#include "core/pipeline/commands/CommandMatcher.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

constexpr std::size_t kNearest = 3;

/// "1 character", "4 characters".
std::string characters(std::size_t count)
{
    return fmt::format("{} character{}", count, count == 1 ? "" : "s");
}

/// How near, in words.
std::string nearness(const CommandMatch& match, int maxDistance)
{
    if (match.distance == 0)
        return "is in what was said, to the letter";
    return fmt::format("is {} away from {} (at most {} count)", characters(static_cast<std::size_t>(match.distance)),
                       quoted(match.window), maxDistance);
}

std::string nearLine(const NearCommand& near, int maxDistance)
{
    const auto& match = near.match;
    if (!near.isPhraseTooLong)
        return fmt::format("  {} {}\n", quoted(match.phrase), nearness(match, maxDistance));
    return fmt::format("  {} is longer than what was said: {} against {}\n", quoted(match.phrase),
                       characters(comparedLength(match.phrase)), characters(comparedLength(match.window)));
}

/// The disabled command that would have been the one, if there is one.
std::string disabledLine(const std::string& said, std::vector<QuickCommandDefinition> commands)
{
    for (auto& command : commands)
        command.isEnabled = !command.isEnabled;
    const auto match = CommandMatcher().match(said, commands);
    if (!match)
        return {};
    return fmt::format("{} would match, but is disabled. Enable it with: vocalith commands enable {}\n",
                       quoted(match->phrase), quoted(match->phrase));
}

} // namespace

CommandTrial tryCommands(const std::string& said, const std::vector<QuickCommandDefinition>& commands)
{
    const CommandMatcher matcher;
    if (const auto match = matcher.match(said, commands))
        return {true, fmt::format("{}: {} {}.\n", description(match->command.action), quoted(match->phrase),
                                  nearness(*match, matcher.maxDistance))};
    CommandTrial trial{false, "No quick command matches. The text would be dictated.\n"};
    trial.text += disabledLine(said, commands);
    const auto nearest = matcher.nearest(said, commands, kNearest);
    if (!nearest.empty())
        trial.text += "The nearest phrases:\n";
    for (const auto& near : nearest)
        trial.text += nearLine(near, matcher.maxDistance);
    return trial;
}

} // namespace vocalith
