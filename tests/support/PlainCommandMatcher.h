#pragma once

#include "core/pipeline/commands/CommandMatcher.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <numeric>

namespace vocalith::test {

/// What CommandMatcher is to find, word for word as it is defined, for texts of ASCII: every window, every cell of its
/// table.
class PlainCommandMatcher {
public:
    static std::optional<CommandMatch> match(const std::string& transcript,
                                             const std::vector<QuickCommandDefinition>& commands)
    {
        const auto said = lower(trim(trim(transcript, ::isspace), ::ispunct));
        CommandMatch best{{}, {}, std::numeric_limits<int>::max(), {}};
        for (const auto& command : commands) {
            for (const auto& written : command.triggerPhrases) {
                const auto phrase = lower(trim(written, ::isspace));
                if (phrase.empty() || said.size() < phrase.size() || !command.isEnabled)
                    continue;
                const auto [distance, window] = nearestWindow(said, phrase);
                if (distance < best.distance)
                    best = {command, written, distance, window};
            }
        }
        return best.distance <= 4 ? std::optional(best) : std::nullopt;
    }

    static int levenshtein(const std::string& left, const std::string& right)
    {
        std::vector<int> row(right.size() + 1);
        std::iota(row.begin(), row.end(), 0);
        for (std::size_t i = 1; i <= left.size(); ++i) {
            int diagonal = std::exchange(row[0], static_cast<int>(i));
            for (std::size_t j = 1; j <= right.size(); ++j) {
                const int replaced = diagonal + (left[i - 1] == right[j - 1] ? 0 : 1);
                diagonal = row[j];
                row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
            }
        }
        return row.back();
    }

private:
    static std::string trim(std::string text, int (*isTrimmed)(int))
    {
        while (!text.empty() && isTrimmed(static_cast<unsigned char>(text.back())))
            text.pop_back();
        while (!text.empty() && isTrimmed(static_cast<unsigned char>(text.front())))
            text.erase(0, 1);
        return text;
    }
    static std::string lower(std::string text)
    {
        std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return text;
    }
    static std::pair<int, std::string> nearestWindow(const std::string& said, const std::string& phrase)
    {
        std::pair<int, std::string> best(std::numeric_limits<int>::max(), "");
        for (std::size_t offset = 0; offset + phrase.size() <= said.size() && best.first > 0; ++offset) {
            auto window = said.substr(offset, phrase.size());
            const int distance = levenshtein(window, phrase);
            if (distance < best.first)
                best = {distance, std::move(window)};
        }
        return best;
    }
};

} // namespace vocalith::test
