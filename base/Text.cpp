#include "base/Text.h"

#include <QString>

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

using namespace std::string_view_literals;

// The characters with the Unicode property White_Space, and the byte order mark, which reads as one.
constexpr std::array kSpaces = {" "sv,
                                "\t"sv,
                                "\n"sv,
                                "\v"sv,
                                "\f"sv,
                                "\r"sv,
                                "\xC2\x85"sv,
                                "\xC2\xA0"sv,
                                "\xE1\x9A\x80"sv,
                                "\xE2\x80\x80"sv,
                                "\xE2\x80\x81"sv,
                                "\xE2\x80\x82"sv,
                                "\xE2\x80\x83"sv,
                                "\xE2\x80\x84"sv,
                                "\xE2\x80\x85"sv,
                                "\xE2\x80\x86"sv,
                                "\xE2\x80\x87"sv,
                                "\xE2\x80\x88"sv,
                                "\xE2\x80\x89"sv,
                                "\xE2\x80\x8A"sv,
                                "\xE2\x80\xA8"sv,
                                "\xE2\x80\xA9"sv,
                                "\xE2\x80\xAF"sv,
                                "\xE2\x81\x9F"sv,
                                "\xE3\x80\x80"sv,
                                "\xEF\xBB\xBF"sv};

std::size_t spaceAtStart(std::string_view text)
{
    const auto found =
        std::find_if(kSpaces.begin(), kSpaces.end(), [&](auto space) { return text.starts_with(space); });
    return found == kSpaces.end() ? 0 : found->size();
}

std::size_t spaceAtEnd(std::string_view text)
{
    const auto found = std::find_if(kSpaces.begin(), kSpaces.end(), [&](auto space) { return text.ends_with(space); });
    return found == kSpaces.end() ? 0 : found->size();
}

bool isLineBreak(char16_t unit)
{
    return (unit >= u'\n' && unit <= u'\r') || unit == u'\x85' || unit == u'\x2028' || unit == u'\x2029';
}

/// Neither shown by any reader nor, for the most part, allowed in XML.
bool isControl(char16_t unit)
{
    return (unit < u' ' && unit != u'\t') || (unit >= u'\x7F' && unit <= u'\x9F') || unit >= u'\xFFFE';
}

} // namespace

std::string_view trimmedView(std::string_view utf8)
{
    while (const auto size = spaceAtStart(utf8))
        utf8.remove_prefix(size);
    while (const auto size = spaceAtEnd(utf8))
        utf8.remove_suffix(size);
    return utf8;
}

std::string cleanText(std::string_view text, char lineBreak)
{
    const auto source = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    QString clean;
    clean.reserve(source.size());
    bool lineIsEmpty = true;
    QString spaces; // held back: they count only between two visible characters of a line
    for (const QChar unit : source) {
        if (isLineBreak(unit.unicode())) {
            lineIsEmpty = true;
            spaces.clear();
        } else if (unit == u' ' || unit == u'\t') {
            spaces += unit;
        } else if (!isControl(unit.unicode())) {
            if (!lineIsEmpty)
                clean += spaces;
            else if (!clean.isEmpty())
                clean += QLatin1Char(lineBreak);
            clean += unit;
            lineIsEmpty = false;
            spaces.clear();
        }
    }
    return clean.toStdString();
}

} // namespace vocalith
