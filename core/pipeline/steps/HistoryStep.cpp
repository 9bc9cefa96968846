#include "core/pipeline/steps/HistoryStep.h"

namespace vocalith {

Task<Result<bool, StepFailure>> HistoryStep::run(TranscriptProcessingContext&)
{
    co_return false;
}

} // namespace vocalith
