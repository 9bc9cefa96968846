#include "core/pipeline/replacements/RegularExpression.h"

#include <fmt/format.h>
#include <unicode/regex.h>

#include <algorithm>
#include <array>
#include <utility>

namespace vocalith {
namespace {

/// In steps. One pattern must not use up what the others of a list need.
constexpr int kMostSteps = 500;
/// In UTF-16 units: far above the longest transcript, far below what the memory holds.
constexpr std::size_t kLongestText = 16'000'000;

constexpr std::array<std::pair<UErrorCode, const char*>, 20> kMessages = {{
    {U_REGEX_RULE_SYNTAX, "a sign such as *, + or ? stands where it has nothing to refer to, or (? begins something "
                          "unknown"},
    {U_REGEX_BAD_ESCAPE_SEQUENCE, "a backslash is followed by something that has no meaning there"},
    {U_REGEX_PROPERTY_SYNTAX, "the name of a kind of characters is not known"},
    {U_REGEX_UNIMPLEMENTED, "it uses something that is not supported"},
    {U_REGEX_MISMATCHED_PAREN, "a parenthesis has no partner"},
    {U_REGEX_NUMBER_TOO_BIG, "a number is too big"},
    {U_REGEX_BAD_INTERVAL, "the braces must hold one or two numbers, as in {2} or {2,5}"},
    {U_REGEX_MAX_LT_MIN, "the second number in the braces is smaller than the first"},
    {U_REGEX_INVALID_BACK_REF, "it refers back to a group that does not exist"},
    {U_REGEX_INVALID_FLAG, "the letter after (? is no option"},
    {U_REGEX_LOOK_BEHIND_LIMIT, "what is looked for behind must have a greatest length, so without * or +"},
    {U_REGEX_SET_CONTAINS_STRING, "a set in brackets may hold single characters only"},
    {U_REGEX_MISSING_CLOSE_BRACKET, "a bracket [ is not closed"},
    {U_REGEX_INVALID_RANGE, "a range in brackets runs backwards or has no end"},
    {U_REGEX_PATTERN_TOO_BIG, "it is too big"},
    {U_REGEX_INVALID_CAPTURE_GROUP_NAME, "the name of a group is unknown, used twice, or no name"},
    {U_REGEX_STACK_OVERFLOW, "it is nested too deep"},
    {U_REGEX_INTERNAL_ERROR, "it is nested too deep"}, // what ICU says of that
    {U_ILLEGAL_CHAR_FOUND, "the name of a character is not known"},
    {U_MEMORY_ALLOCATION_ERROR, "there is not enough memory for it"},
}};

RegularExpressionError errorOf(UErrorCode status, const UParseError& where)
{
    const auto* const known = std::ranges::find(kMessages, status, &std::pair<UErrorCode, const char*>::first);
    return {known == kMessages.end() ? "it cannot be understood" : known->second, u_errorName(status),
            static_cast<std::size_t>(std::max(where.line, 0)), static_cast<std::size_t>(std::max(where.offset, 0))};
}

/// ICU's view of a text that somebody else keeps.
icu::UnicodeString aliasOf(std::u16string_view text)
{
    return {false, text.data(), static_cast<std::int32_t>(text.size())};
}

/// What ICU tells while it matches, and asks whether to go on.
struct Watch {
    const StopToken& stop;
    mutable int steps = 0;

    static UBool U_CALLCONV onSteps(const void* context, std::int32_t steps)
    {
        const auto& watch = *static_cast<const Watch*>(context);
        watch.steps = steps;
        return !watch.stop.stop_requested();
    }
    static UBool U_CALLCONV onProgress(const void* context, std::int64_t)
    {
        return !static_cast<const Watch*>(context)->stop.stop_requested();
    }
};

MatchingFailure failureOf(UErrorCode status)
{
    switch (status) {
    case U_REGEX_TIME_OUT: return MatchingFailure::tooSlow;
    case U_REGEX_STOPPED_BY_CALLER: return MatchingFailure::stopped;
    case U_REGEX_STACK_OVERFLOW: return MatchingFailure::tooDeep;
    default: return MatchingFailure::tooLong; // what is left is a lack of memory
    }
}

/// Of what a reference in the template can stand for, in UTF-16 units. Looking ahead captures beyond the match.
std::size_t longestGroup(const icu::RegexMatcher& matcher, UErrorCode& status)
{
    std::int32_t longest = 0;
    for (std::int32_t i = 0; i <= matcher.groupCount(); ++i)
        longest = std::max(longest, matcher.end(i, status) - matcher.start(i, status));
    return static_cast<std::size_t>(longest);
}

Result<RegularExpression::Replaced, UErrorCode> replaceEach(icu::RegexMatcher& matcher, std::u16string_view replacement)
{
    const auto written = aliasOf(replacement);
    const auto references = static_cast<std::size_t>(std::ranges::count(replacement, u'$'));
    RegularExpression::Replaced replaced;
    icu::UnicodeString text;
    UErrorCode status = U_ZERO_ERROR;
    while (matcher.find(status)) {
        const auto most = replacement.size() + references * longestGroup(matcher, status);
        if (static_cast<std::size_t>(text.length()) + most > kLongestText)
            return failure(U_BUFFER_OVERFLOW_ERROR);
        matcher.appendReplacement(text, written, status);
        ++replaced.matches;
    }
    if (U_FAILURE(status))
        return failure(status);
    if (replaced.matches == 0)
        return replaced;
    matcher.appendTail(text);
    if (text.isBogus())
        return failure(U_MEMORY_ALLOCATION_ERROR);
    replaced.text.assign(text.getBuffer(), static_cast<std::size_t>(text.length()));
    return replaced;
}

} // namespace

std::string toString(const RegularExpressionError& error)
{
    if (error.character == 0)
        return error.message;
    return error.line > 1 ? fmt::format("{}, at character {} of line {}", error.message, error.character, error.line)
                          : fmt::format("{}, at character {}", error.message, error.character);
}

struct RegularExpression::Compiled {
    std::unique_ptr<icu::RegexPattern> pattern;
    int groupCount = 0;
};

RegularExpression::RegularExpression(std::unique_ptr<Compiled> compiled) : m_compiled(std::move(compiled))
{}
RegularExpression::RegularExpression(RegularExpression&& other) noexcept = default;
RegularExpression& RegularExpression::operator=(RegularExpression&& other) noexcept = default;
RegularExpression::~RegularExpression() = default;

Result<RegularExpression, RegularExpressionError> RegularExpression::compile(std::u16string_view pattern)
{
    if (pattern.empty()) // it would match between all characters
        return failure(RegularExpressionError{"it is empty", u_errorName(U_ILLEGAL_ARGUMENT_ERROR)});
    if (pattern.size() > kLongestText)
        return failure(errorOf(U_REGEX_PATTERN_TOO_BIG, {}));
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    auto compiled = std::make_unique<Compiled>();
    compiled->pattern.reset(icu::RegexPattern::compile(aliasOf(pattern), UREGEX_CASE_INSENSITIVE, where, status));
    if (U_FAILURE(status))
        return failure(errorOf(status, where));
    const std::unique_ptr<icu::RegexMatcher> matcher(compiled->pattern->matcher(status));
    if (U_FAILURE(status))
        return failure(errorOf(status, {}));
    compiled->groupCount = matcher->groupCount();
    return RegularExpression(std::move(compiled));
}

std::u16string RegularExpression::escaped(std::u16string_view text)
{
    static constexpr std::u16string_view kMeaningful = uR"(\^$.|?*+()[]{}#&-)";
    std::u16string pattern;
    for (const char16_t unit : text) {
        if (kMeaningful.find(unit) != std::u16string_view::npos)
            pattern += u'\\';
        pattern += unit;
    }
    return pattern;
}

int RegularExpression::groupCount() const
{
    return m_compiled->groupCount;
}

bool RegularExpression::hasGroup(std::u16string_view name) const
{
    UErrorCode status = U_ZERO_ERROR;
    m_compiled->pattern->groupNumberFromName(aliasOf(name), status);
    return U_SUCCESS(status);
}

Result<RegularExpression::Replaced, MatchingFailure>
RegularExpression::replaceAll(std::u16string_view text, std::u16string_view replacement, MatchingEffort& effort) const
{
    if (text.size() > kLongestText || replacement.size() > kLongestText)
        return failure(MatchingFailure::tooLong);
    const auto input = aliasOf(text); // the matcher refers to it
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::RegexMatcher> matcher(m_compiled->pattern->matcher(input, status));
    if (U_FAILURE(status))
        return failure(failureOf(status));
    const Watch watch{effort.stop};
    matcher->setTimeLimit(std::clamp(effort.stepsLeft, 1, kMostSteps), status);
    matcher->setMatchCallback(&Watch::onSteps, &watch, status);
    matcher->setFindProgressCallback(&Watch::onProgress, &watch, status);
    auto replaced = replaceEach(*matcher, replacement);
    effort.stepsLeft -= watch.steps;
    if (!replaced)
        return failure(failureOf(replaced.error()));
    return *std::move(replaced);
}

} // namespace vocalith
