#pragma once

#include "app/cli/process/ProcessOptions.h"

#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace vocalith {

/// The part of the command line that begins with "process".
class ProcessCommandLine {
public:
    explicit ProcessCommandLine(CLI::App& app);

    /// Nothing when the command is another one.
    std::optional<ProcessOptions> options() const;

private:
    CLI::App* m_command;
    ProcessOptions m_options;
    std::string m_beforeScript;
    std::string m_afterScript;
};

} // namespace vocalith
