#pragma once

#include "base/Result.h"
#include "core/pipeline/replacements/exchange/CsvRecords.h"
#include "models/WordReplacement.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Lists of word replacements that come from elsewhere and go there. Any thread.
namespace vocalith {

enum class ReplacementFormat {
    csv, ///< RFC 4180 in UTF-8: `original,replacement,isRegex,timing`, with that header line; without identities
    json ///< as the settings keep the list
};

/// What keeps a list from being taken over.
struct ExchangeError {
    std::string message; ///< a sentence for people
    TextPosition position{};
    bool operator==(const ExchangeError&) const = default;
};

/// "Line 3, column 7: The timing \"never\" is not …"
std::string toString(const ExchangeError& error);

/// Reads a list; without a format what the text begins with decides. Tables may have their columns in any order when a
/// header line names them, lack all but the first two, and be separated by semicolons or tabs; JSON may be a whole
/// settings file, and its entries may lack what has a default. Entries without an identity get one. The errors are all
/// that are found, at least one.
Result<std::vector<WordReplacement>, std::vector<ExchangeError>>
readReplacements(std::string_view text, std::optional<ReplacementFormat> format = std::nullopt);

std::string writeReplacements(const std::vector<WordReplacement>& list, ReplacementFormat format);

/// Whether they look for the same in the same way at the same time. A list needs no two such entries.
bool isSameRule(const WordReplacement& left, const WordReplacement& right);

struct MergedReplacements {
    std::vector<WordReplacement> list;
    std::size_t added = 0;
    std::size_t changed = 0;
    std::size_t unchanged = 0; ///< of those that were to be merged
};

/// Adds entries to a list. One that is there already by `isSameRule` takes the new replacement and keeps its place and
/// identity.
MergedReplacements merged(std::vector<WordReplacement> list, const std::vector<WordReplacement>& others);

} // namespace vocalith
