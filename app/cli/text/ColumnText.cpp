#include "app/cli/text/ColumnText.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// The blocks of UAX #11 that are wide as a whole, and those of the pictures.
constexpr std::array kWide = {
    Range{0x1100, 0x115F},   Range{0x2E80, 0x303E},   Range{0x3041, 0x33FF},   Range{0x3400, 0x4DBF},
    Range{0x4E00, 0x9FFF},   Range{0xA000, 0xA4CF},   Range{0xA960, 0xA97F},   Range{0xAC00, 0xD7A3},
    Range{0xF900, 0xFAFF},   Range{0xFE30, 0xFE6F},   Range{0xFF00, 0xFF60},   Range{0xFFE0, 0xFFE6},
    Range{0x1F300, 0x1F64F}, Range{0x1F680, 0x1F6FF}, Range{0x1F900, 0x1FAFF}, Range{0x20000, 0x3FFFD},
};

std::size_t width(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format: return 0;
    default: break;
    }
    const auto isWide = std::any_of(kWide.begin(), kWide.end(), [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
    return isWide ? 2 : 1;
}

/// How many of the characters fit.
qsizetype countFitting(const QList<uint>& characters, std::size_t columns)
{
    std::size_t taken = 0;
    for (qsizetype i = 0; i < characters.size(); ++i) {
        taken += width(characters[i]);
        if (taken > columns)
            return i;
    }
    return characters.size();
}

QList<uint> charactersOf(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())).toUcs4();
}

} // namespace

std::size_t columnsOf(std::string_view utf8)
{
    std::size_t columns = 0;
    for (const auto character : charactersOf(utf8))
        columns += width(character);
    return columns;
}

std::string fitted(std::string_view utf8, std::size_t columns)
{
    constexpr std::size_t kMostBytes = 16; // of what is one character to the reader, accents included
    const auto characters = charactersOf(utf8.substr(0, (columns + 1) * kMostBytes));
    if (countFitting(characters, columns) == characters.size() && utf8.size() <= (columns + 1) * kMostBytes)
        return std::string(utf8);
    if (columns == 0)
        return {};
    const auto kept = countFitting(characters, columns - 1);
    const auto* begin = reinterpret_cast<const char32_t*>(characters.data());
    auto text = QString::fromUcs4(begin, kept).toStdString();
    text.erase(text.find_last_not_of(' ') + 1);
    return text + "…";
}

} // namespace vocalith
