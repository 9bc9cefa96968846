#include "core/storage/settings/rules/SettingWords.h"

#include "base/Iso8601.h"
#include "base/Json.h"
#include "base/Text.h"

#include <QUtf8StringView>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

namespace vocalith {
std::optional<bool> boolFromWord(std::string_view word)
{
    const auto isAmong = [word](const auto& words) {
        return std::any_of(words.begin(), words.end(), [word](auto other) { return sameIgnoringCase(word, other); });
    };
    if (isAmong(std::array<std::string_view, 3>{"true", "yes", "on"}))
        return true;
    if (isAmong(std::array<std::string_view, 3>{"false", "no", "off"}))
        return false;
    return std::nullopt;
}

std::optional<Json> numberFromWord(std::string_view word)
{
    auto json = parseJson(word);
    return json && json->is_number() ? std::optional(std::move(*json)) : std::nullopt;
}

std::optional<Date> dateFromWord(const std::string& word)
{
    const auto date = dateFromIso8601(word);
    return date ? date : dateFromIso8601(word + "T00:00:00Z");
}

std::optional<Data> pathFromWord(std::string_view word)
{
    const bool isPath = word.starts_with('/') && word.find('\0') == std::string_view::npos;
    return isPath ? std::optional(Data(word.begin(), word.end())) : std::nullopt;
}

TranscriptionModelID modelFromWord(const std::string& word)
{
    for (const auto id : allPredefinedModelIDs()) {
        if (sameIgnoringCase(word, toString(TranscriptionModelID(id))))
            return id;
    }
    return word;
}

std::optional<Json> caseFromWord(const std::string& word, const std::vector<std::string>& names)
{
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&word](const std::string& name) { return sameIgnoringCase(word, name); });
    return found == names.end() ? std::nullopt : std::optional<Json>(*found);
}

std::string numberText(float number)
{
    return fmt::format("{}", number);
}

std::string inQuotes(std::string_view text)
{
    constexpr std::size_t kMost = 60;
    if (text.size() <= kMost)
        return '"' + cleanText(text, ' ') + '"';
    auto end = kMost;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    return '"' + cleanText(text.substr(0, end), ' ') + "…\"";
}

bool isText(std::string_view bytes)
{
    return bytes.find('\0') == std::string_view::npos &&
           QUtf8StringView(bytes.data(), static_cast<qsizetype>(bytes.size())).isValidUtf8();
}

std::string oneOf(const std::vector<std::string>& words)
{
    return fmt::format("one of: {}", fmt::join(words, ", "));
}

std::string asJson(std::string_view what)
{
    return fmt::format("{}, as JSON", what);
}

} // namespace vocalith
