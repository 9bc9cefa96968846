#include "core/pipeline/steps/SpacingStep.h"

namespace vocalith {

Task<Result<bool, StepFailure>> SpacingStep::run(TranscriptProcessingContext& context)
{
    if (!context.transcript.empty())
        context.transcript += ' ';
    co_return false;
}

} // namespace vocalith
