#include "core/storage/settings/rules/SettingRule.h"

#include "core/storage/settings/rules/LanguageTag.h"
#include "models/WhisperLanguage.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

template <class T>
SettingRule<T> range(std::optional<T> lowest, std::optional<T> highest, std::string description)
{
    SettingRule<T> rule;
    rule.kept = [lowest, highest](const T& value) {
        const bool fits = (!lowest || value >= *lowest) && (!highest || value <= *highest);
        return fits ? std::optional<T>(value) : std::nullopt;
    };
    rule.description = std::move(description);
    return rule;
}

} // namespace

SettingRule<int> between(int lowest, int highest)
{
    return range<int>(lowest, highest, fmt::format("a whole number from {} to {}", lowest, highest));
}

SettingRule<float> between(float lowest, float highest)
{
    return range<float>(lowest, highest, fmt::format("a number from {} to {}", lowest, highest));
}

SettingRule<int> atLeast(int lowest)
{
    return range<int>(lowest, std::nullopt, fmt::format("a whole number, {} or more", lowest));
}

SettingRule<std::string> whisperLanguageCode()
{
    SettingRule<std::string> rule;
    rule.kept = [](const std::string& text) -> std::optional<std::string> {
        const auto language = parseWhisperLanguage(text);
        return language ? std::optional(std::string(rawValue(*language))) : std::nullopt;
    };
    rule.description = "a spoken language such as en, de or french, or auto to detect it";
    for (const auto language : allWhisperLanguages())
        rule.words.emplace_back(rawValue(language));
    return rule;
}

SettingRule<std::string> locale()
{
    SettingRule<std::string> rule;
    rule.kept = &languageTag;
    rule.description = "a language tag such as en-US";
    return rule;
}

} // namespace vocalith
