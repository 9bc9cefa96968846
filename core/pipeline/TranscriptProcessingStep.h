#pragma once

#include "base/Result.h"
#include "base/Task.h"
#include "core/pipeline/TranscriptProcessingContext.h"

#include <string>
#include <string_view>

namespace vocalith {

/// A failure that a step could not recover from; `message` is shown to the user.
struct StepFailure {
    std::string message;
    bool operator==(const StepFailure&) const = default;
};

/// One step of the way from the recognised to the delivered text. Steps live as long as the service, keep no state
/// between runs and work on the main thread; slow work is awaited.
class TranscriptProcessingStep {
public:
    virtual ~TranscriptProcessingStep() = default;

    /// Names it for those who look into a run: "SpacingStep", "ReplacementsStep (beforeAI)".
    virtual std::string_view name() const = 0;

    /// Works on `context`, which outlives the task. `true` ends the run after this step, `false` goes on to the next.
    virtual Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) = 0;
};

} // namespace vocalith
