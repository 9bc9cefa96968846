#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

/// Ends the text with a space, so that two dictations in a row do not run together.
class SpacingStep final : public TranscriptProcessingStep {
public:
    std::string_view name() const override { return "SpacingStep"; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;
};

} // namespace vocalith
