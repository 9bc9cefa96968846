#pragma once

#include "base/Log.h"
#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

class Notices;
class TextOutput;

/// Hands the finished text over, as the prompt says; what is dictated into the journal stays there, or is copied to the
/// clipboard where no history has it. A delivery that failed does not stop the run when the output has put the text
/// somewhere safe: the user is told where. One that left it nowhere is a failure, so that its recording is kept.
class OutputStep final : public TranscriptProcessingStep {
public:
    OutputStep(TextOutput& output, Notices& notices, Logger logger)
        : m_output(output), m_notices(notices), m_logger(std::move(logger))
    {}

    std::string_view name() const override { return "OutputStep"; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    TextOutput& m_output;
    Notices& m_notices;
    const Logger m_logger;
};

} // namespace vocalith
