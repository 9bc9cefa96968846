#pragma once

#include "app/cli/Options.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace vocalith {

/// The command line's commands that start the program, and that ask the running one for something.
class RemoteCommandLine {
public:
    explicit RemoteCommandLine(CLI::App& app);

    /// Nothing when the command is another one.
    std::optional<Command> options() const;

private:
    CLI::App* add(InstanceRequest::Action action, const char* name, const char* description);
    void addPrompt(CLI::App& command);

    CLI::App& m_app;
    CLI::App* m_run = nullptr;
    std::vector<std::pair<CLI::App*, InstanceRequest::Action>> m_commands;
    std::string m_argument;
};

} // namespace vocalith
