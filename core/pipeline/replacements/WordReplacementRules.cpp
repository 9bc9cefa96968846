#include "core/pipeline/replacements/WordReplacementRules.h"

#include "base/Text.h"
#include "core/pipeline/replacements/RegularExpression.h"
#include "core/pipeline/replacements/ReplacementTemplate.h"
#include "core/pipeline/replacements/Utf16.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>

namespace vocalith {
namespace {

struct Block {
    char16_t first;
    char16_t last;
};

/// All of them within the characters that are one UTF-16 unit.
constexpr std::array kWithoutSpaces = {
    Block{u'\u0E00', u'\u0E7F'}, // Thai
    Block{u'\u3040', u'\u309F'}, // Hiragana
    Block{u'\u30A0', u'\u30FF'}, // Katakana
    Block{u'\u4E00', u'\u9FFF'}, // Han
    Block{u'\uAC00', u'\uD7AF'}, // Hangul
};

constexpr std::size_t kLongestInput = std::numeric_limits<std::int32_t>::max();

bool isWrittenWithoutSpaces(std::u16string_view text)
{
    return std::ranges::any_of(text, [](char16_t unit) {
        return std::ranges::any_of(kWithoutSpaces,
                                   [unit](Block block) { return unit >= block.first && unit <= block.last; });
    });
}

std::u16string patternOf(std::u16string_view spelling)
{
    const auto escaped = RegularExpression::escaped(spelling);
    return isWrittenWithoutSpaces(spelling) ? escaped : u"\\b" + escaped + u"\\b";
}

const char* reasonOf(MatchingFailure failure)
{
    switch (failure) {
    case MatchingFailure::tooSlow: return "it takes too long on this text";
    case MatchingFailure::tooDeep: return "it needs too much memory on this text";
    case MatchingFailure::tooLong: return "the text would become too long";
    case MatchingFailure::stopped: return "it was stopped";
    }
    return "";
}

/// One text on its way through a list.
class Run {
public:
    Run(std::string_view text, StopToken stop, const Logger& logger)
        : m_text(toUtf16(text)), m_effort{std::move(stop)}, m_logger(logger)
    {}

    void apply(const WordReplacement& entry)
    {
        const auto replacement = toUtf16(entry.replacement);
        if (entry.isRegex) {
            const auto pattern = toUtf16(entry.original);
            replace(entry.original, pattern, replacement, false);
            return;
        }
        for (const auto& spelling : spellings(entry.original)) {
            const auto wanted = toUtf16(spelling);
            replace(spelling, patternOf(wanted), replacement, isWrittenWithoutSpaces(wanted));
        }
    }

    bool isStopped() const { return m_effort.stop.stop_requested(); }

    AppliedReplacements result(std::string original)
    {
        if (m_isChanged && !isStopped())
            original = toUtf8(m_text);
        return {{std::move(original), std::move(m_notes)}, std::move(m_givenUp)};
    }

private:
    void replace(const std::string& name, std::u16string_view pattern, std::u16string_view replacement, bool literally)
    {
        if (isStopped())
            return;
        const auto expression = RegularExpression::compile(pattern);
        if (!expression) {
            skip(name, pattern, fmt::format("{} ({})", toString(expression.error()), expression.error().code));
            return;
        }
        const auto written = literally ? literalTemplate(replacement) : replacementTemplate(replacement, *expression);
        auto replaced = expression->replaceAll(m_text, written, m_effort);
        if (!replaced) {
            if (replaced.error() == MatchingFailure::stopped)
                return;
            skip(name, pattern, reasonOf(replaced.error()));
            m_givenUp.push_back(m_notes.back());
        } else if (replaced->matches > 0) {
            m_text = std::move(replaced->text);
            m_isChanged = true;
            m_notes.push_back({name, replaced->matches, {}});
        }
    }

    void skip(const std::string& name, std::u16string_view pattern, std::string problem)
    {
        m_logger.error(fmt::format("Invalid regex pattern '{}': {}", toUtf8(pattern), problem));
        m_notes.push_back({name, 0, std::move(problem)});
    }

    std::u16string m_text;
    MatchingEffort m_effort;
    const Logger& m_logger;
    bool m_isChanged = false;
    std::vector<ReplacementNote> m_notes;
    std::vector<ReplacementNote> m_givenUp;
};

} // namespace

std::vector<std::string> spellings(std::string_view original)
{
    std::vector<std::string> found;
    while (!original.empty()) {
        const auto end = std::min(original.find(','), original.size());
        if (auto spelling = trimmed(original.substr(0, end)); !spelling.empty())
            found.push_back(std::move(spelling));
        original.remove_prefix(std::min(end + 1, original.size()));
    }
    return found;
}

bool needsWordBoundaries(std::string_view spelling)
{
    return !isWrittenWithoutSpaces(toUtf16(spelling));
}

std::optional<std::string> whyUnusable(const WordReplacement& entry)
{
    if (!entry.isRegex)
        return spellings(entry.original).empty() ? std::optional<std::string>("it has nothing to look for")
                                                 : std::nullopt;
    const auto expression = RegularExpression::compile(toUtf16(entry.original));
    if (expression)
        return std::nullopt;
    return "it is not a valid regular expression: " + toString(expression.error());
}

std::vector<std::string> spellingsNeverFound(const WordReplacement& entry)
{
    std::vector<std::string> found;
    if (!entry.isRegex)
        found = spellings(entry.original);
    std::erase_if(found, [](const auto& spelling) {
        const auto text = toUtf16(spelling);
        const auto expression = RegularExpression::compile(patternOf(text));
        MatchingEffort effort;
        const auto replaced =
            expression ? expression->replaceAll(u' ' + text + u' ', u"", effort) : failure(MatchingFailure::tooDeep);
        return replaced && replaced->matches > 0;
    });
    return found;
}

AppliedReplacements applyReplacements(const std::vector<WordReplacement>& list, std::string text, StopToken stop,
                                      const Logger& logger)
{
    if (text.size() > kLongestInput)
        return {{std::move(text), {}}, {}};
    Run run(text, std::move(stop), logger);
    for (const auto& entry : list) {
        if (run.isStopped())
            break;
        run.apply(entry);
    }
    return run.result(std::move(text));
}

} // namespace vocalith
