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

/// The form in which texts are compared when people search: what differs only in case, in accents and other marks that
/// are left out when typing in haste, or in compatible forms of one character (full width, ligatures) is the same.
/// Marks that make another letter of it, as in Hindi or Japanese, count. Invalid UTF-8 becomes U+FFFD, and NUL is left
/// out.
std::string searchForm(std::string_view utf8);

} // namespace vocalith
