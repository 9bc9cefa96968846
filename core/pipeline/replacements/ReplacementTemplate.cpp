#include "core/pipeline/replacements/ReplacementTemplate.h"

#include "core/pipeline/replacements/RegularExpression.h"

namespace vocalith {
namespace {

/// The character that a backslash and this one stand for, or 0.
char16_t escapedBy(char16_t letter)
{
    switch (letter) {
    case u'n': return u'\n';
    case u't': return u'\t';
    case u'\\': return u'\\';
    default: return 0;
    }
}

bool isDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

/// Whether what follows a dollar sign names a group of the expression.
bool namesGroup(std::u16string_view rest, const RegularExpression& expression)
{
    if (rest.empty())
        return false;
    if (isDigit(rest.front()))
        return rest.front() - u'0' <= expression.groupCount();
    const auto end = rest.find(u'}');
    return rest.front() == u'{' && end != std::u16string_view::npos && expression.hasGroup(rest.substr(1, end - 1));
}

void appendLiterally(std::u16string& written, char16_t unit)
{
    if (unit == u'\\' || unit == u'$')
        written += u'\\';
    written += unit;
}

} // namespace

std::u16string unescaped(std::u16string_view replacement)
{
    std::u16string text;
    for (std::size_t i = 0; i < replacement.size(); ++i) {
        const bool isEscape = replacement[i] == u'\\' && i + 1 < replacement.size();
        const char16_t meant = isEscape ? escapedBy(replacement[i + 1]) : u'\0';
        text += meant != 0 ? meant : replacement[i];
        i += meant != 0 ? 1 : 0;
    }
    return text;
}

std::u16string literalTemplate(std::u16string_view replacement)
{
    std::u16string written;
    for (const char16_t unit : unescaped(replacement))
        appendLiterally(written, unit);
    return written;
}

std::u16string replacementTemplate(std::u16string_view replacement, const RegularExpression& expression)
{
    std::u16string written;
    for (std::size_t i = 0; i < replacement.size(); ++i) {
        const char16_t unit = replacement[i];
        const char16_t next = i + 1 < replacement.size() ? replacement[i + 1] : u'\0';
        if (unit == u'\\' && (next == u'$' || escapedBy(next) != 0)) {
            appendLiterally(written, next == u'$' ? next : escapedBy(next));
            ++i;
        } else if (unit == u'$' && namesGroup(replacement.substr(i + 1), expression)) {
            written += unit;
        } else {
            appendLiterally(written, unit);
        }
    }
    return written;
}

} // namespace vocalith
