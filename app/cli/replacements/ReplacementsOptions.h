#pragma once

#include "core/pipeline/replacements/exchange/WordReplacementExchange.h"
#include "models/WordReplacement.h"

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

/// `vocalith replacements list`
struct ReplacementsListOptions {
    bool json = false;
};

/// `vocalith replacements add ORIGINAL REPLACEMENT`
struct ReplacementsAddOptions {
    std::string original;
    std::string replacement;
    bool isRegex = false;
    WordReplacementTiming timing = WordReplacementTiming::beforeAI;
};

/// `vocalith replacements edit WHICH`; what is absent stays as it is.
struct ReplacementsEditOptions {
    std::string which; ///< a number, an identity, what it looks for or one of its spellings
    std::optional<std::string> original;
    std::optional<std::string> replacement;
    std::optional<bool> isRegex;
    std::optional<WordReplacementTiming> timing;
};

/// `vocalith replacements remove WHICH…`
struct ReplacementsRemoveOptions {
    std::vector<std::string> which;
};

/// `vocalith replacements import FILE`
struct ReplacementsImportOptions {
    std::filesystem::path file; ///< "-" reads standard input
    std::optional<ReplacementFormat> format;
    bool replace = false; ///< in place of the whole list
};

/// `vocalith replacements export [FILE]`
struct ReplacementsExportOptions {
    std::filesystem::path file; ///< empty or "-" writes to standard output
    std::optional<ReplacementFormat> format;
    bool force = false; ///< replace a file that exists
};

/// `vocalith replacements test [TEXT]`
struct ReplacementsTestOptions {
    std::optional<std::string> text;             ///< absent or "-" reads standard input
    std::optional<WordReplacementTiming> timing; ///< absent: before and then after, as in a dictation
};

using ReplacementsOptions =
    std::variant<ReplacementsListOptions, ReplacementsAddOptions, ReplacementsEditOptions, ReplacementsRemoveOptions,
                 ReplacementsImportOptions, ReplacementsExportOptions, ReplacementsTestOptions>;

} // namespace vocalith
