#pragma once

#include "base/Log.h"
#include "core/pipeline/TranscriptProcessingStep.h"
#include "core/pipeline/scripts/BashScriptService.h"

namespace vocalith {

class Notices;

/// Runs the prompt's own script on the transcript, before or after the AI transform. What the script prints becomes the
/// transcript, without the white space around it; one that prints nothing ends the run, whatever its exit status. A
/// script that cannot be started or takes longer than `timeout` leaves the transcript as it was, and the user is told.
/// One that fails and prints nothing, while no history has the words, is a failure of the run.
class BashScriptStep final : public TranscriptProcessingStep {
public:
    enum class Stage { before, after };

    /// Seconds.
    static constexpr double timeout = 15;

    BashScriptStep(Stage stage, BashScriptService& scripts, Notices& notices, Logger logger)
        : m_stage(stage), m_scripts(scripts), m_notices(notices), m_logger(std::move(logger))
    {}

    std::string_view name() const override
    {
        return m_stage == Stage::before ? "BashScriptStep (before)" : "BashScriptStep (after)";
    }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override;

private:
    Result<bool, StepFailure> use(const BashScriptService::BashResult& result,
                                  TranscriptProcessingContext& context) const;
    bool leaveTheText(TranscriptProcessingContext& context, const std::string& what) const;
    void note(TranscriptProcessingContext& context, std::string_view suffix, std::string text) const;

    const Stage m_stage;
    BashScriptService& m_scripts;
    Notices& m_notices;
    const Logger m_logger;
};

} // namespace vocalith
