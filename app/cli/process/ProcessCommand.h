#pragma once

#include "app/cli/process/ProcessOptions.h"
#include "app/cli/process/RunExplanation.h"
#include "base/Result.h"
#include "base/TaskScope.h"
#include "core/pipeline/TranscriptProcessingService.h"

namespace vocalith {

class Clock;
class Terminal;

/// `vocalith process`: takes a text from standard input the way of a dictation, through the program's own steps.
class ProcessCommand {
public:
    /// `services` as a dictation has them; with `Options::json` the text goes into the object instead.
    ProcessCommand(ProcessOptions options, const TranscriptProcessingServices& services, Clock& clock,
                   Terminal& terminal, const LogService& log);

    /// Yields the exit code.
    Task<int> run();

private:
    Result<OverlayActivationMode, std::string> activationMode() const;
    Result<AIPrompt, std::string> prompt() const;
    Result<std::string, std::string> input();
    TranscriptProcessingContext dictated(OverlayActivationMode mode, std::string text) const;
    Task<PipelineOutcome> process(TranscriptProcessingContext context);
    int report(const PipelineOutcome& outcome);
    int reportTheEnd(const PipelineOutcome& outcome);
    int printJson(const PipelineOutcome& outcome);
    void noteTheHistory(const PipelineOutcome& outcome);
    int complain(const std::string& text);

    const ProcessOptions m_options;
    const TranscriptProcessingServices m_services;
    Clock& m_clock;
    Terminal& m_terminal;
    const LogService& m_log;
    ExplainedRun m_explained;
    TaskScope m_work;
};

} // namespace vocalith
