#pragma once

#include "base/JsonFields.h"
#include "base/Uuid.h"

#include <string>

namespace vocalith {

/// When a word replacement applies. The names are the stored form.
enum class WordReplacementTiming { beforeAI, afterAI, both };

/// A word that is written in place of others.
struct WordReplacement {
    Uuid id;
    std::string original;    ///< spellings separated by commas, or a regular expression
    std::string replacement; ///< `\n`, `\t` and `\\` stand for a line break, a tab and a backslash
    bool isRegex = false;
    WordReplacementTiming timing = WordReplacementTiming::beforeAI;

    bool operator==(const WordReplacement&) const = default;
};

constexpr auto jsonFields(JsonType<WordReplacement>)
{
    return fields(field("id", &WordReplacement::id), field("original", &WordReplacement::original),
                  field("replacement", &WordReplacement::replacement), field("isRegex", &WordReplacement::isRegex),
                  field("timing", &WordReplacement::timing));
}

/// An entry that may lack `isRegex` and `timing`, which came later: it is plain and applies before the AI.
Result<WordReplacement, JsonError> readAnyWordReplacement(const Json& stored);

constexpr JsonOlderForm<WordReplacement> jsonOlderForm(JsonType<WordReplacement>)
{
    return {"original", "", &readAnyWordReplacement};
}

} // namespace vocalith
