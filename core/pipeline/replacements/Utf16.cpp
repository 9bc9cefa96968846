#include "core/pipeline/replacements/Utf16.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <array>
#include <cstdint>

namespace vocalith {
namespace {

constexpr char16_t kFirstByte = 0xDC00;

} // namespace

std::u16string toUtf16(std::string_view bytes)
{
    std::u16string text;
    text.reserve(bytes.size());
    const auto length = static_cast<std::int32_t>(bytes.size());
    for (std::int32_t next = 0; next < length;) {
        const std::int32_t start = next;
        UChar32 character = 0;
        U8_NEXT(bytes, next, length, character);
        if (character < 0) {
            for (std::int32_t i = start; i < next; ++i)
                text +=
                    static_cast<char16_t>(kFirstByte + static_cast<unsigned char>(bytes[static_cast<std::size_t>(i)]));
        } else if (U_IS_BMP(character)) {
            text += static_cast<char16_t>(character);
        } else {
            text += U16_LEAD(character);
            text += U16_TRAIL(character);
        }
    }
    return text;
}

std::string toUtf8(std::u16string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t next = 0; next < text.size();) {
        UChar32 character = 0;
        U16_NEXT(text, next, text.size(), character);
        if (U_IS_SURROGATE(character)) {
            bytes += static_cast<char>(character & 0xFF);
            continue;
        }
        std::array<char, U8_MAX_LENGTH> encoded{};
        std::size_t length = 0;
        U8_APPEND_UNSAFE(encoded, length, character);
        bytes.append(encoded.data(), length);
    }
    return bytes;
}

} // namespace vocalith
