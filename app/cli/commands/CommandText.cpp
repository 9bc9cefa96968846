#include "app/cli/commands/CommandText.h"

#include "base/Text.h"
#include "core/pipeline/commands/CommandMatcher.h"
#include "core/storage/settings/rules/SettingWords.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <vector>

namespace vocalith {
namespace {

namespace action = quick_command_action;

bool isLetter(char c)
{
    return asciiLower(c) >= 'a' && asciiLower(c) <= 'z';
}

bool isSchemeCharacter(char c)
{
    return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

/// Whether it begins with a scheme as RFC 3986 has it. "example.org:" and "localhost:8080/board" begin with a host.
bool hasScheme(std::string_view url)
{
    const auto end = url.find(':');
    const auto scheme = url.substr(0, std::min(end, url.size()));
    if (end == std::string_view::npos || scheme.empty() || !isLetter(scheme.front()) ||
        !std::ranges::all_of(scheme, isSchemeCharacter))
        return false;
    const auto rest = url.substr(end + 1);
    const auto port = rest.substr(0, rest.find('/'));
    const bool isHost = scheme == "localhost" || scheme.find('.') != std::string_view::npos;
    return !isHost || port.find_first_not_of("0123456789") != std::string_view::npos;
}

std::optional<std::string> whyUseless(const action::OpenURL& open)
{
    const auto& url = open.url;
    if (trimmed(url).empty())
        return "The address is empty. Say what is to be opened: --url https://example.org";
    if (!isText(url))
        return "The address is no text in UTF-8.";
    if (url.starts_with('/') || hasScheme(url))
        return std::nullopt;
    const bool isPath = url.starts_with('~') || url.starts_with('.');
    return fmt::format("{} is no whole address. Write it with what it begins with, such as {}, or as the whole path of "
                       "a file.",
                       quoted(url), quoted("https://" + (isPath ? "example.org" : url)));
}

std::optional<std::string> whyUseless(const action::LaunchApp& launch)
{
    if (trimmed(launch.bundleID).empty())
        return "The application is empty. Say which is to be started, by its desktop entry: --app org.gnome.TextEditor";
    if (!isText(launch.bundleID) || launch.bundleID.find('/') != std::string::npos)
        return fmt::format("{} is no name of a desktop entry. They are the names of the files in "
                           "/usr/share/applications, without the folder.",
                           quoted(launch.bundleID));
    return std::nullopt;
}

std::optional<std::string> whyUseless(const action::RunShortcut& shortcut)
{
    if (trimmed(shortcut.name).empty())
        return "The shortcut is empty. Say which is to be run: --shortcut NAME";
    if (!isText(shortcut.name) || shortcut.name.find('/') != std::string::npos || shortcut.name.starts_with('.'))
        return fmt::format("{} is no name of a shortcut. It is the name of a file in the shortcuts folder.",
                           quoted(shortcut.name));
    return std::nullopt;
}

} // namespace

std::string quoted(const std::string& text)
{
    return '"' + cleanText(text, ' ') + '"';
}

std::string description(const QuickCommandAction& action)
{
    if (const auto* open = std::get_if<action::OpenURL>(&action))
        return "opens " + cleanText(open->url, ' ');
    if (const auto* launch = std::get_if<action::LaunchApp>(&action))
        return "starts " + cleanText(launch->bundleID, ' ');
    return "runs the shortcut " + quoted(std::get<action::RunShortcut>(action).name);
}

std::string phrasesOf(const QuickCommandDefinition& command)
{
    std::vector<std::string> phrases;
    std::ranges::transform(command.triggerPhrases, std::back_inserter(phrases), quoted);
    return fmt::format("{}", fmt::join(phrases, ", "));
}

std::optional<std::string> whyUseless(const QuickCommandDefinition& command)
{
    if (command.triggerPhrases.empty())
        return "There is no phrase. Say at least one that is to be said for it.";
    for (const auto& phrase : command.triggerPhrases) {
        if (comparedLength(phrase) == 0)
            return "A phrase is empty. Nobody could say it.";
        if (!isText(phrase))
            return fmt::format("The phrase {} is no text in UTF-8.", quoted(phrase));
    }
    return std::visit([](const auto& action) { return whyUseless(action); }, command.action);
}

} // namespace vocalith
