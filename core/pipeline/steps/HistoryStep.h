#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

/// Keeps the dictation as it stands at this point of the run. Without a history store it passes the text on.
class HistoryStep final : public TranscriptProcessingStep {
public:
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;
};

} // namespace vocalith
