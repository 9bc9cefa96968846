#include "core/pipeline/TranscriptProcessingService.h"
#include "base/Clock.h"
#include "core/output/TextOutput.h"
#include "core/pipeline/steps/BashScriptStep.h"
#include "core/pipeline/steps/ReplacementsStep.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "ports/Notices.h"
#include "tests/support/DesktopRules.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using End = PipelineOutcome::End;

namespace {

/// A step that a test scripts: appends its letter, then does what it is told.
class ScriptedStep final : public TranscriptProcessingStep {
public:
    enum class Act { goOn, end, fail, wait };
    ScriptedStep(char letter, Act act, FakeClock& clock) : m_letter(letter), m_act(act), m_clock(clock) {}

    std::string_view name() const override { return "ScriptedStep"; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override
    {
        if (m_act == Act::wait) {
            const auto slept = co_await sleepFor(m_clock, 1s);
            if (!slept)
                co_return failure(StepFailure{"stopped"});
        }
        context.transcript += m_letter;
        context.diagnostics.push_back({"note", std::string(1, m_letter)});
        if (m_act == Act::fail)
            co_return failure(StepFailure{"broken"});
        co_return m_act == Act::end;
    }

private:
    const char m_letter;
    const Act m_act;
    FakeClock& m_clock;
};

class PipelineRun : public testing::Test {
protected:
    using Act = ScriptedStep::Act;

    TranscriptProcessingService service(std::vector<Act> acts)
    {
        TranscriptProcessingService::Steps steps;
        char letter = 'a';
        for (const auto act : acts)
            steps.push_back(std::make_unique<ScriptedStep>(letter++, act, clock));
        return TranscriptProcessingService(std::move(steps));
    }

    FakeClock clock;
};

TEST_F(PipelineRun, StepsRewriteOneContextInOrderUntilOneEndsOrFails)
{
    struct Case {
        std::vector<Act> acts;
        End end;
        std::string transcript;
    };
    const std::vector<Case> cases = {
        {{Act::goOn, Act::goOn, Act::goOn}, End::complete, "abc"},
        {{Act::goOn, Act::end, Act::goOn}, End::early, "ab"},
        {{Act::goOn, Act::fail, Act::goOn}, End::failed, "ab"},
        {{}, End::complete, ""},
    };
    for (const auto& testCase : cases) {
        auto pipeline = service(testCase.acts);
        const auto outcome = await(pipeline.run(TranscriptProcessingContext()));
        EXPECT_EQ(outcome.end, testCase.end);
        EXPECT_EQ(outcome.context.transcript, testCase.transcript);
        EXPECT_EQ(outcome.failure.has_value(), testCase.end == End::failed);
    }
}

TEST_F(PipelineRun, AStopEndsTheRunAtItsWaitAndKeepsTheWords)
{
    auto pipeline = service({Act::goOn, Act::wait, Act::goOn});
    std::optional<PipelineOutcome> outcome;
    TaskScope scope;
    scope.start(storeResult(pipeline.run(TranscriptProcessingContext()), outcome));
    drainMainThread();
    ASSERT_FALSE(outcome);
    scope.requestStop();
    drainMainThread();
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->end, End::cancelled);
    EXPECT_EQ(outcome->context.transcript, "a");
}

TEST_F(PipelineRun, AnObserverIsToldOfEachStepWhenItHasRun)
{
    std::vector<StepReport> reports;
    TranscriptProcessingService::Steps steps;
    for (const auto act : {Act::goOn, Act::fail})
        steps.push_back(std::make_unique<ScriptedStep>(act == Act::goOn ? 'a' : 'b', act, clock));
    TranscriptProcessingService pipeline(std::move(steps), [&](const auto& report) { reports.push_back(report); });
    TranscriptProcessingContext context;
    context.diagnostics = {{"before", "of nobody here"}};
    const auto outcome = await(pipeline.run(std::move(context)));
    EXPECT_EQ(outcome.end, End::failed) << "watching changes nothing";
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].before + ">" + reports[0].after, ">a");
    EXPECT_EQ(reports[1].before + ">" + reports[1].after, "a>ab");
    EXPECT_EQ(reports[0].diagnostics, (std::vector<DiagnosticRecord>{{"note", "a"}}));
    EXPECT_FALSE(reports[0].failure);
    EXPECT_EQ(reports[1].failure, StepFailure{"broken"});
}

class RecordedOutput final : public TextOutput {
public:
    Task<Result<TextDestination, TextOutputError>> deliver(std::string text, ActionMode) override
    {
        delivered.push_back(std::move(text));
        if (error)
            co_return failure(*error);
        co_return TextDestination::application;
    }
    std::vector<std::string> delivered;
    std::optional<TextOutputError> error;
};

class DefaultSteps : public testing::Test {
protected:
    PipelineOutcome run(std::string transcript)
    {
        TranscriptProcessingContext context;
        context.transcript = std::move(transcript);
        return await(pipeline.run(std::move(context)));
    }

    TemporaryFolder folder;
    FakeClock clock;
    PersistentAppStorage storage{folder / "settings.json", clock, Logger()};
    HistoryService history{
        {folder / "History", folder / "Recordings", folder / "history.sqlite"}, storage, clock, Logger()};
    RecordedOutput output;
    RecordedNotices notices;
    LogService log = LogService::toListener([](LogLevel, std::string_view, std::string_view) {});
    DesktopRules desktop{storage, notices, clock, log};
    TranscriptProcessingService pipeline{
        TranscriptProcessingService::defaultSteps({output, storage, notices, desktop.rules, &history}, log)};
};

TEST_F(DefaultSteps, DeliverOnceEndingWithOneSpaceSoThatDictationsDoNotRunTogether)
{
    EXPECT_EQ(run("one").end, End::complete);
    EXPECT_EQ(run("two").context.transcript, "two ");
    EXPECT_EQ(output.delivered, (std::vector<std::string>{"one ", "two "}));
    EXPECT_FALSE(run("").context.endReason.empty());
    EXPECT_EQ(output.delivered.size(), 2u) << "an empty transcript is not typed as a lone space";
}

TEST_F(DefaultSteps, AFailedDeliveryIsANoticeWhenTheTextIsSafeAndAFailureWhenItIsNot)
{
    output.error = TextOutputError{"The window is gone.", "The text is on the clipboard."};
    EXPECT_EQ(run("words").end, End::complete);
    EXPECT_EQ(notices.shown, std::vector<std::string>{"The window is gone. The text is on the clipboard."});

    output.error = TextOutputError{"Nothing works.", ""};
    const auto outcome = run("words");
    EXPECT_EQ(outcome.end, End::failed);
    EXPECT_EQ(outcome.failure, StepFailure{"Nothing works."});
    EXPECT_EQ(outcome.context.transcript, "words ");
}

} // namespace
