#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

/// Rewrites the transcript by the prompt's language model. Without a configured provider it passes the text on.
class AITransformStep final : public TranscriptProcessingStep {
public:
    std::string_view name() const override { return "AITransformStep"; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;
};

} // namespace vocalith
