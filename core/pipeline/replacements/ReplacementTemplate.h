#pragma once

#include <string>
#include <string_view>

/// What users write as a replacement, and what is made of it. Any thread.
namespace vocalith {

class RegularExpression;

/// With `\n`, `\t` and `\\` as a line break, a tab and a backslash. Other backslashes stay.
std::u16string unescaped(std::u16string_view replacement);

/// A template that puts `unescaped(replacement)` as it is in place of a match.
std::u16string literalTemplate(std::u16string_view replacement);

/// A template in which `$0` stands for the match, `$1` and `${name}` for the groups of the expression, and `\$` for a
/// dollar sign. A dollar sign before anything else, a group that does not exist for instance, is a dollar sign, and a
/// backslash before anything else but the letters of `unescaped` is a backslash.
std::u16string replacementTemplate(std::u16string_view replacement, const RegularExpression& expression);

} // namespace vocalith
