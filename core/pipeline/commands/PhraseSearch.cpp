#include "core/pipeline/commands/PhraseSearch_p.h"

#include <algorithm>
#include <limits>

namespace vocalith {
namespace {

constexpr std::int32_t kStrange = -1; ///< a character that the text does not have
constexpr std::size_t kWordBits = 64;

/// Walks along a text and keeps the smallest distance of a phrase of at most 64 characters from what ends at the
/// current character, wherever that begins (G. Myers, "A fast bit-vector algorithm for approximate string matching",
/// JACM 46(3), 1999).
class EndDistance {
public:
    explicit EndDistance(std::size_t phraseLength)
        : m_top(std::uint64_t{1} << (phraseLength - 1)), m_distance(static_cast<int>(phraseLength))
    {}

    /// `places` are the bits of the places in the phrase at which the next character of the text stands.
    int next(std::uint64_t places)
    {
        const auto vertical = places | m_less;
        const auto horizontal = (((places & m_more) + m_more) ^ m_more) | places;
        auto more = m_less | ~(horizontal | m_more);
        auto less = m_more & horizontal;
        if (more & m_top)
            ++m_distance;
        else if (less & m_top)
            --m_distance;
        more <<= 1;
        less <<= 1;
        m_more = less | ~(vertical | more);
        m_less = more & vertical;
        return m_distance;
    }

private:
    const std::uint64_t m_top;
    std::uint64_t m_more = ~std::uint64_t{0}; ///< the rows of the column that are one above the row before
    std::uint64_t m_less = 0;                 ///< and those that are one below
    int m_distance;
};

} // namespace

PhraseSearch::PhraseSearch(ComparedText text) : m_text(std::move(text))
{
    m_letters.reserve(m_text.size());
    for (std::size_t i = 0; i < m_text.size(); ++i)
        m_letters.push_back(m_numbers.try_emplace(m_text.at(i), m_numbers.size()).first->second);
    m_places.resize(m_numbers.size());
}

PhraseSearch::Letters PhraseSearch::lettersOf(const ComparedText& phrase) const
{
    Letters letters;
    letters.reserve(phrase.size());
    for (std::size_t i = 0; i < phrase.size(); ++i) {
        const auto known = m_numbers.find(phrase.at(i));
        letters.push_back(known == m_numbers.end() ? kStrange : known->second);
    }
    return letters;
}

/// A window that is near enough ends where the phrase, or its first 64 characters, is near enough to something that
/// ends there. Only such windows are looked at.
std::optional<FoundPhrase> PhraseSearch::nearestWindow(const ComparedText& phrase, int limit)
{
    if (phrase.size() == 0 || phrase.size() > m_text.size() || limit < 0)
        return std::nullopt;
    const auto letters = lettersOf(phrase);
    const auto length = letters.size();
    const auto watched = std::min(length, kWordBits);
    const auto lastOffset = m_text.size() - length;
    for (std::size_t i = 0; i < watched; ++i) {
        if (letters[i] != kStrange)
            m_places[static_cast<std::size_t>(letters[i])] |= Bits{1} << i;
    }
    std::optional<FoundPhrase> best;
    EndDistance ends(watched);
    std::size_t offset = 0; // of the next window that has not been looked at
    for (std::size_t i = 0; i < m_letters.size() && limit >= 0; ++i) {
        if (ends.next(m_places[static_cast<std::size_t>(m_letters[i])]) > limit)
            continue;
        // Of a longer phrase only a part is watched, which may stand in the window by up to `limit` off its place.
        const auto slack = length > watched ? static_cast<std::size_t>(limit) : 0;
        const auto end = i + 1;
        offset = std::max(offset, end > watched + slack ? end - watched - slack : std::size_t{0});
        for (; offset + watched <= end + slack && offset <= lastOffset && limit >= 0; ++offset) {
            if (const auto found = distance(letters, Row(m_letters).subspan(offset, length), limit)) {
                best = FoundPhrase{offset, *found};
                limit = *found - 1;
            }
        }
    }
    for (std::size_t i = 0; i < watched; ++i) {
        if (letters[i] != kStrange)
            m_places[static_cast<std::size_t>(letters[i])] = 0;
    }
    return best;
}

std::optional<int> PhraseSearch::distanceFromAll(const ComparedText& phrase, int limit)
{
    return distance(lettersOf(phrase), m_letters, limit);
}

/// The Levenshtein distance, if it is at most `limit`: of the table, only the diagonals that such a path can touch.
std::optional<int> PhraseSearch::distance(Row left, Row right, int limit)
{
    const auto rows = static_cast<int>(left.size());
    const auto columns = static_cast<int>(right.size());
    const auto reach = std::min(limit, std::max(rows, columns));
    if (std::abs(rows - columns) > reach)
        return std::nullopt;
    constexpr int kFar = std::numeric_limits<int>::max() / 2;
    m_band.assign(2 * static_cast<std::size_t>(reach) + 3, kFar); // the diagonals, with one more on either side
    int* const diagonal = m_band.data() + reach + 1;
    for (int column = 0; column <= std::min(reach, columns); ++column)
        diagonal[column] = column;
    for (int row = 1; row <= rows; ++row) {
        int nearest = kFar;
        for (int shift = std::max(-reach, -row); shift <= std::min(reach, columns - row); ++shift) {
            const int column = row + shift;
            const int replaced = column == 0 ? kFar : diagonal[shift] + (left[row - 1] == right[column - 1] ? 0 : 1);
            // In place: on this diagonal and the next stands still the row above.
            diagonal[shift] = std::min({replaced, diagonal[shift + 1] + 1, diagonal[shift - 1] + 1});
            nearest = std::min(nearest, diagonal[shift]);
        }
        if (nearest > limit)
            return std::nullopt;
    }
    const int found = diagonal[columns - rows];
    return found <= limit ? std::optional(found) : std::nullopt;
}

} // namespace vocalith
