#include "core/pipeline/steps/AutoCopyToClipboardStep.h"

namespace vocalith {

Task<Result<bool, StepFailure>> AutoCopyToClipboardStep::run(TranscriptProcessingContext&)
{
    co_return false;
}

} // namespace vocalith
