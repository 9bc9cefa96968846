#pragma once

#include "app/cli/scripts/ScriptsOptions.h"

#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace vocalith {

/// The part of the command line that begins with "scripts".
class ScriptsCommandLine {
public:
    explicit ScriptsCommandLine(CLI::App& app);

    /// Nothing when the command is another one.
    std::optional<ScriptsOptions> options() const;

private:
    CLI::App* m_command;
    CLI::App* m_show;
    std::string m_name;
};

} // namespace vocalith
