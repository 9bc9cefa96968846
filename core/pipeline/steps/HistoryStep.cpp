#include "core/pipeline/steps/HistoryStep.h"

#include "base/Text.h"
#include "core/storage/history/HistoryService.h"

namespace vocalith {
namespace {

/// The rewrite with the text as it is by now, without the space that only separates it from the next dictation. What a
/// prompt's scripts and the replacements have made of the text is a rewrite too.
std::optional<AITransform> transformSoFar(const TranscriptProcessingContext& context)
{
    auto transform = context.aiTransform;
    auto text = context.transcript;
    if (text.ends_with(' '))
        text.pop_back();
    const auto* prompt = activePrompt(context);
    if (!transform && prompt && !text.empty() && text != trimmed(plainText(context.dictationResult.transcriptionData)))
        transform = AITransform{*prompt, {}};
    if (transform)
        transform->finalText = std::move(text);
    return transform;
}

HistoryEntry entryOf(const TranscriptProcessingContext& context)
{
    HistoryEntry entry{context.sessionID, context.creationDate, {}};
    if (const auto* prompt = activePrompt(context))
        entry.content =
            HistoryEntry::SuccessData{context.dictationResult, *prompt, transformSoFar(context), context.conversation};
    else
        entry.content =
            HistoryEntry::VoiceJournalEntry{context.dictationResult, transformSoFar(context), context.conversation};
    return entry;
}

} // namespace

Task<Result<bool, StepFailure>> HistoryStep::run(TranscriptProcessingContext& context)
{
    if (!m_history || !m_history->isEnabled())
        co_return false;
    auto entry = entryOf(context);
    if (entry == context.historyEntry)
        co_return false;
    const auto kept = co_await m_history->upsert(entry);
    if (kept)
        context.historyEntry = std::move(entry);
    co_return false;
}

} // namespace vocalith
