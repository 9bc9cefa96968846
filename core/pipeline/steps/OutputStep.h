#pragma once

#include "base/Log.h"
#include "core/pipeline/TranscriptProcessingStep.h"

namespace vocalith {

class Notices;
class TextOutput;

/// Hands the finished text over. A failed delivery never stops the run: the output has put the text somewhere safe, and
/// the user is told where.
class OutputStep final : public TranscriptProcessingStep {
public:
    OutputStep(TextOutput& output, Notices& notices, Logger logger)
        : m_output(output), m_notices(notices), m_logger(std::move(logger))
    {}

    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    TextOutput& m_output;
    Notices& m_notices;
    const Logger m_logger;
};

} // namespace vocalith
