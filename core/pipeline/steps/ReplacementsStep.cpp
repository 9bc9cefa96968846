#include "core/pipeline/steps/ReplacementsStep.h"

namespace vocalith {

Task<Result<bool, StepFailure>> ReplacementsStep::run(TranscriptProcessingContext&)
{
    co_return false;
}

} // namespace vocalith
