#include "app/cli/commands/CommandsCommand.h"

#include "app/cli/ExitCode.h"
#include "app/cli/commands/CommandText.h"
#include "app/cli/commands/CommandTrial.h"
#include "app/cli/terminal/Terminal.h"
#include "app/cli/text/ColumnText.h"
#include "app/cli/text/NearestWord.h"
#include "base/AtomicFile.h"
#include "base/Json.h"
#include "base/Text.h"
#include "core/pipeline/commands/CommandMatcher.h"
#include "core/pipeline/commands/QuickCommandsManager.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/Automations.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {
namespace {

namespace fs = std::filesystem;
using Colour = Terminal::Colour;
using Commands = std::vector<QuickCommandDefinition>;

constexpr int kIndent = 2;
constexpr std::size_t kShortId = 8;
constexpr std::size_t kShortestId = 4;
constexpr const char* kNone = "There are no quick commands. Add one, for instance with: vocalith commands add \"open "
                              "mail\" --url https://mail.example.org";

std::string shortId(const QuickCommandDefinition& command)
{
    return command.id.toString().substr(0, kShortId);
}

bool hasPhrase(const QuickCommandDefinition& command, const std::string& wanted)
{
    return std::ranges::any_of(command.triggerPhrases, [form = searchForm(trimmedView(wanted))](const auto& phrase) {
        return searchForm(trimmedView(phrase)) == form;
    });
}

bool isNamed(const QuickCommandDefinition& command, const std::string& which)
{
    return hasPhrase(command, which) ||
           (which.size() >= kShortestId && asciiLowerCase(command.id.toString()).starts_with(asciiLowerCase(which)));
}

/// The list of an exported file, or of exported settings.
Result<Commands, std::string> commandsOf(const std::string& text)
{
    const auto json = parseJson(text);
    if (!json)
        return failure("That is no list of quick commands: " + toString(json.error()) + ".");
    const auto* list = &*json;
    if (json->is_object() && json->contains(PersistenceManager::userDefaultsKey))
        list = &(*json)[PersistenceManager::userDefaultsKey];
    auto commands = fromJson<Commands>(*list);
    if (!commands)
        return failure("That is no list of quick commands: " + toString(commands.error()) + ".");
    return std::move(*commands);
}

/// Of a list that comes from elsewhere.
std::optional<std::string> faultOf(const std::vector<QuickCommandDefinition>& list)
{
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (const auto why = whyUseless(list[i]))
            return fmt::format("Command {} of the file ({}): {}", i + 1, phrasesOf(list[i]), *why);
        const auto same = std::ranges::find(list, list[i].id, &QuickCommandDefinition::id);
        if (const auto first = static_cast<std::size_t>(same - list.begin()); first != i)
            return fmt::format("Commands {} and {} of the file have the same identifier. Give one of them another.",
                               first + 1, i + 1);
    }
    return std::nullopt;
}

} // namespace

CommandsCommand::CommandsCommand(const Services& services) : m_services(services)
{
    m_services.appStorage.leaveFailedWrites(); // `failedToStore` says what there is to say of them
}

int CommandsCommand::run(const CommandsOptions& options)
{
    m_services.quickCommands.load();
    return std::visit([this](const auto& chosen) { return run(chosen); }, options);
}

int CommandsCommand::run(const CommandsListOptions& options)
{
    const auto& commands = m_services.quickCommands.commands.get();
    if (options.json)
        return print(dumpJson(toJson(commands), kIndent) + '\n');
    if (commands.empty()) {
        m_services.terminal.line(kNone);
        return exitSuccess;
    }
    std::size_t widest = 0;
    for (const auto& command : commands)
        widest = std::max(widest, columnsOf(phrasesOf(command)));
    std::string lines;
    for (const auto& command : commands) {
        const auto phrases = phrasesOf(command);
        lines +=
            fmt::format("{}  {}{}  {}{}\n", shortId(command), phrases, std::string(widest - columnsOf(phrases), ' '),
                        description(command.action), command.isEnabled ? "" : " (disabled)");
    }
    hintThatTheyAreOff();
    return print(lines);
}

int CommandsCommand::run(const CommandsAddOptions& options)
{
    if (!options.action)
        return complain("Say what the command does: --url URL, --app ID or --shortcut NAME.", exitUsage);
    const QuickCommandDefinition command{Uuid::random(), options.phrases, *options.action};
    if (const auto why = whyUseless(command))
        return complain(*why, exitUsage);
    m_services.quickCommands.add(command);
    return stored(command);
}

int CommandsCommand::run(const CommandsEditOptions& options)
{
    auto command = find(options.which);
    if (!command)
        return complain(command.error(), exitFailure);
    if (options.phrases.empty() && !options.action)
        return complain("Say what is to be changed: other phrases, --url URL, --app ID or --shortcut NAME.", exitUsage);
    if (!options.phrases.empty())
        command->triggerPhrases = options.phrases;
    if (options.action)
        command->action = *options.action;
    if (const auto why = whyUseless(*command))
        return complain(*why, exitUsage);
    m_services.quickCommands.update(*command);
    return stored(*command);
}

int CommandsCommand::run(const CommandsRemoveOptions& options)
{
    const auto command = find(options.which);
    if (!command)
        return complain(command.error(), exitFailure);
    m_services.quickCommands.remove(command->id);
    if (const auto failed = failedToStore())
        return *failed;
    m_services.terminal.line("Removed: " + phrasesOf(*command));
    return exitSuccess;
}

int CommandsCommand::run(const CommandsEnableOptions& options)
{
    auto command = find(options.which);
    if (!command)
        return complain(command.error(), exitFailure);
    command->isEnabled = options.isEnabled;
    m_services.quickCommands.update(*command);
    return stored(*command);
}

int CommandsCommand::run(const CommandsImportOptions& options)
{
    const auto text = options.file == "-" ? readStandardInput() : readWholeFile(options.file);
    if (!text)
        return complain("The file cannot be read: " + toString(text.error()) + ".", exitFailure);
    const auto commands = commandsOf(*text);
    if (!commands)
        return complain(commands.error() + " Nothing was changed.", exitFailure);
    if (const auto fault = faultOf(*commands))
        return complain(*fault + " Nothing was changed.", exitFailure);
    m_services.quickCommands.merge(*commands);
    if (const auto failed = failedToStore())
        return *failed;
    m_services.terminal.line(fmt::format("Commands taken over: {}.", commands->size()));
    for (const auto& command : *commands) {
        if (command.isEnabled)
            warn(command);
    }
    hintThatTheyAreOff();
    return exitSuccess;
}

int CommandsCommand::run(const CommandsExportOptions& options)
{
    const auto text = dumpJson(toJson(m_services.quickCommands.commands.get()), kIndent) + '\n';
    if (options.file.empty() || options.file == "-")
        return print(text);
    std::error_code ignored;
    if (fs::exists(options.file, ignored) && !fs::is_regular_file(options.file, ignored))
        return complain(quoted(options.file.string()) + " is not a file that can be replaced.", exitUsage);
    if (fs::exists(options.file, ignored) && !options.force)
        return complain(quoted(options.file.string()) + " exists. Add --force to replace it.", exitUsage);
    if (const auto written = writeFileAtomically(options.file, text); !written)
        return complain("The commands could not be exported: " + toString(written.error()) + ".", exitFailure);
    return exitSuccess;
}

int CommandsCommand::run(const CommandsTestOptions& options)
{
    const auto& commands = m_services.quickCommands.commands.get();
    const auto trial = tryCommands(options.said, commands);
    hintThatTheyAreOff();
    if (commands.empty())
        m_services.terminal.line(kNone);
    const int printed = print(trial.text);
    return printed == exitSuccess && !trial.isMatch ? exitFailure : printed;
}

Result<QuickCommandDefinition, std::string> CommandsCommand::find(const std::string& which) const
{
    std::vector<QuickCommandDefinition> found;
    std::vector<std::string> phrases;
    for (const auto& command : m_services.quickCommands.commands.get()) {
        if (isNamed(command, which))
            found.push_back(command);
        phrases.insert(phrases.end(), command.triggerPhrases.begin(), command.triggerPhrases.end());
    }
    if (found.size() == 1)
        return found.front();
    if (found.empty()) {
        const auto near = nearestWord(which, phrases);
        return failure(fmt::format("There is no command with the phrase {}.{} \"vocalith commands list\" shows which "
                                   "there are.",
                                   quoted(which), near.empty() ? "" : " Did you mean " + quoted(near) + "?"));
    }
    auto text = fmt::format("{} is several commands. Name one by its identifier:", quoted(which));
    for (const auto& command : found)
        text += fmt::format("\n  {}  {}", shortId(command), description(command.action));
    return failure(std::move(text));
}

int CommandsCommand::stored(const QuickCommandDefinition& command)
{
    if (const auto failed = failedToStore())
        return *failed;
    m_services.terminal.line(fmt::format("{}: {}{}", phrasesOf(command), description(command.action),
                                         command.isEnabled ? "" : " (disabled)"));
    if (command.isEnabled)
        warn(command);
    hintThatTheyAreOff();
    return exitSuccess;
}

std::optional<int> CommandsCommand::failedToStore()
{
    const auto why = m_services.appStorage.whyNotStored();
    return why ? std::optional(complain("The commands could not be kept: " + *why + ".", exitFailure)) : std::nullopt;
}

/// Of what can be meant, but probably is not.
void CommandsCommand::warn(const QuickCommandDefinition& command)
{
    const auto notice = [this](const std::string& text) {
        m_services.terminal.line(m_services.terminal.coloured(Colour::yellow, "Notice: ") + text);
    };
    for (const auto& phrase : command.triggerPhrases) {
        if (comparedLength(phrase) <= static_cast<std::size_t>(CommandMatcher().maxDistance))
            notice(fmt::format("{} is so short that nearly everything you say will be taken for it. Choose a longer "
                               "phrase.",
                               quoted(phrase)));
        for (const auto& other : m_services.quickCommands.commands.get()) {
            if (other.id != command.id && other.isEnabled && hasPhrase(other, phrase))
                notice(fmt::format("{} is a phrase of another command too. The first in the list is carried out.",
                                   quoted(phrase)));
        }
    }
    const auto* shortcut = std::get_if<quick_command_action::RunShortcut>(&command.action);
    const auto isIt = [&](const std::string& name) {
        return name == shortcut->name || fs::path(name).stem() == fs::path(shortcut->name);
    };
    if (shortcut && std::ranges::none_of(m_services.automations.names(), isIt))
        notice(fmt::format("There is no shortcut {} yet. Put an executable file of that name into {}",
                           quoted(shortcut->name), m_services.automationsFolder.string()));
}

void CommandsCommand::hintThatTheyAreOff()
{
    if (!m_services.appStorage.enableQuickCommands.get())
        m_services.terminal.line(m_services.terminal.coloured(Colour::yellow, "Notice: ") +
                                 "Quick commands are off, so none is carried out. Turn them on with: vocalith settings "
                                 "set enableQuickCommands true");
}

int CommandsCommand::print(const std::string& text)
{
    if (writeToStandardOutput(text) == 0)
        return exitSuccess;
    return complain("Standard output could not be written.", exitFailure);
}

int CommandsCommand::complain(const std::string& text, int exitCode)
{
    m_services.terminal.line(m_services.terminal.coloured(Colour::red, "Error: ") + text);
    return exitCode;
}

} // namespace vocalith
