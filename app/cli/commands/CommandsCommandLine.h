#pragma once

#include "app/cli/commands/CommandsOptions.h"

#include <memory>
#include <optional>

namespace CLI {
class App;
} // namespace CLI

namespace vocalith {

/// The part of the command line that begins with "commands".
class CommandsCommandLine {
public:
    explicit CommandsCommandLine(CLI::App& app);
    ~CommandsCommandLine();

    /// Nothing when the command is another one.
    std::optional<CommandsOptions> options() const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace vocalith
