#include "core/storage/history/archive/HistoryEntrySummary.h"

#include "base/Text.h"

namespace vocalith {
namespace {

static_assert(std::variant_size_v<HistoryEntry::Content> == 3, "every kind of entry needs its number in the index");

std::string searchedText(const HistoryEntry& entry)
{
    std::string text = finalText(entry);
    const auto append = [&text](const std::string& more) {
        if (!more.empty() && more != text)
            text.append(text.empty() ? "" : "\n").append(more);
    };
    if (const auto* recognised = transcript(entry))
        append(plainText(*recognised));
    if (const auto* prompt = usedPrompt(entry))
        append(prompt->name);
    if (const auto* message = errorMessage(entry))
        append(*message);
    return text;
}

} // namespace

HistoryEntrySummary summarize(const HistoryEntry& entry)
{
    HistoryEntrySummary summary{entry.id,
                                entry.creationDate,
                                static_cast<HistoryEntrySummary::Kind>(entry.content.index()),
                                std::nullopt,
                                filePath(audioFile(entry).fileBookmark).value_or(std::filesystem::path()),
                                searchForm(searchedText(entry))};
    if (const auto* prompt = usedPrompt(entry))
        summary.promptID = prompt->id;
    return summary;
}

} // namespace vocalith
