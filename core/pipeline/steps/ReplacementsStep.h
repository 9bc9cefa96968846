#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"
#include "models/WordReplacement.h"

namespace vocalith {

class WordReplacementService;

/// Applies the user's word replacements of one timing. Never ends the run.
class ReplacementsStep final : public TranscriptProcessingStep {
public:
    ReplacementsStep(WordReplacementTiming timing, WordReplacementService& replacements)
        : m_timing(timing), m_replacements(replacements)
    {}

    std::string_view name() const override
    {
        return m_timing == WordReplacementTiming::beforeAI ? "ReplacementsStep (beforeAI)"
                                                           : "ReplacementsStep (afterAI)";
    }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    const WordReplacementTiming m_timing;
    WordReplacementService& m_replacements;
};

} // namespace vocalith
