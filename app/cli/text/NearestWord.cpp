#include "app/cli/text/NearestWord.h"

#include "base/Text.h"

#include <algorithm>
#include <numeric>

namespace vocalith {
namespace {

/// How many letters must be changed, added or removed (Levenshtein).
std::size_t distance(const std::string& from, const std::string& to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (const char letter : from) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (letter == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string nearestWord(const std::string& typed, const std::vector<std::string>& words)
{
    const auto wanted = asciiLowerCase(typed);
    std::string nearest;
    std::size_t best = std::max<std::size_t>(2, wanted.size() / 3) + 1;
    for (const auto& word : words) {
        const auto candidate = asciiLowerCase(word);
        std::size_t score = distance(wanted, candidate);
        // Half of a long name is what people remember of it.
        constexpr std::size_t kTelling = 4;
        if (wanted.size() >= kTelling && candidate.find(wanted) != std::string::npos)
            score = std::min<std::size_t>(score, 1);
        if (score < best && score < std::max(wanted.size(), candidate.size())) { // they share a letter
            best = score;
            nearest = word;
        }
    }
    return nearest;
}

} // namespace vocalith
