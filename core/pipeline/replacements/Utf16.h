#pragma once

#include <string>
#include <string_view>

/// Between UTF-8 and the UTF-16 in which ICU matches, without loss: a byte that is no UTF-8 becomes the lone surrogate
/// U+DC00 + byte, which no text contains, and comes back as that byte. Any thread.
namespace vocalith {

/// At most 2^31 - 1 bytes.
std::u16string toUtf16(std::string_view bytes);
std::string toUtf8(std::u16string_view text);

} // namespace vocalith
