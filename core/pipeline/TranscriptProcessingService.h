#pragma once

#include "base/Log.h"
#include "core/pipeline/TranscriptProcessingStep.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vocalith {

class HistoryService;
class Notices;
class PersistentAppStorage;
class TextOutput;
class TextTypingService;
class TranscriptRules;

/// What the program's steps work with.
struct TranscriptProcessingServices {
    TextOutput& output;
    PersistentAppStorage& appStorage;
    Notices& notices;
    TranscriptRules& rules;
    HistoryService* history = nullptr;   ///< null where nothing is to be kept
    TextTypingService* typing = nullptr; ///< for automatic copies; null where there is no desktop
};

/// What one step did, for those who look into a run.
struct StepReport {
    std::string_view step;
    std::string before; ///< the transcript
    std::string after;
    std::vector<DiagnosticRecord> diagnostics; ///< noted by this step
    bool endedTheRun = false;
    std::optional<StepFailure> failure;
};

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

    using Observer = std::function<void(const StepReport&)>;

    /// The steps in the order in which they run. `observer`, where there is one, is told of each when it has run.
    explicit TranscriptProcessingService(Steps steps, Observer observer = {});

    /// The program's own steps: the one place that says what happens to a dictation, and when.
    static Steps defaultSteps(const TranscriptProcessingServices& services, const LogService& log);

    Task<PipelineOutcome> run(TranscriptProcessingContext context);

private:
    Task<Result<bool, StepFailure>> observed(TranscriptProcessingStep& step, TranscriptProcessingContext& context);

    const Steps m_steps;
    const Observer m_observer;
};

} // namespace vocalith
