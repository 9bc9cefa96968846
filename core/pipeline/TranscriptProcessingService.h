#pragma once

#include "base/Log.h"
#include "core/pipeline/TranscriptProcessingStep.h"

#include <memory>
#include <optional>
#include <vector>

namespace vocalith {

class HistoryService;
class Notices;
class TextOutput;

/// How a run came to its end, with the context as it then stood: whatever happened, its `transcript` holds the words.
struct PipelineOutcome {
    enum class End {
        complete, ///< the last step has run
        early,    ///< a step ended the run on purpose
        failed,   ///< a step failed; `failure` says how
        cancelled ///< the run was asked to stop
    };
    End end = End::complete;
    TranscriptProcessingContext context;
    std::optional<StepFailure> failure;
};

/// Runs a transcript through the fixed list of steps, one after the other. Lives as long as the program; main thread.
/// A stop takes effect at the wait of the step that runs, or before the next step.
class TranscriptProcessingService {
public:
    using Steps = std::vector<std::unique_ptr<TranscriptProcessingStep>>;

    /// The steps in the order in which they run.
    explicit TranscriptProcessingService(Steps steps);

    /// The program's own steps: the one place that says what happens to a dictation, and when.
    static Steps defaultSteps(TextOutput& output, HistoryService& history, Notices& notices, const LogService& log);

    Task<PipelineOutcome> run(TranscriptProcessingContext context);

private:
    const Steps m_steps;
};

} // namespace vocalith
