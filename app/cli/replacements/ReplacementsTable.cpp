#include "app/cli/replacements/ReplacementsTable.h"

#include "app/cli/text/ColumnText.h"
#include "app/cli/text/NearestWord.h"
#include "base/Text.h"
#include "core/pipeline/replacements/WordReplacementRules.h"
#include "core/storage/settings/rules/SettingWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <string_view>

namespace vocalith {
namespace {

constexpr std::size_t kWidest = 40;

/// On one line, with line breaks and tabs as they are typed.
std::string shown(const std::string& text)
{
    std::string line;
    for (const char c : text) {
        if (c == '\n')
            line += "\\n";
        else if (c == '\t')
            line += "\\t";
        else
            line += c;
    }
    return text.empty() ? "\"\"" : fitted(cleanText(line, ' '), kWidest);
}

const char* shown(WordReplacementTiming timing)
{
    switch (timing) {
    case WordReplacementTiming::beforeAI: return "before AI";
    case WordReplacementTiming::afterAI: return "after AI";
    case WordReplacementTiming::both: return "both";
    }
    return "";
}

std::string padded(const std::string& text, std::size_t columns)
{
    return text + std::string(columns - std::min(columns, columnsOf(text)), ' ');
}

bool isMeant(const WordReplacement& entry, std::size_t number, const std::string& which)
{
    if (which == std::to_string(number) || Uuid::parse(which) == entry.id || entry.original == which)
        return true;
    if (entry.isRegex)
        return false;
    const auto isSame = [&](const auto& spelling) { return sameIgnoringCase(spelling, trimmedView(which)); };
    return isSame(trimmed(entry.original)) || std::ranges::any_of(spellings(entry.original), isSame);
}

} // namespace

std::string replacementsTable(const std::vector<WordReplacement>& list)
{
    std::vector<std::size_t> all(list.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    return replacementsTable(list, all);
}

std::string replacementsTable(const std::vector<WordReplacement>& list, const std::vector<std::size_t>& indices)
{
    std::size_t numberWidth = 0;
    std::size_t originalWidth = 0;
    std::size_t replacementWidth = 0;
    for (const auto index : indices) {
        numberWidth = std::max(numberWidth, std::to_string(index + 1).size());
        originalWidth = std::max(originalWidth, columnsOf(shown(list[index].original)));
        replacementWidth = std::max(replacementWidth, columnsOf(shown(list[index].replacement)));
    }
    std::string table;
    for (const auto index : indices) {
        const auto& entry = list[index];
        table += fmt::format(
            "{:>{}}  {}  →  {}  {}{}\n", index + 1, numberWidth, padded(shown(entry.original), originalWidth),
            padded(shown(entry.replacement), replacementWidth), shown(entry.timing), entry.isRegex ? ", regex" : "");
    }
    return table;
}

Result<std::size_t, std::string> findReplacement(const std::vector<WordReplacement>& list, const std::string& which)
{
    std::vector<std::size_t> found;
    std::vector<std::string> words;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (isMeant(list[i], i + 1, which))
            found.push_back(i);
        const auto own = list[i].isRegex ? std::vector{list[i].original} : spellings(list[i].original);
        words.insert(words.end(), own.begin(), own.end());
    }
    if (found.size() == 1)
        return found.front();
    if (found.empty()) {
        const auto near = nearestWord(which, words);
        return failure(
            fmt::format("There is no replacement {}.{} \"vocalith replacements list\" shows which there are.",
                        inQuotes(which), near.empty() ? "" : fmt::format(" Did you mean {}?", inQuotes(near))));
    }
    const bool isNumber = std::ranges::all_of(which, [](char c) { return c >= '0' && c <= '9'; });
    auto candidates = replacementsTable(list, found);
    if (isNumber) { // which may be the number of one and what another looks for
        for (const auto index : found)
            candidates += fmt::format("Identity of {}: {}\n", index + 1, list[index].id.toString());
    }
    candidates.pop_back();
    return failure(fmt::format("{} could be {} entries. Name the one you mean by its {}:\n{}", inQuotes(which),
                               found.size(), isNumber ? "identity" : "number", candidates));
}

} // namespace vocalith
