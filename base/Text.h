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

/// The small letter of an ASCII capital; every other character as it is. For names and codes, which are not language.
constexpr char asciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
std::string asciiLowerCase(std::string_view text);
/// Whether the texts differ only in the case of ASCII letters.
bool sameIgnoringCase(std::string_view left, std::string_view right);

/// The form in which texts are compared when people search: what differs only in case, in accents and other marks that
/// are left out when typing in haste, or in compatible forms of one character (full width, ligatures) is the same.
/// Marks that make another letter of it, as in Hindi or Japanese, count. Invalid UTF-8 becomes U+FFFD, and NUL is left
/// out.
std::string searchForm(std::string_view utf8);

} // namespace vocalith
