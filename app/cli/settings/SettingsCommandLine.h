#pragma once

#include "app/cli/settings/SettingsOptions.h"

#include <functional>
#include <memory>
#include <optional>

namespace CLI {
class App;
} // namespace CLI

namespace vocalith {

/// The part of the command line that begins with "settings".
class SettingsCommandLine {
public:
    explicit SettingsCommandLine(CLI::App& app);
    SettingsCommandLine(const SettingsCommandLine&) = delete;
    SettingsCommandLine& operator=(const SettingsCommandLine&) = delete;
    ~SettingsCommandLine();

    /// Whether the command is this one, with or without something to do.
    bool parsed() const;
    /// What is to be done; nothing when the command does not say it.
    std::optional<SettingsOptions> options() const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace vocalith
