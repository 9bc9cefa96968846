#pragma once

#include <optional>
#include <string_view>

namespace vocalith {

/// The languages of the user interface. The names are the stored form.
enum class AppInterfaceLanguage {
    systemDefault,
    english,
    arabic,
    german,
    spanish,
    french,
    hindi,
    russian,
    chineseSimplified,
    chineseTraditional,
    japanese,
};

std::string_view displayName(AppInterfaceLanguage language);

/// "de", "zh-Hans"; nothing for the system's own language.
std::optional<std::string_view> localeCode(AppInterfaceLanguage language);

} // namespace vocalith
