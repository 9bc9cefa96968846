#include "core/pipeline/TranscriptProcessingService.h"

#include "core/pipeline/TranscriptRules.h"
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

TranscriptProcessingService::TranscriptProcessingService(Steps steps, Observer observer)
    : m_steps(std::move(steps)), m_observer(std::move(observer))
{}

TranscriptProcessingService::Steps
TranscriptProcessingService::defaultSteps(const TranscriptProcessingServices& services, const LogService& log)
{
    const auto script = [&](BashScriptStep::Stage stage) {
        return std::make_unique<BashScriptStep>(stage, services.rules.scripts, services.notices,
                                                log.logger("BashScriptStep"));
    };
    const auto replacements = [&](WordReplacementTiming timing) {
        return std::make_unique<ReplacementsStep>(timing, services.rules.replacements);
    };
    Steps steps;
    steps.push_back(std::make_unique<HistoryStep>(services.history));
    steps.push_back(std::make_unique<QuickCommandStep>(services.appStorage, services.rules.quickCommands));
    steps.push_back(script(BashScriptStep::Stage::before));
    steps.push_back(replacements(WordReplacementTiming::beforeAI));
    steps.push_back(std::make_unique<AITransformStep>());
    steps.push_back(std::make_unique<HistoryStep>(services.history));
    steps.push_back(replacements(WordReplacementTiming::afterAI));
    steps.push_back(script(BashScriptStep::Stage::after));
    steps.push_back(std::make_unique<SpacingStep>());
    steps.push_back(std::make_unique<AutoCopyToClipboardStep>(services.appStorage, services.typing,
                                                              log.logger("AutoCopyToClipboardStep")));
    steps.push_back(std::make_unique<OutputStep>(services.output, services.notices, log.logger("OutputStep")));
    steps.push_back(std::make_unique<HistoryStep>(services.history));
    return steps;
}

Task<Result<bool, StepFailure>> TranscriptProcessingService::observed(TranscriptProcessingStep& step,
                                                                      TranscriptProcessingContext& context)
{
    if (!m_observer)
        co_return co_await step.run(context);
    StepReport report{step.name(), context.transcript, {}, {}, false, std::nullopt};
    const auto noted = static_cast<std::ptrdiff_t>(context.diagnostics.size());
    auto ended = co_await step.run(context);
    report.after = context.transcript;
    report.diagnostics.assign(context.diagnostics.begin() + noted, context.diagnostics.end());
    report.endedTheRun = ended.value_or(false);
    if (!ended)
        report.failure = ended.error();
    m_observer(report);
    co_return ended;
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
        auto ended = co_await observed(*step, outcome.context);
        if (!ended) {
            outcome.end = stop.stop_requested() ? End::cancelled : End::failed;
            outcome.failure = std::move(ended.error());
            break;
        }
        if (*ended) {
            outcome.end = stop.stop_requested() ? End::cancelled : End::early;
            break;
        }
    }
    co_return outcome;
}

} // namespace vocalith
