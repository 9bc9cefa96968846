#include "app/cli/remote/RemoteCommandLine.h"

#include <CLI/CLI.hpp>

namespace vocalith {

using Action = InstanceRequest::Action;

RemoteCommandLine::RemoteCommandLine(CLI::App& app) : m_app(app)
{
    m_run = m_app.add_subcommand("run", "Start Vocalith: shortcuts, overlay and insertion at the cursor");
    m_run->footer("\nIt stays in the tray until it is told to quit. A second start brings the first one forward.");
    addPrompt(*add(Action::start, "start", "Let the running Vocalith start a dictation"));
    add(Action::stop, "stop", "End the recording and insert its text");
    addPrompt(*add(Action::toggle, "toggle", "Start a dictation, or end the one that runs"));
    add(Action::cancel, "cancel", "Throw away the dictation that runs");
    add(Action::open, "open", "Hand a vocalith:// link to the running Vocalith")
        ->add_option("link", m_argument, "The link")
        ->required()
        ->type_name("URL");
}

CLI::App* RemoteCommandLine::add(Action action, const char* name, const char* description)
{
    auto* command = m_app.add_subcommand(name, description);
    m_commands.emplace_back(command, action);
    return command;
}

void RemoteCommandLine::addPrompt(CLI::App& command)
{
    command.add_option("-p,--prompt", m_argument, "The prompt that the dictation is for; without it the chosen one")
        ->type_name("NAME");
    command.footer("\nBind this to a key in your compositor's own settings where Vocalith cannot have a shortcut. "
                   "To press and hold,\nbind \"vocalith start\" to the press and \"vocalith stop\" to the release.");
}

std::optional<Command> RemoteCommandLine::options() const
{
    if (m_run->parsed())
        return RunOptions{};
    for (const auto& [command, action] : m_commands) {
        if (command->parsed())
            return RemoteOptions{{action, m_argument}};
    }
    return std::nullopt;
}

} // namespace vocalith
