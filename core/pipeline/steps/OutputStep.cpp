#include "core/pipeline/steps/OutputStep.h"

#include "core/output/TextOutput.h"
#include "ports/Notices.h"

namespace vocalith {

Task<Result<bool, StepFailure>> OutputStep::run(TranscriptProcessingContext& context)
{
    if (context.transcript.empty()) {
        context.endReason = "Nothing was left of the text, so nothing was inserted.";
        co_return false;
    }
    const auto* prompt = activePrompt(context);
    ActionMode action = prompt ? prompt->mode : ActionMode::historyOnly;
    if (action == ActionMode::historyOnly && !context.historyEntry)
        action = ActionMode::copyToClipboard; // it would be nowhere
    const auto stop = co_await currentStopToken();
    const auto delivered = co_await m_output.deliver(context.transcript, action);
    if (delivered) {
        context.destination = *delivered;
    } else if (!stop.stop_requested()) {
        m_logger.error("Could not deliver the text: " + delivered.error().reason);
        if (delivered.error().rescue.empty())
            co_return failure(StepFailure{delivered.error().reason});
        m_notices.show(delivered.error().reason + " " + delivered.error().rescue);
    }
    co_return false;
}

} // namespace vocalith
