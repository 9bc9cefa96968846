#pragma once

#include "app/cli/commands/CommandsOptions.h"
#include "base/Result.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vocalith {

class Automations;
class PersistentAppStorage;
class QuickCommandsManager;
class Terminal;

/// `vocalith commands`: shows and changes the quick commands, and tells what a text would do. A running program takes a
/// change at once.
class CommandsCommand {
public:
    struct Services {
        QuickCommandsManager& quickCommands;
        PersistentAppStorage& appStorage;
        const Automations& automations;
        const std::filesystem::path& automationsFolder; ///< for messages
        Terminal& terminal;
    };

    explicit CommandsCommand(const Services& services);

    /// Yields the exit code.
    int run(const CommandsOptions& options);

private:
    int run(const CommandsListOptions& options);
    int run(const CommandsAddOptions& options);
    int run(const CommandsEditOptions& options);
    int run(const CommandsRemoveOptions& options);
    int run(const CommandsEnableOptions& options);
    int run(const CommandsImportOptions& options);
    int run(const CommandsExportOptions& options);
    int run(const CommandsTestOptions& options);

    Result<QuickCommandDefinition, std::string> find(const std::string& which) const;
    /// Says what it now is, and what is to be known about it.
    int stored(const QuickCommandDefinition& command);
    std::optional<int> failedToStore();
    void warn(const QuickCommandDefinition& command);
    void hintThatTheyAreOff();
    int print(const std::string& text);
    int complain(const std::string& text, int exitCode);

    Services m_services;
};

} // namespace vocalith
