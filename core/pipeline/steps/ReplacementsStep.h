#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

/// When a word replacement applies.
enum class WordReplacementTiming { beforeAI, afterAI, both };

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
