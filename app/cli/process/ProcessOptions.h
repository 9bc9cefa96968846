#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace vocalith {

/// `vocalith process`: a text from standard input in place of a dictation.
struct ProcessOptions {
    std::string prompt;                                ///< its name; empty for the main one
    bool journal = false;                              ///< as a dictation for the journal, which has no prompt
    std::optional<std::filesystem::path> beforeScript; ///< in place of the prompt's own
    std::optional<std::filesystem::path> afterScript;
    bool explain = false; ///< say what each step did
    bool json = false;
    bool history = false; ///< keep it as a dictation is kept
};

} // namespace vocalith
