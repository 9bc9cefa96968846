#pragma once

#include "app/cli/completion/CompletionOptions.h"

#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace vocalith {

/// The command line's "completion SHELL". It is added last, so that it sees every command.
class CompletionCommandLine {
public:
    explicit CompletionCommandLine(CLI::App& app);

    /// Nothing when the command is another one.
    std::optional<CompletionOptions> options() const;

private:
    CLI::App& m_app;
    CLI::App* m_command;
    std::string m_shell;
};

} // namespace vocalith
