#pragma once

#include "app/cli/process/ProcessOptions.h"

#include <optional>
#include <string>

namespace CLI {
class App;
class Option;
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
    CLI::Option* m_before;
    CLI::Option* m_after;
    ProcessOptions m_options;
    std::string m_beforeScript;
    std::string m_afterScript;
};

} // namespace vocalith
