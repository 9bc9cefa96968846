#pragma once

#include <string>
#include <vector>

namespace vocalith {

enum class Shell { bash, zsh, fish };

/// A command and what can follow it.
struct CommandWords {
    std::string path;               ///< "settings get"; empty for the program itself
    std::vector<std::string> words; ///< further commands, and the long options
};

/// `vocalith completion SHELL`
struct CompletionOptions {
    Shell shell = Shell::bash;
    std::vector<CommandWords> commands; ///< every command, filled in where the command line is known
};

} // namespace vocalith
