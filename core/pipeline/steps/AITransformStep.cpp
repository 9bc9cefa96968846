#include "core/pipeline/steps/AITransformStep.h"

namespace vocalith {

Task<Result<bool, StepFailure>> AITransformStep::run(TranscriptProcessingContext&)
{
    co_return false;
}

} // namespace vocalith
