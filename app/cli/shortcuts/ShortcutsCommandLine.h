#pragma once

#include "app/cli/shortcuts/ShortcutsOptions.h"

#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace vocalith {

/// The part of the command line that begins with "shortcuts".
class ShortcutsCommandLine {
public:
    explicit ShortcutsCommandLine(CLI::App& app);

    /// Nothing when the command is another one.
    std::optional<ShortcutsOptions> options() const;

private:
    CLI::App* m_command;
    CLI::App* m_set;
    CLI::App* m_clear;
    std::string m_which;
    std::string m_keys;
    std::string m_mode;
};

} // namespace vocalith
