#pragma once

#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

/// Runs the prompt's own script on the transcript, before or after the AI transform. Without a script runner it passes
/// the text on.
class BashScriptStep final : public TranscriptProcessingStep {
public:
    enum class Stage { before, after };

    explicit BashScriptStep(Stage stage) : m_stage(stage) {}

    Stage stage() const { return m_stage; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    const Stage m_stage;
};

} // namespace vocalith
