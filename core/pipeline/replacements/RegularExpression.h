#pragma once

#include "base/Result.h"
#include "base/StopToken.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace vocalith {

/// What is wrong with a pattern.
struct RegularExpressionError {
    std::string message;       ///< a clause for people: "a parenthesis has no partner"
    std::string code;          ///< ICU's name for it
    std::size_t line = 0;      ///< where it was noticed, counted from 1; 0 where that is not known
    std::size_t character = 0; ///< of the line, counted from 1
    bool operator==(const RegularExpressionError&) const = default;
};

/// "a parenthesis has no partner, at character 4"
std::string toString(const RegularExpressionError& error);

/// What matching may take; shared by all that is matched for one text.
struct MatchingEffort {
    StopToken stop;
    /// In ICU's steps of ten thousand saved states, about half a millisecond each: less than a second.
    int stepsLeft = 1500;
};

/// Why matches were not replaced.
enum class MatchingFailure {
    tooSlow, ///< the pattern tries too many ways
    tooDeep, ///< it remembers more than it has room for
    tooLong, ///< the text would grow, or has grown, past all measure
    stopped  ///< as it was asked
};

/// A regular expression of ICU that ignores case (https://unicode-org.github.io/icu/userguide/strings/regexp.html). Any
/// thread, one at a time.
class RegularExpression {
public:
    static Result<RegularExpression, RegularExpressionError> compile(std::u16string_view pattern);
    /// The pattern that matches the text and nothing else.
    static std::u16string escaped(std::u16string_view text);

    RegularExpression(RegularExpression&& other) noexcept;
    RegularExpression& operator=(RegularExpression&& other) noexcept;
    ~RegularExpression();

    /// How many groups it captures, beside the match itself.
    int groupCount() const;
    bool hasGroup(std::u16string_view name) const;

    struct Replaced {
        std::u16string text;
        std::size_t matches = 0;
    };
    /// Writes the template, in which ICU finds nothing to refuse, in place of every match. `text` is empty when there
    /// was none.
    Result<Replaced, MatchingFailure> replaceAll(std::u16string_view text, std::u16string_view replacement,
                                                 MatchingEffort& effort) const;

private:
    struct Compiled;
    explicit RegularExpression(std::unique_ptr<Compiled> compiled);

    std::unique_ptr<Compiled> m_compiled;
};

} // namespace vocalith
