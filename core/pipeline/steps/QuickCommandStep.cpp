#include "core/pipeline/steps/QuickCommandStep.h"

#include "core/pipeline/commands/QuickCommandsManager.h"
#include "core/storage/settings/PersistentAppStorage.h"

namespace vocalith {

Task<Result<bool, StepFailure>> QuickCommandStep::run(TranscriptProcessingContext& context)
{
    if (!m_appStorage.enableQuickCommands.get())
        co_return false;
    const auto handled = co_await m_commands.handle(context.transcript);
    if (!handled)
        co_return false;
    context.endReason = handled->report;
    context.hasEndedInFailure = !handled->isDone;
    co_return true;
}

} // namespace vocalith
