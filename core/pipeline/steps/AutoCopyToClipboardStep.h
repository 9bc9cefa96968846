#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

/// Leaves a copy of the text on the clipboard when the user wants it. Without a clipboard it passes the text on.
class AutoCopyToClipboardStep final : public TranscriptProcessingStep {
public:
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;
};

} // namespace vocalith
