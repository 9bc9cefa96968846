#include "core/storage/settings/rules/LanguageTag.h"

#include "base/Text.h"

#include <algorithm>
#include <string_view>

namespace vocalith {
namespace {

constexpr const char* kDefault = "en-US";

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isPart(std::string_view part, bool isLanguage)
{
    constexpr std::size_t kLongest = 8;
    const auto isAllowed = [isLanguage](char c) { return isLetter(c) || (!isLanguage && isDigit(c)); };
    return part.size() >= (isLanguage ? 2U : 1U) && part.size() <= kLongest &&
           std::all_of(part.begin(), part.end(), isAllowed);
}

/// Languages in small letters, scripts like "Hans", regions like "US".
std::string inUsualLetters(std::string part, bool isLanguage)
{
    std::transform(part.begin(), part.end(), part.begin(), asciiLower);
    const bool isRegion = !isLanguage && part.size() == 2;
    const bool isScript = !isLanguage && part.size() == 4 && isLetter(part.front());
    if (isRegion)
        std::transform(part.begin(), part.end(), part.begin(), upper);
    else if (isScript)
        part.front() = upper(part.front());
    return part;
}

} // namespace

std::optional<std::string> languageTag(const std::string& text)
{
    std::string tag;
    for (std::size_t begin = 0; begin <= text.size();) {
        const auto end = std::min(text.find_first_of("-_", begin), text.size());
        const auto part = text.substr(begin, end - begin);
        const bool isLanguage = begin == 0;
        if (!isPart(part, isLanguage))
            return std::nullopt;
        tag += (isLanguage ? "" : "-") + inUsualLetters(part, isLanguage);
        begin = end + 1;
    }
    return tag;
}

std::string environmentLocale(const EnvironmentLookup& environment, const std::vector<std::string>& languages)
{
    for (const auto* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const auto value = environment(variable);
        if (!value || value->empty())
            continue;
        // "en_GB.UTF-8@euro"; "C" and "POSIX" are no languages.
        const auto tag = languageTag(value->substr(0, value->find_first_of(".@")));
        const bool isKnown =
            tag && std::find(languages.begin(), languages.end(), tag->substr(0, tag->find('-'))) != languages.end();
        return isKnown ? *tag : kDefault;
    }
    return kDefault;
}

} // namespace vocalith
