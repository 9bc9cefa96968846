#include "core/pipeline/commands/ComparedText_p.h"

#include "base/Text.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <numeric>

namespace vocalith {
namespace {

/// Where every byte is a character: in ASCII, but for the one line break that has two.
bool isOneByteEach(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\r'; });
}

/// The offsets behind each of `count` characters of one unit.
std::vector<std::size_t> unitEnds(std::size_t count)
{
    std::vector<std::size_t> ends(count);
    std::iota(ends.begin(), ends.end(), std::size_t{1});
    return ends;
}

bool isAsciiPunctuation(char c)
{
    return u_ispunct(static_cast<UChar32>(static_cast<unsigned char>(c)));
}

std::string_view withoutPunctuation(std::string_view ascii)
{
    while (!ascii.empty() && isAsciiPunctuation(ascii.front()))
        ascii.remove_prefix(1);
    while (!ascii.empty() && isAsciiPunctuation(ascii.back()))
        ascii.remove_suffix(1);
    return ascii;
}

void removePunctuation(icu::UnicodeString& text)
{
    std::int32_t start = 0;
    while (start < text.length() && u_ispunct(text.char32At(start)))
        start = text.moveIndex32(start, 1);
    std::int32_t end = text.length();
    while (end > start && u_ispunct(text.char32At(text.moveIndex32(end, -1))))
        end = text.moveIndex32(end, -1);
    text.retainBetween(start, end);
}

icu::UnicodeString composed(const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    const auto* composition = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status))
        return text;
    auto result = composition->normalize(text, status);
    return U_SUCCESS(status) ? result : text;
}

} // namespace

std::u16string_view ComparedText::at(std::size_t index) const
{
    return std::u16string_view(m_text).substr(start(index), m_ends[index] - start(index));
}

std::string ComparedText::part(std::size_t first, std::size_t count) const
{
    if (count == 0)
        return {};
    const auto from = start(first);
    const auto length = m_ends[first + count - 1] - from;
    std::string utf8;
    return icu::UnicodeString(m_text.data() + from, static_cast<std::int32_t>(length)).toUTF8String(utf8);
}

ComparedText TextComparison::transcript(std::string_view utf8)
{
    return compared(trimmedView(utf8), true);
}

ComparedText TextComparison::phrase(std::string_view utf8)
{
    return compared(trimmedView(utf8), false);
}

ComparedText TextComparison::compared(std::string_view utf8, bool trimsPunctuation)
{
    if (isOneByteEach(utf8)) {
        const auto lower = asciiLowerCase(trimsPunctuation ? withoutPunctuation(utf8) : utf8);
        return {std::u16string(lower.begin(), lower.end()), unitEnds(lower.size())};
    }
    auto text = icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())});
    if (trimsPunctuation)
        removePunctuation(text);
    text = composed(text.toLower(icu::Locale::getRoot()));
    std::u16string units(text.getBuffer(), static_cast<std::size_t>(text.length()));
    return {std::move(units), characterEnds(text)};
}

std::vector<std::size_t> TextComparison::characterEnds(const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    if (!m_characters)
        m_characters.reset(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (!m_characters || U_FAILURE(status))
        return unitEnds(static_cast<std::size_t>(text.length()));
    m_characters->setText(text);
    std::vector<std::size_t> ends;
    while (m_characters->next() != icu::BreakIterator::DONE)
        ends.push_back(static_cast<std::size_t>(m_characters->current()));
    return ends;
}

} // namespace vocalith
