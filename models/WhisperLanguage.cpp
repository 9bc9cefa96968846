#include "models/WhisperLanguage.h"

#include "base/Text.h"

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

struct Entry {
    std::string_view code;
    std::string_view name;
};

/// In the order of the enumeration.
constexpr std::array<Entry, 101> kLanguages{{
    {"auto", "Automatic"},   {"af", "Afrikaans"},      {"am", "Amharic"},
    {"ar", "Arabic"},        {"as", "Assamese"},       {"az", "Azerbaijani"},
    {"ba", "Bashkir"},       {"be", "Belarusian"},     {"bg", "Bulgarian"},
    {"bn", "Bengali"},       {"bo", "Tibetan"},        {"br", "Breton"},
    {"bs", "Bosnian"},       {"ca", "Catalan"},        {"cs", "Czech"},
    {"cy", "Welsh"},         {"da", "Danish"},         {"de", "German"},
    {"el", "Greek"},         {"en", "English"},        {"es", "Spanish"},
    {"et", "Estonian"},      {"eu", "Basque"},         {"fa", "Persian"},
    {"fi", "Finnish"},       {"fo", "Faroese"},        {"fr", "French"},
    {"gl", "Galician"},      {"gu", "Gujarati"},       {"ha", "Hausa"},
    {"haw", "Hawaiian"},     {"he", "Hebrew"},         {"hi", "Hindi"},
    {"hr", "Croatian"},      {"ht", "Haitian Creole"}, {"hu", "Hungarian"},
    {"hy", "Armenian"},      {"id", "Indonesian"},     {"is", "Icelandic"},
    {"it", "Italian"},       {"ja", "Japanese"},       {"jw", "Javanese"},
    {"ka", "Georgian"},      {"kk", "Kazakh"},         {"km", "Khmer"},
    {"kn", "Kannada"},       {"ko", "Korean"},         {"la", "Latin"},
    {"lb", "Luxembourgish"}, {"ln", "Lingala"},        {"lo", "Lao"},
    {"lt", "Lithuanian"},    {"lv", "Latvian"},        {"mg", "Malagasy"},
    {"mi", "Maori"},         {"mk", "Macedonian"},     {"ml", "Malayalam"},
    {"mn", "Mongolian"},     {"mr", "Marathi"},        {"ms", "Malay"},
    {"mt", "Maltese"},       {"my", "Myanmar"},        {"ne", "Nepali"},
    {"nl", "Dutch"},         {"nn", "Nynorsk"},        {"no", "Norwegian"},
    {"oc", "Occitan"},       {"pa", "Punjabi"},        {"pl", "Polish"},
    {"ps", "Pashto"},        {"pt", "Portuguese"},     {"ro", "Romanian"},
    {"ru", "Russian"},       {"sa", "Sanskrit"},       {"sd", "Sindhi"},
    {"si", "Sinhala"},       {"sk", "Slovak"},         {"sl", "Slovenian"},
    {"sn", "Shona"},         {"so", "Somali"},         {"sq", "Albanian"},
    {"sr", "Serbian"},       {"su", "Sundanese"},      {"sv", "Swedish"},
    {"sw", "Swahili"},       {"ta", "Tamil"},          {"te", "Telugu"},
    {"tg", "Tajik"},         {"th", "Thai"},           {"tk", "Turkmen"},
    {"tl", "Tagalog"},       {"tr", "Turkish"},        {"tt", "Tatar"},
    {"uk", "Ukrainian"},     {"ur", "Urdu"},           {"uz", "Uzbek"},
    {"vi", "Vietnamese"},    {"yi", "Yiddish"},        {"yo", "Yoruba"},
    {"yue", "Cantonese"},    {"zh", "Chinese"},
}};

const Entry& entryOf(WhisperLanguage language)
{
    return kLanguages.at(static_cast<std::size_t>(language));
}

} // namespace

std::vector<WhisperLanguage> allWhisperLanguages()
{
    std::vector<WhisperLanguage> languages;
    for (std::size_t i = 0; i < kLanguages.size(); ++i)
        languages.push_back(static_cast<WhisperLanguage>(i));
    return languages;
}

std::string_view rawValue(WhisperLanguage language)
{
    return entryOf(language).code;
}

std::string_view displayName(WhisperLanguage language)
{
    return entryOf(language).name;
}

std::optional<WhisperLanguage> parseWhisperLanguage(std::string_view text)
{
    const auto found = std::find_if(kLanguages.begin(), kLanguages.end(), [text](const Entry& entry) {
        return sameIgnoringCase(entry.code, text) || sameIgnoringCase(entry.name, text);
    });
    if (found == kLanguages.end())
        return std::nullopt;
    return static_cast<WhisperLanguage>(found - kLanguages.begin());
}

} // namespace vocalith
