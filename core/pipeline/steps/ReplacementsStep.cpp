#include "core/pipeline/steps/ReplacementsStep.h"

#include "core/pipeline/replacements/WordReplacementService.h"

#include <fmt/format.h>

namespace vocalith {

Task<Result<bool, StepFailure>> ReplacementsStep::run(TranscriptProcessingContext& context)
{
    auto list = m_replacements.replacements(m_timing);
    if (list.empty())
        co_return false;
    auto result = co_await m_replacements.apply(std::move(list), context.transcript);
    for (const auto& note : result.notes)
        context.diagnostics.push_back(
            {note.original, note.problem.empty() ? fmt::format("matches replaced: {}", note.matches) : note.problem});
    context.transcript = std::move(result.text);
    co_return false;
}

} // namespace vocalith
