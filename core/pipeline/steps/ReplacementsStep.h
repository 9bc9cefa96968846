#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"
#include "models/WordReplacement.h"

namespace vocalith {

/// Applies the user's word replacements of one timing. Without any it passes the text on.
class ReplacementsStep final : public TranscriptProcessingStep {
public:
    explicit ReplacementsStep(WordReplacementTiming timing) : m_timing(timing) {}

    WordReplacementTiming timing() const { return m_timing; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    const WordReplacementTiming m_timing;
};

} // namespace vocalith
