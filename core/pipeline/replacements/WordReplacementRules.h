#pragma once

#include "base/Log.h"
#include "base/StopToken.h"
#include "core/pipeline/replacements/WordReplacementService.h"
#include "models/WordReplacement.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How word replacements are matched and what they write. Any thread.
namespace vocalith {

/// What a plain entry looks for: the parts between the commas, trimmed, without empty ones.
std::vector<std::string> spellings(std::string_view original);

/// Whether the spelling is looked for as a whole word: unless it has a character of a script that puts no spaces
/// between words (Thai, Hiragana, Katakana, Han, Hangul).
bool needsWordBoundaries(std::string_view spelling);

/// Why the entry could never do anything, as a clause for people; nothing when it could.
std::optional<std::string> whyUnusable(const WordReplacement& entry);

/// The spellings of a plain entry that are not even found where they stand alone, since a word boundary is between a
/// letter or digit and something else: "C++".
std::vector<std::string> spellingsNeverFound(const WordReplacement& entry);

struct AppliedReplacements {
    ReplacementResult result;
    /// The spellings and patterns that were given up while they were matched, with the reason as a clause for people.
    std::vector<ReplacementNote> givenUp;
};

/// Applies the entries one after the other. What is skipped is logged. Bytes that are no UTF-8 stay as they are. A stop
/// yields the text as it was.
AppliedReplacements applyReplacements(const std::vector<WordReplacement>& list, std::string text, StopToken stop,
                                      const Logger& logger);

} // namespace vocalith
