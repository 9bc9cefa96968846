#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

/// Carries out a spoken command in place of inserting it. Without configured commands it passes the text on.
class QuickCommandStep final : public TranscriptProcessingStep {
public:
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;
};

} // namespace vocalith
