#include "core/pipeline/TranscriptProcessingService.h"

#include "core/pipeline/steps/AITransformStep.h"
#include "core/pipeline/steps/AutoCopyToClipboardStep.h"
#include "core/pipeline/steps/BashScriptStep.h"
#include "core/pipeline/steps/HistoryStep.h"
#include "core/pipeline/steps/OutputStep.h"
#include "core/pipeline/steps/QuickCommandStep.h"
#include "core/pipeline/steps/ReplacementsStep.h"
#include "core/pipeline/steps/SpacingStep.h"

namespace vocalith {

using End = PipelineOutcome::End;

TranscriptProcessingService::TranscriptProcessingService(Steps steps) : m_steps(std::move(steps))
{}

TranscriptProcessingService::Steps TranscriptProcessingService::defaultSteps(TextOutput& output,
                                                                             HistoryService& history, Notices& notices,
                                                                             const LogService& log)
{
    Steps steps;
    steps.push_back(std::make_unique<HistoryStep>(history));
    steps.push_back(std::make_unique<QuickCommandStep>());
    steps.push_back(std::make_unique<BashScriptStep>(BashScriptStep::Stage::before));
    steps.push_back(std::make_unique<ReplacementsStep>(WordReplacementTiming::beforeAI));
    steps.push_back(std::make_unique<AITransformStep>());
    steps.push_back(std::make_unique<HistoryStep>(history));
    steps.push_back(std::make_unique<ReplacementsStep>(WordReplacementTiming::afterAI));
    steps.push_back(std::make_unique<BashScriptStep>(BashScriptStep::Stage::after));
    steps.push_back(std::make_unique<SpacingStep>());
    steps.push_back(std::make_unique<AutoCopyToClipboardStep>());
    steps.push_back(std::make_unique<OutputStep>(output, notices, log.logger("OutputStep")));
    steps.push_back(std::make_unique<HistoryStep>(history));
    return steps;
}

Task<PipelineOutcome> TranscriptProcessingService::run(TranscriptProcessingContext context)
{
    const auto stop = co_await currentStopToken();
    PipelineOutcome outcome{End::complete, std::move(context), std::nullopt};
    for (const auto& step : m_steps) {
        if (stop.stop_requested()) {
            outcome.end = End::cancelled;
            break;
        }
        auto ended = co_await step->run(outcome.context);
        if (!ended) {
            outcome.end = stop.stop_requested() ? End::cancelled : End::failed;
            outcome.failure = std::move(ended.error());
            break;
        }
        if (*ended) {
            outcome.end = End::early;
            break;
        }
    }
    co_return outcome;
}

} // namespace vocalith
