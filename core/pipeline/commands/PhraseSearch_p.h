#pragma once

#include "core/pipeline/commands/ComparedText_p.h"

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace vocalith {

/// Where in a text a phrase was found.
struct FoundPhrase {
    std::size_t offset = 0; ///< of the window, in characters
    int distance = 0;
    bool operator==(const FoundPhrase&) const = default;
};

/// Looks for phrases in one text by the Levenshtein distance over characters. One thread at a time.
class PhraseSearch {
public:
    explicit PhraseSearch(ComparedText text);
    PhraseSearch(const PhraseSearch&) = delete;
    PhraseSearch& operator=(const PhraseSearch&) = delete;

    const ComparedText& text() const { return m_text; }

    /// Of the windows of the phrase's length, the first of those that are nearest to the phrase; nothing when none is
    /// nearer than or at `limit`, the phrase is empty or the text is shorter than the phrase.
    std::optional<FoundPhrase> nearestWindow(const ComparedText& phrase, int limit);

    /// The distance of the phrase from the whole text, if it is at most `limit`.
    std::optional<int> distanceFromAll(const ComparedText& phrase, int limit);

private:
    using Letters = std::vector<std::int32_t>; ///< a number for each character
    using Row = std::span<const std::int32_t>;
    using Bits = std::uint64_t;

    Letters lettersOf(const ComparedText& phrase) const;
    std::optional<int> distance(Row left, Row right, int limit);

    const ComparedText m_text;
    std::unordered_map<std::u16string_view, std::int32_t> m_numbers; ///< of the characters of the text
    Letters m_letters;
    std::vector<Bits> m_places; ///< by the number of a character: where in the phrase it stands
    std::vector<int> m_band;
};

} // namespace vocalith
