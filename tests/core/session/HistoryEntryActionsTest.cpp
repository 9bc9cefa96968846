#include "core/session/HistoryEntryActionsService.h"

#include "base/Iso8601.h"
#include "core/pipeline/replacements/WordReplacementService.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/RecordedNotices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Kind = HistoryActionError::Kind;
using Outcome = HistoryEntryActionsService::Outcome;

namespace {

/// What the scripted engine is told to do, and how many of it work at once.
struct EngineScript {
    std::string text = "again";
    std::optional<TranscriptionError> error;
    bool holds = false; ///< until its hour has come, or a stop
    int working = 0;
    int mostWorking = 0;
};

class ScriptedEngine final : public TranscriptionService {
public:
    ScriptedEngine(EngineScript& script, TranscriptionModelID model, Clock& clock)
        : m_script(script), m_model(std::move(model)), m_clock(clock)
    {}

    TranscriptionModelID modelId() const override { return m_model; }
    Task<Result<void, TranscriptionError>> start() override { co_return Result<void, TranscriptionError>(); }
    Task<Result<TranscriptionData, TranscriptionError>> transcribe(fs::path, ProgressHandler progress) override
    {
        m_script.mostWorking = std::max(m_script.mostWorking, ++m_script.working);
        if (m_script.holds) {
            const auto held = co_await sleepFor(m_clock, 1h);
            if (!held) {
                --m_script.working;
                co_return failure(TranscriptionError{TranscriptionError::Kind::cancelled, {}});
            }
        }
        --m_script.working;
        progress(1);
        if (m_script.error)
            co_return failure(*m_script.error);
        TranscriptionData transcript{m_model, {}};
        transcript.segments.push_back({Uuid::random(), m_script.text, 0, 1, std::nullopt});
        co_return transcript;
    }

private:
    EngineScript& m_script;
    const TranscriptionModelID m_model;
    Clock& m_clock;
};

class HistoryEntryActions : public testing::Test {
protected:
    AudioFile recording()
    {
        const auto file = folder / "Recordings" / (Uuid::random().toString() + ".wav");
        writeFile(file, "audio");
        return {fileBookmark(file, clock.now()), 1.0, 5};
    }
    template <class Content>
    HistoryEntry add(Content content)
    {
        HistoryEntry entry{Uuid::random(), clock.now(), {}};
        entry.content = std::move(content);
        EXPECT_TRUE(await(history.store()->upsert(entry)));
        clock.advance(1min);
        return entry;
    }
    HistoryEntry addFailure()
    {
        return add(HistoryEntry::DictationEntry(HistoryEntry::FailureData{recording(), "No speech detected"}));
    }
    HistoryEntry addDictation(const std::string& text = "before")
    {
        HistoryEntry::SuccessData success;
        success.result = {Uuid::random(), recording(), {PredefinedModelID::tiny, {}}};
        success.result.transcriptionData.segments.push_back({Uuid::random(), text, 0, 1, std::nullopt});
        success.aiPrompt = prompt("Mail");
        success.transform = AITransform{prompt("Mail"), "Dear " + text};
        return add(HistoryEntry::DictationEntry(success));
    }
    static AIPrompt prompt(const std::string& name)
    {
        AIPrompt made;
        made.name = name;
        return made;
    }
    Outcome retry(const Uuid& id)
    {
        return await(actions.retryTranscription(id, model, [](double) {}));
    }
    std::optional<HistoryEntry> stored(const Uuid& id)
    {
        auto entry = await(history.entry(id));
        return entry ? std::optional(*entry) : std::nullopt;
    }
    std::size_t count() { return await(history.store()->count(HistoryFilter())).value(); }

    const TranscriptionModelID model = std::string("better");
    TemporaryFolder folder;
    FakeClock clock;
    RecordedLog log;
    RecordedNotices notices;
    EngineScript engine;
    Result<std::string, std::string> answer = std::string("Rewritten.");
    std::vector<std::string> prompted;
    PersistentAppStorage storage{folder / "settings.json", clock, log.logger()};
    HistoryService history{
        {folder / "History", folder / "Recordings", folder / "history.sqlite"}, storage, clock, log.logger()};
    TranscriptProcessingService pipeline{TranscriptProcessingService::Steps()};
    TranscriptionSessionManager session{
        [this](const TranscriptionModelID& wanted,
               TranscriptionSource) -> Result<std::unique_ptr<TranscriptionService>, TranscriptionError> {
            return std::make_unique<ScriptedEngine>(engine, wanted, clock);
        },
        pipeline, storage, log.logger()};
    WordReplacementService replacements{storage, notices, log.logger()};
    HistoryEntryActionsService actions{
        history,     session, replacements,
        notices,     clock,   [this](AIPrompt used, std::string text) { return rewritten(used, text); },
        log.logger()};

private:
    Task<Result<std::string, std::string>> rewritten(AIPrompt used, std::string text)
    {
        prompted.push_back(used.name + ": " + text);
        const auto slept = co_await sleepFor(clock, 1s);
        if (!slept)
            co_return failure(std::string("cancelled"));
        co_return answer;
    }
};

TEST_F(HistoryEntryActions, AFailureThatIsTranscribedAgainBecomesADictationInItsPlace)
{
    const auto failed = addFailure();
    const auto outcome = retry(failed.id);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->id, failed.id);
    EXPECT_EQ(outcome->creationDate, failed.creationDate);
    EXPECT_EQ(finalText(*outcome), "again");
    EXPECT_EQ(transcript(*outcome)->modelId, model);
    EXPECT_EQ(audioFile(*outcome), audioFile(failed));
    EXPECT_EQ(stored(failed.id), *outcome);
    EXPECT_EQ(count(), 1u);
}

TEST_F(HistoryEntryActions, ADictationThatHasWordsKeepsThemAndSharesItsRecording)
{
    HistoryEntry::VoiceJournalEntry journal;
    journal.result = {Uuid::random(), recording(), {PredefinedModelID::tiny, {}}};
    for (const auto& before : {addDictation(), add(journal)}) {
        const auto outcome = retry(before.id);
        ASSERT_TRUE(outcome);
        EXPECT_NE(outcome->id, before.id);
        EXPECT_EQ(outcome->creationDate, clock.now());
        EXPECT_EQ(outcome->content.index(), before.content.index());
        EXPECT_EQ(finalText(*outcome), "again") << "an old rewrite is not one of the new text";
        EXPECT_EQ(audioFile(*outcome), audioFile(before));
        EXPECT_EQ(stored(before.id), before);
        EXPECT_EQ(stored(outcome->id), *outcome);
    }
}

TEST_F(HistoryEntryActions, AFileGetsItsNewTranscript)
{
    const auto file = add(FileTranscriptionProject{Uuid::random(), recording(), MediaFileType::video,
                                                   FileTranscriptionProject::Failed{"Model not found"}});
    const auto outcome = retry(file.id);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->id, file.id);
    EXPECT_EQ(finalText(stored(file.id).value()), "again");
    EXPECT_EQ(std::get<FileTranscriptionProject>(outcome->content).originalFileType, MediaFileType::video);
}

TEST_F(HistoryEntryActions, ARetryThatFailsSaysWhyAndLeavesTheEntryAsItWas)
{
    const auto entry = addFailure();
    engine.error = TranscriptionError{TranscriptionError::Kind::decodeFailed, "-7"};
    const auto refused = retry(entry.id);
    ASSERT_FALSE(refused);
    EXPECT_EQ(userMessage(refused.error()), "Whisper error code -7");
    engine.error.reset();
    engine.text = "  ";
    EXPECT_EQ(userMessage(retry(entry.id).error()), "No speech detected");
    fs::remove(*filePath(audioFile(entry).fileBookmark));
    const auto silent = retry(entry.id);
    EXPECT_EQ(silent.error().kind, Kind::audioMissing);
    EXPECT_NE(userMessage(silent.error()).find("is not there any more"), std::string::npos);
    EXPECT_EQ(userMessage(retry(Uuid::random()).error()), "Entry not found");
    EXPECT_EQ(stored(entry.id), entry);
    EXPECT_TRUE(actions.retryingTranscriptionEntryIDs.get().empty());
}

TEST_F(HistoryEntryActions, WordsThatCannotBeKeptAreHandedBack)
{
    const auto entry = addDictation();
    clock.advance(48h); // into a day whose folder cannot be made
    writeFile(folder / "History" / toIso8601(clock.now()).substr(0, 10), "no folder");
    const auto unkept = retry(entry.id);
    ASSERT_FALSE(unkept);
    EXPECT_EQ(unkept.error().kind, Kind::entry);
    EXPECT_EQ(unkept.error().text, "again");
    EXPECT_EQ(stored(entry.id), entry);

    clock.advance(24h);
    const auto rewritten = addDictation();
    engine.holds = true;
    std::optional<Outcome> outcomes[2];
    TaskScope scope;
    scope.start(storeResult(actions.retryTranscription(entry.id, model, [](double) {}), outcomes[0]));
    scope.start(storeResult(actions.applyPrompt(rewritten.id, prompt("Tidy")), outcomes[1]));
    runUntil([this] { return engine.working > 0 && !prompted.empty(); });
    EXPECT_TRUE(await(history.remove({entry.id, rewritten.id}))); // while they are worked on
    clock.advance(1h);
    runUntil([&] { return outcomes[0] && outcomes[1]; });
    EXPECT_EQ(outcomes[0]->error().text, "again");
    EXPECT_EQ(outcomes[1]->error().text, "Rewritten.");
}

TEST_F(HistoryEntryActions, OneEntryIsTranscribedOnceAtATimeAndSeveralOneAfterTheOther)
{
    const auto first = addFailure();
    const auto second = addFailure();
    engine.holds = true;
    std::optional<Outcome> outcomes[2];
    TaskScope scope;
    scope.start(storeResult(actions.retryTranscription(first.id, model, [](double) {}), outcomes[0]));
    scope.start(storeResult(actions.retryTranscription(second.id, model, [](double) {}), outcomes[1]));
    runUntil([this] { return engine.working > 0; });
    EXPECT_EQ(actions.retryingTranscriptionEntryIDs.get(), (std::set{first.id, second.id}));
    EXPECT_EQ(retry(first.id).error().kind, Kind::alreadyRunning);
    EXPECT_EQ(actions.retryingTranscriptionEntryIDs.get().count(first.id), 1u);

    for (auto& outcome : outcomes) {
        runUntil([this] { return engine.working > 0; });
        clock.advance(1h);
        runUntil([&] { return outcome.has_value(); });
        EXPECT_TRUE(*outcome);
    }
    EXPECT_EQ(engine.mostWorking, 1) << "there is one engine";
    EXPECT_TRUE(actions.retryingTranscriptionEntryIDs.get().empty());
}

TEST_F(HistoryEntryActions, AStopEndsThoseThatWorkAndThoseThatWaitAndTheNextOneWorks)
{
    const auto first = addFailure();
    const auto second = addFailure();
    engine.holds = true;
    std::optional<Outcome> outcomes[2];
    TaskScope scope;
    scope.start(storeResult(actions.retryTranscription(first.id, model, [](double) {}), outcomes[0]));
    scope.start(storeResult(actions.retryTranscription(second.id, model, [](double) {}), outcomes[1]));
    runUntil([this] { return engine.working > 0; });
    drainMainThread();
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    for (const auto& outcome : outcomes)
        EXPECT_EQ(outcome->error().kind, Kind::cancelled);
    EXPECT_EQ(stored(first.id), first);
    engine.holds = false;
    EXPECT_TRUE(retry(second.id));
}

TEST_F(HistoryEntryActions, WorkOnWhatIsThereEvenWhereNothingNewIsKept)
{
    const auto entry = addFailure();
    storage.historyStoragePolicy.set(HistoryStoragePolicy::disabled);
    EXPECT_TRUE(retry(entry.id));
    EXPECT_EQ(finalText(stored(entry.id).value()), "again");
}

TEST_F(HistoryEntryActions, APromptRewritesWhatWasRecognisedInPlaceOfAnEarlierRewrite)
{
    const auto entry = addDictation();
    std::optional<Outcome> outcome;
    TaskScope scope;
    scope.start(storeResult(actions.applyPrompt(entry.id, prompt("Tidy")), outcome));
    runUntil([this] { return !prompted.empty(); });
    EXPECT_EQ(actions.applyingPromptEntryIDs.get(), std::set{entry.id});
    EXPECT_EQ(await(actions.applyPrompt(entry.id, prompt("Tidy"))).error().kind, Kind::alreadyRunning);
    clock.advance(1s);
    runUntil([&] { return outcome.has_value(); });
    EXPECT_EQ(prompted, std::vector<std::string>{"Tidy: before"});
    const auto rewritten = stored(entry.id).value();
    EXPECT_EQ(finalText(rewritten), "Rewritten.");
    EXPECT_EQ(usedPrompt(rewritten)->name, "Tidy");
    EXPECT_EQ(plainText(*transcript(rewritten)), "before");
    EXPECT_TRUE(actions.applyingPromptEntryIDs.get().empty());
}

TEST_F(HistoryEntryActions, WordReplacementsApplyAroundThePromptAndLeaveWhatWasRecognised)
{
    storage.wordReplacements.set({{Uuid::random(), "before", "earlier"},
                                  {Uuid::random(), "Rewritten", "Done", false, WordReplacementTiming::afterAI}});
    const auto entry = addDictation();
    const auto recognised = *transcript(entry);
    std::optional<Outcome> outcome;
    TaskScope scope;
    scope.start(storeResult(actions.applyPrompt(entry.id, prompt("Tidy")), outcome));
    ASSERT_TRUE(runUntil([&] { return !prompted.empty(); }));
    clock.advance(1s);
    ASSERT_TRUE(runUntil([&] { return outcome.has_value(); }));
    EXPECT_EQ(prompted, std::vector<std::string>{"Tidy: earlier"});
    EXPECT_EQ(finalText(**outcome), "Done.");
    EXPECT_EQ(*transcript(**outcome), recognised);
}

TEST_F(HistoryEntryActions, APromptThatFailsIsToldAndLeavesTheEntryAsItWas)
{
    const auto entry = addDictation();
    answer = failure(std::string("The provider does not answer."));
    std::optional<Outcome> outcome;
    TaskScope scope;
    scope.start(storeResult(actions.applyPrompt(entry.id, prompt("Tidy")), outcome));
    runUntil([this] { return !prompted.empty(); });
    clock.advance(1s);
    runUntil([&] { return outcome.has_value(); });
    EXPECT_EQ(notices.shown, std::vector<std::string>{"The provider does not answer."});
    EXPECT_TRUE(log.has("history_apply_prompt_error: The provider does not answer."));
    EXPECT_EQ(stored(entry.id), entry);

    const auto wordless = addFailure();
    EXPECT_EQ(await(actions.applyPrompt(wordless.id, prompt("Tidy"))).error().kind, Kind::noText);
    EXPECT_EQ(stored(wordless.id), wordless);
}

} // namespace
