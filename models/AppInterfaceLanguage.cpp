#include "models/AppInterfaceLanguage.h"

namespace vocalith {
namespace {

struct Names {
    std::string_view displayName;
    std::string_view localeCode;
};

constexpr Names namesOf(AppInterfaceLanguage language)
{
    switch (language) {
    case AppInterfaceLanguage::systemDefault: return {"System", ""};
    case AppInterfaceLanguage::english: return {"English", "en"};
    case AppInterfaceLanguage::arabic: return {"Arabic", "ar"};
    case AppInterfaceLanguage::german: return {"German", "de"};
    case AppInterfaceLanguage::spanish: return {"Spanish", "es"};
    case AppInterfaceLanguage::french: return {"French", "fr"};
    case AppInterfaceLanguage::hindi: return {"Hindi", "hi"};
    case AppInterfaceLanguage::russian: return {"Russian", "ru"};
    case AppInterfaceLanguage::chineseSimplified: return {"Chinese (Simplified)", "zh-Hans"};
    case AppInterfaceLanguage::chineseTraditional: return {"Chinese (Traditional)", "zh-Hant"};
    case AppInterfaceLanguage::japanese: return {"Japanese", "ja"};
    }
    return {};
}

} // namespace

std::string_view displayName(AppInterfaceLanguage language)
{
    return namesOf(language).displayName;
}

std::optional<std::string_view> localeCode(AppInterfaceLanguage language)
{
    const auto code = namesOf(language).localeCode;
    return code.empty() ? std::nullopt : std::optional(code);
}

} // namespace vocalith
