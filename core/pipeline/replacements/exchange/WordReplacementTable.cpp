#include "core/pipeline/replacements/exchange/WordReplacementTable.h"

#include "base/CaseName.h"
#include "base/Text.h"
#include "core/storage/settings/rules/SettingWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

constexpr std::array<std::string_view, 4> kColumns = {"original", "replacement", "isRegex", "timing"};
enum Column : std::size_t { original, replacement, isRegex, timing };

/// Where each of the columns is in a record.
using Layout = std::array<std::optional<std::size_t>, kColumns.size()>;

/// Spreadsheets write the one that the user's language has. What the first line has outside quotes tells, and commas
/// last: they are between the spellings of one entry as well.
char separatorOf(std::string_view text)
{
    bool isQuoted = false;
    bool hasSemicolon = false;
    for (const char c : text) {
        isQuoted = isQuoted != (c == '"');
        if (isQuoted)
            continue;
        if (c == '\n' || c == '\r')
            break;
        if (c == '\t')
            return '\t';
        hasSemicolon = hasSemicolon || c == ';';
    }
    return hasSemicolon ? ';' : ',';
}

/// Of the header line, if the record is one.
std::optional<Layout> headerLayout(const CsvRecord& record)
{
    Layout layout;
    for (std::size_t i = 0; i < record.size(); ++i) {
        for (std::size_t column = 0; column < kColumns.size(); ++column) {
            if (sameIgnoringCase(trimmedView(record[i].text), kColumns[column]))
                layout[column] = i;
        }
    }
    return layout[original] ? std::optional(layout) : std::nullopt;
}

const CsvField* fieldOf(const CsvRecord& record, std::optional<std::size_t> index)
{
    return index && *index < record.size() ? &record[*index] : nullptr;
}

std::optional<WordReplacementTiming> timingNamed(std::string_view word)
{
    for (const auto timing : kAllCases<WordReplacementTiming>) {
        if (sameIgnoringCase(word, caseName(timing)))
            return timing;
    }
    return std::nullopt;
}

/// The entry of one record; what is wrong with it is added to `errors`.
WordReplacement entryOf(const CsvRecord& record, const Layout& layout, std::vector<ExchangeError>& errors)
{
    WordReplacement entry;
    if (const auto* const field = fieldOf(record, layout[original]))
        entry.original = field->text;
    if (const auto* const field = fieldOf(record, layout[replacement]))
        entry.replacement = field->text;
    else
        errors.push_back({"The replacement is missing. An empty one is written as \"\".", record.back().position});
    const auto* const regex = fieldOf(record, layout[isRegex]);
    const auto regexWord = regex ? trimmedView(regex->text) : std::string_view();
    const auto regexValue = regexWord == "1" || regexWord == "0" ? regexWord == "1" : boolFromWord(regexWord);
    entry.isRegex = regexValue.value_or(false);
    if (!regexValue && !regexWord.empty())
        errors.push_back(
            {fmt::format("isRegex is {}, but must be true or false.", inQuotes(regexWord)), regex->position});
    const auto* const when = fieldOf(record, layout[timing]);
    const auto timingWord = when ? trimmedView(when->text) : std::string_view();
    const auto timingValue = timingNamed(timingWord);
    entry.timing = timingValue.value_or(WordReplacementTiming::beforeAI);
    if (!timingValue && !timingWord.empty())
        errors.push_back({fmt::format("timing is {}, but must be beforeAI, afterAI or both.", inQuotes(timingWord)),
                          when->position});
    return entry;
}

} // namespace

std::vector<PlacedReplacement> readReplacementTable(std::string_view utf8, std::vector<ExchangeError>& errors)
{
    std::vector<PlacedReplacement> entries;
    const auto records = readCsv(utf8, separatorOf(utf8));
    if (!records) {
        errors.push_back(
            {fmt::format("This is no valid table: {}.", records.error().message), records.error().position});
        return entries;
    }
    if (records->empty())
        return entries;
    const auto header = headerLayout(records->front());
    const Layout layout = header.value_or(Layout{original, replacement, isRegex, timing});
    if (!layout[replacement]) {
        errors.push_back({"The header line names no column \"replacement\".", records->front().front().position});
        return entries;
    }
    for (std::size_t i = header ? 1 : 0; i < records->size(); ++i) {
        const auto& record = (*records)[i];
        const auto* const first = fieldOf(record, layout[original]);
        entries.push_back({entryOf(record, layout, errors), {{}, (first ? *first : record.front()).position}});
    }
    return entries;
}

std::string writeReplacementTable(const std::vector<WordReplacement>& list)
{
    auto table =
        fmt::format("{},{},{},{}\r\n", kColumns[original], kColumns[replacement], kColumns[isRegex], kColumns[timing]);
    for (const auto& entry : list)
        table += fmt::format("{},{},{},{}\r\n", quotedCsvField(entry.original), quotedCsvField(entry.replacement),
                             entry.isRegex, caseName(entry.timing));
    return table;
}

} // namespace vocalith
