#include "app/cli/completion/CompletionCommandLine.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <map>

namespace vocalith {
namespace {

const std::map<std::string, Shell>& shells()
{
    static const std::map<std::string, Shell> kShells = {
        {"bash", Shell::bash}, {"fish", Shell::fish}, {"zsh", Shell::zsh}};
    return kShells;
}

void collect(CLI::App& command, const std::string& path, std::vector<CommandWords>& commands)
{
    CommandWords here{path, {}};
    const auto inner = command.get_subcommands([](const CLI::App*) { return true; });
    for (const auto* each : inner)
        here.words.push_back(each->get_name());
    for (const auto* option : command.get_options()) {
        for (const auto& name : option->get_lnames())
            here.words.push_back("--" + name);
    }
    if (path == "completion") {
        for (const auto& [name, shell] : shells())
            here.words.push_back(name);
    }
    commands.push_back(std::move(here));
    for (auto* each : inner)
        collect(*each, path.empty() ? each->get_name() : path + " " + each->get_name(), commands);
}

} // namespace

CompletionCommandLine::CompletionCommandLine(CLI::App& app)
    : m_app(app), m_command(app.add_subcommand("completion", "Print what has a shell complete this program's commands"))
{
    m_command->footer("\nbash:  source <(vocalith completion bash)     in ~/.bashrc\n"
                      "zsh:   vocalith completion zsh > _vocalith    in a folder of $fpath\n"
                      "fish:  vocalith completion fish > ~/.config/fish/completions/vocalith.fish");
    m_command->add_option("shell", m_shell, "bash, zsh or fish")
        ->required()
        ->check([](const std::string& shell) {
            return shells().contains(shell) ? "" : "There is none for \"" + shell + "\". Use bash, zsh or fish.";
        })
        ->type_name("SHELL");
}

std::optional<CompletionOptions> CompletionCommandLine::options() const
{
    if (!m_command->parsed())
        return std::nullopt;
    CompletionOptions options{shells().at(m_shell), {}};
    collect(m_app, "", options.commands);
    return options;
}

} // namespace vocalith
