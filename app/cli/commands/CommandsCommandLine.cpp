#include "app/cli/commands/CommandsCommandLine.h"

#include "base/Text.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <utility>
#include <vector>

namespace vocalith {
namespace {

namespace action = quick_command_action;

constexpr const char* kFooter = R"(
Examples:
  vocalith commands add "open mail" "show my mail" --url https://mail.example.org
  vocalith commands add "start the editor" --app org.gnome.TextEditor
  vocalith commands add "lights out" --shortcut lights
  vocalith commands test open male
  vocalith settings set enableQuickCommands true

Say one of the phrases in place of a dictation, alone or within a sentence; up to four characters may be misheard.)";

constexpr const char* kWhich = "One of its phrases, or the beginning of its identifier";

/// What was typed to say what the command does.
struct ActionWords {
    std::string url;
    std::string app;
    std::string shortcut;
    CLI::Option* hasUrl = nullptr;
    CLI::Option* hasApp = nullptr;
    CLI::Option* hasShortcut = nullptr;

    void add(CLI::App& command)
    {
        hasUrl = command.add_option("--url", url, "Opens this address, file or folder")->type_name("URL");
        hasApp = command.add_option("--app", app, "Starts the application with this desktop entry")
                     ->type_name("ID")
                     ->excludes(hasUrl);
        hasShortcut = command.add_option("--shortcut", shortcut, "Runs this executable of the shortcuts folder")
                          ->type_name("NAME")
                          ->excludes(hasUrl)
                          ->excludes(hasApp);
    }

    std::optional<QuickCommandAction> action() const
    {
        if (hasUrl->count() > 0)
            return action::OpenURL{trimmed(url)};
        if (hasApp->count() > 0)
            return action::LaunchApp{app};
        if (hasShortcut->count() > 0)
            return action::RunShortcut{shortcut};
        return std::nullopt;
    }
};

} // namespace

struct CommandsCommandLine::Parts {
    CLI::App* command = nullptr;
    std::vector<std::pair<CLI::App*, std::function<CommandsOptions()>>> actions;
    bool json = false;
    bool force = false;
    std::string which;
    std::string file;
    std::vector<std::string> words;
    ActionWords added;
    ActionWords edited;

    CLI::App* add(const char* name, const char* help, std::function<CommandsOptions()> options)
    {
        auto* const subcommand = command->add_subcommand(name, help);
        actions.emplace_back(subcommand, std::move(options));
        return subcommand;
    }
    CLI::App* addOfOne(const char* name, const char* help, std::function<CommandsOptions()> options)
    {
        auto* const subcommand = add(name, help, std::move(options));
        subcommand->add_option("which", which, kWhich)->required()->type_name("WHICH");
        return subcommand;
    }

    void addEditing()
    {
        auto* subcommand = add("add", "Add a command", [this] { return CommandsAddOptions{words, added.action()}; });
        subcommand->add_option("phrases", words, "What you will say")->required()->type_name("PHRASE");
        added.add(*subcommand);
        subcommand = addOfOne("edit", "Give a command other phrases, or something else to do", [this] {
            return CommandsEditOptions{which, words, edited.action()};
        });
        subcommand->add_option("phrases", words, "In place of the phrases that it has")->type_name("PHRASE");
        edited.add(*subcommand);
        addOfOne("remove", "Remove a command", [this] { return CommandsRemoveOptions{which}; });
        addOfOne("enable", "Use a command again", [this] { return CommandsEnableOptions{which, true}; });
        addOfOne("disable", "Keep a command without using it", [this] { return CommandsEnableOptions{which, false}; });
    }

    void addExchange()
    {
        auto* subcommand = add("export", "Write the commands as JSON", [this] {
            return CommandsExportOptions{file, force};
        });
        subcommand->add_option("file", file, "Where to; standard output when absent")->type_name("FILE");
        subcommand->add_flag("--force", force, "Replace a file that exists");
        subcommand = add("import", "Take over commands that were exported; others stay as they are",
                         [this] { return CommandsImportOptions{file}; });
        subcommand->add_option("file", file, "Where from; - reads standard input")->required()->type_name("FILE");
    }
};

CommandsCommandLine::CommandsCommandLine(CLI::App& app) : m_parts(std::make_unique<Parts>())
{
    auto& parts = *m_parts;
    parts.command = app.add_subcommand("commands", "The quick commands: phrases that do something when you say them");
    parts.command->require_subcommand(0, 1);
    parts.command->footer(kFooter);
    parts.add("list", "List the commands", [&parts] { return CommandsListOptions{parts.json}; })
        ->add_flag("--json", parts.json, "Print the list as JSON");
    parts.addEditing();
    parts.addExchange();
    parts
        .add("test", "Tell which command a text would carry out, and why",
             [&parts] { return CommandsTestOptions{CLI::detail::join(parts.words, " ")}; })
        ->add_option("phrase", parts.words, "What is said")
        ->required()
        ->type_name("PHRASE");
}

CommandsCommandLine::~CommandsCommandLine() = default;

std::optional<CommandsOptions> CommandsCommandLine::options() const
{
    if (!m_parts->command->parsed())
        return std::nullopt;
    for (const auto& [subcommand, options] : m_parts->actions) {
        if (subcommand->parsed())
            return options();
    }
    return CommandsListOptions{};
}

} // namespace vocalith
