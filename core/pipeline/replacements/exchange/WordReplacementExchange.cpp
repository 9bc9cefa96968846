#include "core/pipeline/replacements/exchange/WordReplacementExchange.h"

#include "base/Json.h"
#include "base/Text.h"
#include "core/pipeline/replacements/Utf16.h"
#include "core/pipeline/replacements/WordReplacementRules.h"
#include "core/pipeline/replacements/exchange/WordReplacementTable.h"
#include "core/storage/settings/rules/SettingWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace vocalith {
namespace {

constexpr const char* kSettingsKey = "wordReplacements";
constexpr const char* kId = "id";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::vector<PlacedReplacement> readJsonList(std::string_view text, std::vector<ExchangeError>& errors)
{
    std::vector<PlacedReplacement> entries;
    auto json = parseJson(text);
    if (!json) {
        errors.push_back({fmt::format("This is no valid JSON: {}.", json.error().message)});
        return entries;
    }
    if (json->is_object() && json->contains(kSettingsKey))
        *json = Json((*json)[kSettingsKey]);
    if (!json->is_array()) {
        errors.push_back({fmt::format("This JSON holds no list of word replacements: it must be an array, or an object "
                                      "with the key \"{}\".",
                                      kSettingsKey)});
        return entries;
    }
    for (auto& stored : *json) {
        const auto which = fmt::format("Entry {}", entries.size() + 1);
        const bool hasId = stored.is_object() && stored.contains(kId);
        if (stored.is_object() && !hasId)
            stored[kId] = Uuid().toString();
        auto entry = fromJson<WordReplacement>(stored);
        if (!entry)
            errors.push_back({fmt::format("{}: {}.", which, toString(entry.error()))});
        entries.push_back({entry ? *std::move(entry) : WordReplacement(), {which}});
    }
    return entries;
}

/// Where the first byte is that is no text.
TextPosition positionOfFault(std::string_view bytes)
{
    TextPosition position{1, 1};
    bool isAfterLead = false;
    for (const char16_t unit : toUtf16(bytes)) {
        const bool isTrail = unit >= u'\xDC00' && unit <= u'\xDFFF';
        if (unit == u'\0' || (isTrail && !isAfterLead))
            return position;
        isAfterLead = unit >= u'\xD800' && unit <= u'\xDBFF';
        if (unit == u'\n')
            position = {position.line + 1, 1};
        else if (!isTrail)
            ++position.column;
    }
    return position;
}

void findUnusable(const std::vector<PlacedReplacement>& entries, std::vector<ExchangeError>& errors)
{
    for (const auto& [entry, place] : entries) {
        const auto why = whyUnusable(entry);
        if (!why)
            continue;
        const auto which = place.message.empty() ? std::string() : place.message + ": ";
        errors.push_back(
            {fmt::format("{}{} cannot be used, since {}.", which, inQuotes(entry.original), *why), place.position});
    }
}

} // namespace

std::string toString(const ExchangeError& error)
{
    const auto& [line, column] = error.position;
    return line == 0 ? error.message : fmt::format("Line {}, column {}: {}", line, column, error.message);
}

Result<std::vector<WordReplacement>, std::vector<ExchangeError>>
readReplacements(std::string_view text, std::optional<ReplacementFormat> format)
{
    if (text.starts_with(kByteOrderMark))
        text.remove_prefix(kByteOrderMark.size());
    std::vector<ExchangeError> errors;
    if (!isText(text))
        return failure(std::vector{ExchangeError{
            "This is not text in UTF-8. Save the list once more, as \"CSV UTF-8\" or with the encoding UTF-8.",
            positionOfFault(text)}});
    const auto begin = trimmedView(text).substr(0, 1);
    const bool isJson = format ? *format == ReplacementFormat::json : begin == "[" || begin == "{";
    const auto entries = isJson ? readJsonList(text, errors) : readReplacementTable(text, errors);
    if (errors.empty())
        findUnusable(entries, errors);
    if (!errors.empty())
        return failure(std::move(errors));
    std::vector<WordReplacement> list;
    for (const auto& placed : entries) {
        list.push_back(placed.entry);
        if (list.back().id.isNil())
            list.back().id = Uuid::random();
    }
    return list;
}

std::string writeReplacements(const std::vector<WordReplacement>& list, ReplacementFormat format)
{
    constexpr int kIndent = 2;
    return format == ReplacementFormat::json ? dumpJson(toJson(list), kIndent) + '\n' : writeReplacementTable(list);
}

bool isSameRule(const WordReplacement& left, const WordReplacement& right)
{
    return left.original == right.original && left.isRegex == right.isRegex && left.timing == right.timing;
}

MergedReplacements merged(std::vector<WordReplacement> list, const std::vector<WordReplacement>& others)
{
    MergedReplacements result{std::move(list)};
    std::set<Uuid> ids;
    for (const auto& entry : result.list)
        ids.insert(entry.id);
    for (const auto& other : others) {
        const auto same =
            std::ranges::find_if(result.list, [&](const auto& entry) { return isSameRule(entry, other); });
        if (same == result.list.end()) {
            result.list.push_back(other);
            if (!ids.insert(other.id).second)
                result.list.back().id = Uuid::random();
            ++result.added;
        } else if (same->replacement == other.replacement) {
            ++result.unchanged;
        } else {
            same->replacement = other.replacement;
            ++result.changed;
        }
    }
    return result;
}

} // namespace vocalith
