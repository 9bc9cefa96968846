#include "core/pipeline/steps/QuickCommandStep.h"

namespace vocalith {

Task<Result<bool, StepFailure>> QuickCommandStep::run(TranscriptProcessingContext&)
{
    co_return false;
}

} // namespace vocalith
