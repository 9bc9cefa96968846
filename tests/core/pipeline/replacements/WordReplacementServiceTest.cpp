#include "core/pipeline/replacements/WordReplacementService.h"

#include "core/pipeline/steps/ReplacementsStep.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using Timing = WordReplacementTiming;

namespace {

class Replacements : public testing::Test {
protected:
    void store(std::vector<WordReplacement> list) { storage.wordReplacements.set(std::move(list)); }

    std::string step(Timing timing, std::string text)
    {
        TranscriptProcessingContext context;
        context.transcript = std::move(text);
        ReplacementsStep ran(timing, service);
        const auto ended = await(ran.run(context));
        EXPECT_EQ(ended, false) << "it never ends the run";
        return context.transcript;
    }

    TemporaryFolder folder;
    FakeClock clock;
    RecordedLog log;
    RecordedNotices notices;
    PersistentAppStorage storage{folder / "settings.json", clock, log.logger()};
    WordReplacementService service{storage, notices, log.logger()};
};

TEST_F(Replacements, EachStepAppliesTheEntriesOfItsTimingInTheirOrder)
{
    store({{Uuid::random(), "a", "b", false, Timing::afterAI},
           {Uuid::random(), "b", "c", false, Timing::both},
           {Uuid::random(), "c", "d", false, Timing::beforeAI},
           {Uuid::random(), "x", "y x", false, Timing::both}});
    EXPECT_EQ(step(Timing::beforeAI, "a b c x"), "a d d y x");
    EXPECT_EQ(step(Timing::afterAI, "a b c x"), "c c c y x");
    EXPECT_EQ(step(Timing::afterAI, step(Timing::beforeAI, "x")), "y y x") << "those of both apply twice";
    EXPECT_EQ(service.replacements(Timing::both), storage.wordReplacements.get());
    store({});
    EXPECT_EQ(step(Timing::beforeAI, "a \xFF"), "a \xFF");
}

TEST_F(Replacements, OlderListsWithoutKindAndTimingArePlainAndApplyBeforeTheRewrite)
{
    const auto file = folder / "older.json";
    writeFile(file, R"({"wordReplacements": [{"id": "A3B1C2D4-0000-4000-8000-000000000001", "original": "a.b",
                                              "replacement": "c"}]})");
    PersistentAppStorage older(file, clock, log.logger());
    WordReplacementService old(older, notices, log.logger());
    EXPECT_EQ(old.replacements(Timing::beforeAI).size(), 1u);
    EXPECT_TRUE(old.replacements(Timing::afterAI).empty());
    EXPECT_EQ(await(old.apply(old.replacements(Timing::beforeAI), "axb a.b")).text, "axb c");
}

TEST_F(Replacements, AnEndlessPatternIsANoticeWhichNamesItAndTheWordsGoOn)
{
    store({{Uuid::random(), "(a+)+$", "x", true}, {Uuid::random(), "colour", "color"}});
    EXPECT_EQ(step(Timing::beforeAI, std::string(60, 'a') + "! colour"), std::string(60, 'a') + "! color");
    ASSERT_EQ(notices.shown.size(), 1u);
    EXPECT_EQ(notices.shown[0], "The word replacement \"(a+)+$\" was left out: it takes too long on this text. "
                                "\"vocalith replacements edit\" changes it.");
    EXPECT_TRUE(log.has("Invalid regex pattern '(a+)+$': it takes too long on this text"));
}

TEST_F(Replacements, AStopEndsAMatchThatRunsAndKeepsTheWords)
{
    const std::vector<WordReplacement> list(200, {Uuid::random(), "(a+)+$", "x", true});
    const auto text = std::string(60, 'a') + "!";
    std::optional<ReplacementResult> result;
    TaskScope scope;
    scope.start(storeResult(service.apply(list, text), result));
    drainMainThread();
    scope.requestStop();
    drainMainThread();
    ASSERT_TRUE(result) << "the wait ends at once, whatever the thread still does";
    EXPECT_EQ(*result, (ReplacementResult{text, {}}));
    EXPECT_TRUE(notices.shown.empty());
}

} // namespace
