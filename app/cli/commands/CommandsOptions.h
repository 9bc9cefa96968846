#pragma once

#include "models/QuickCommand.h"

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

/// `vocalith commands list`
struct CommandsListOptions {
    bool json = false;
};

/// `vocalith commands add PHRASE… --url URL`
struct CommandsAddOptions {
    std::vector<std::string> phrases;
    std::optional<QuickCommandAction> action;
};

/// `vocalith commands edit WHICH [PHRASE…] [--url URL]`
struct CommandsEditOptions {
    std::string which;                        ///< one of its phrases, or the beginning of its identifier
    std::vector<std::string> phrases;         ///< in place of those that it has; empty leaves them
    std::optional<QuickCommandAction> action; ///< absent leaves it
};

/// `vocalith commands remove WHICH`
struct CommandsRemoveOptions {
    std::string which;
};

/// `vocalith commands enable WHICH` and `disable`
struct CommandsEnableOptions {
    std::string which;
    bool isEnabled = true;
};

/// `vocalith commands import FILE`
struct CommandsImportOptions {
    std::filesystem::path file; ///< "-" reads standard input
};

/// `vocalith commands export [FILE]`
struct CommandsExportOptions {
    std::filesystem::path file; ///< empty or "-" writes to standard output
    bool force = false;         ///< replace a file that exists
};

/// `vocalith commands test PHRASE`
struct CommandsTestOptions {
    std::string said;
};

using CommandsOptions =
    std::variant<CommandsListOptions, CommandsAddOptions, CommandsEditOptions, CommandsRemoveOptions,
                 CommandsEnableOptions, CommandsImportOptions, CommandsExportOptions, CommandsTestOptions>;

} // namespace vocalith
