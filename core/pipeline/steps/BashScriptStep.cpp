#include "core/pipeline/steps/BashScriptStep.h"

namespace vocalith {

Task<Result<bool, StepFailure>> BashScriptStep::run(TranscriptProcessingContext&)
{
    co_return false;
}

} // namespace vocalith
