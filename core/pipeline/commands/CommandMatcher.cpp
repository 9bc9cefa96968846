#include "core/pipeline/commands/CommandMatcher.h"

#include "core/pipeline/commands/PhraseSearch_p.h"

#include <algorithm>

namespace vocalith {
namespace {

/// One phrase, however far it is; nothing when it is empty.
std::optional<NearCommand> nearestPlace(const QuickCommandDefinition& command, const std::string& phrase,
                                        const ComparedText& compared, PhraseSearch& search)
{
    const auto& text = search.text();
    const auto length = compared.size();
    if (length == 0)
        return std::nullopt;
    const auto furthest = static_cast<int>(std::max(length, text.size()));
    if (const auto found = search.nearestWindow(compared, furthest))
        return NearCommand{{command, phrase, found->distance, text.part(found->offset, length)}};
    const auto distance = search.distanceFromAll(compared, furthest);
    return NearCommand{{command, phrase, distance.value_or(furthest), text.part(0, text.size())}, true};
}

} // namespace

std::optional<CommandMatch> CommandMatcher::match(std::string_view transcript,
                                                  const std::vector<QuickCommandDefinition>& commands) const
{
    TextComparison comparison;
    PhraseSearch search(comparison.transcript(transcript));
    const QuickCommandDefinition* chosen = nullptr;
    const std::string* said = nullptr;
    FoundPhrase best;
    std::size_t length = 0;
    int limit = maxDistance;
    for (const auto& command : commands) {
        if (!command.isEnabled)
            continue;
        for (const auto& phrase : command.triggerPhrases) {
            const auto compared = comparison.phrase(phrase);
            const auto found = search.nearestWindow(compared, limit);
            if (!found)
                continue;
            chosen = &command;
            said = &phrase;
            best = *found;
            length = compared.size();
            limit = best.distance - 1; // whatever comes later has to be nearer
        }
    }
    if (!chosen)
        return std::nullopt;
    return CommandMatch{*chosen, *said, best.distance, search.text().part(best.offset, length)};
}

std::vector<NearCommand> CommandMatcher::nearest(std::string_view transcript,
                                                 const std::vector<QuickCommandDefinition>& commands,
                                                 std::size_t count) const
{
    TextComparison comparison;
    PhraseSearch search(comparison.transcript(transcript));
    std::vector<NearCommand> found;
    for (const auto& command : commands) {
        std::optional<NearCommand> best;
        for (const auto& phrase : command.triggerPhrases) {
            if (!command.isEnabled)
                continue;
            auto place = nearestPlace(command, phrase, comparison.phrase(phrase), search);
            if (place && (!best || place->match.distance < best->match.distance))
                best = std::move(place);
        }
        if (best)
            found.push_back(std::move(*best));
    }
    std::ranges::stable_sort(found, {}, [](const auto& near) { return near.match.distance; });
    found.resize(std::min(found.size(), count));
    return found;
}

std::size_t comparedLength(std::string_view phrase)
{
    return TextComparison().phrase(phrase).size();
}

} // namespace vocalith
