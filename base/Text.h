#pragma once

#include <string>
#include <string_view>

namespace vocalith {

/// Without the white space and line breaks around it, as Unicode defines them (no-break and ideographic spaces too).
std::string_view trimmedView(std::string_view utf8);

inline std::string trimmed(std::string_view utf8)
{
    return std::string(trimmedView(utf8));
}

/// The visible text: invalid UTF-8 becomes U+FFFD, control characters go, every line is trimmed, empty lines go, and
/// the others are joined with `lineBreak`.
std::string cleanText(std::string_view text, char lineBreak);

} // namespace vocalith
