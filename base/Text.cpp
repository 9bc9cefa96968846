#include "base/Text.h"

#include <QList>
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

/// Whether people take the letter for the same without this mark: European accents, Hebrew points, Arabic vowel signs.
/// The classes are those of UAX #44; 7, 8 and 9 (nukta, kana voicing, virama) make another letter or syllable.
bool isOptionalMark(char32_t character)
{
    const auto combining = QChar::combiningClass(character);
    return combining == 1 || (combining >= 10 && combining <= 36) || combining >= 200;
}

QString withoutOptionalMarks(const QString& text)
{
    QString kept;
    kept.reserve(text.size());
    for (const char32_t character : text.toUcs4()) {
        if (!isOptionalMark(character))
            kept += QStringView(QChar::fromUcs4(character));
    }
    return kept;
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

std::string asciiLowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), asciiLower);
    return lower;
}

bool sameIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return asciiLower(a) == asciiLower(b); });
}

std::string searchForm(std::string_view utf8)
{
    std::string text(utf8);
    std::erase(text, '\0');
    if (std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return asciiLowerCase(text);
    // By way of the capitals, where one letter may become two, as the German sharp s does.
    const auto folded = [](const QString& any) { return any.toUpper().toCaseFolded(); };
    const auto apart = folded(QString::fromStdString(text)).normalized(QString::NormalizationForm_KD);
    return folded(withoutOptionalMarks(apart).normalized(QString::NormalizationForm_KC)).toStdString();
}

} // namespace vocalith
