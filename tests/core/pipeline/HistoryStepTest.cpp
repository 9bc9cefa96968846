#include "core/pipeline/steps/HistoryStep.h"

#include "base/Json.h"
#include "core/pipeline/TranscriptProcessingService.h"
#include "core/pipeline/steps/SpacingStep.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>

#include <sys/stat.h>

using namespace vocalith;
using namespace vocalith::test;
namespace fs = std::filesystem;

namespace {

/// Does at its place in the run what a test wants done there.
class ActingStep final : public TranscriptProcessingStep {
public:
    explicit ActingStep(std::function<void(TranscriptProcessingContext&)> act) : m_act(std::move(act)) {}

    std::string_view name() const override { return "ActingStep"; }
    Task<Result<bool, StepFailure>> run(TranscriptProcessingContext& context) override
    {
        m_act(context);
        co_return false;
    }

private:
    const std::function<void(TranscriptProcessingContext&)> m_act;
};

class HistorySteps : public testing::Test {
protected:
    HistorySteps()
    {
        context.sessionID = Uuid::random();
        context.creationDate = clock.now();
        context.dictationResult.id = context.sessionID;
        context.dictationResult.transcriptionData.segments.push_back({Uuid::random(), "helo", 0, 1, std::nullopt});
        context.transcript = "helo";
    }

    /// The three writes, with what happens to the text between them.
    void run(std::function<void(TranscriptProcessingContext&)> transform,
             std::function<void(TranscriptProcessingContext&)> afterwards)
    {
        TranscriptProcessingService::Steps steps;
        steps.push_back(std::make_unique<HistoryStep>(&history));
        steps.push_back(std::make_unique<ActingStep>(std::move(transform)));
        steps.push_back(std::make_unique<HistoryStep>(&history));
        steps.push_back(std::make_unique<ActingStep>(std::move(afterwards)));
        steps.push_back(std::make_unique<SpacingStep>());
        steps.push_back(std::make_unique<HistoryStep>(&history));
        TranscriptProcessingService pipeline(std::move(steps));
        const auto outcome = await(pipeline.run(context));
        EXPECT_EQ(outcome.end, PipelineOutcome::End::complete);
    }
    /// The entry as another program would find it now.
    std::optional<HistoryEntry> stored() const
    {
        std::optional<HistoryEntry> found;
        if (!fs::exists(folder / "History"))
            return found;
        for (const auto& file : fs::recursive_directory_iterator(folder / "History")) {
            if (!file.is_regular_file())
                continue;
            EXPECT_FALSE(found) << "one dictation, one file";
            found = fromJson<HistoryEntry>(*parseJson(readFile(file.path()))).value();
        }
        return found;
    }
    /// Changes whenever the file is written.
    ::ino_t inode() const
    {
        struct ::stat status {};
        const auto file = folder / "History" / "2026-03-01" / (context.sessionID.toString() + ".json");
        EXPECT_EQ(::stat(file.c_str(), &status), 0);
        return status.st_ino;
    }

    TemporaryFolder folder;
    FakeClock clock;
    RecordedLog log;
    PersistentAppStorage storage{folder / "settings.json", clock, log.logger()};
    HistoryService history{
        {folder / "History", folder / "Recordings", folder / "history.sqlite"}, storage, clock, log.logger()};
    TranscriptProcessingContext context;
};

TEST_F(HistorySteps, WriteTheTextAsRecognisedThenAsRewrittenThenAsDelivered)
{
    AIPrompt prompt;
    prompt.name = "Tidy";
    context.activationMode = prompt;
    AIConversation conversation{Uuid::random(), {}, {}, true};
    run(
        [&](TranscriptProcessingContext& run) {
            EXPECT_EQ(finalText(stored().value()), "helo");
            EXPECT_EQ(usedPrompt(stored().value())->name, "Tidy");
            run.transcript = "Hello.";
            run.aiTransform = AITransform{prompt, "Hello."};
            run.conversation = conversation;
        },
        [&](TranscriptProcessingContext& run) {
            EXPECT_EQ(finalText(stored().value()), "Hello.");
            clock.advance(std::chrono::hours(24)); // an answer may take its time
            run.transcript = "Hello!";
        });
    const auto entry = stored().value();
    EXPECT_EQ(finalText(entry), "Hello!");
    EXPECT_EQ(plainText(*transcript(entry)), "helo");
    const auto& success = std::get<HistoryEntry::SuccessData>(std::get<HistoryEntry::DictationEntry>(entry.content));
    EXPECT_EQ(success.conversation, conversation);
    EXPECT_EQ(success.transform->prompt, prompt);
}

TEST_F(HistorySteps, WriteNothingWhereNothingHasChanged)
{
    context.activationMode = VoiceJournal{};
    ::ino_t first = 0;
    run([&](auto&) { first = inode(); }, [](auto&) {});
    EXPECT_EQ(inode(), first);
    EXPECT_TRUE(std::holds_alternative<HistoryEntry::VoiceJournalEntry>(stored().value().content));
}

TEST_F(HistorySteps, AWriteThatFailsIsMadeGoodByTheNextOne)
{
    writeFile(folder / "History", "no folder");
    run(
        [&](TranscriptProcessingContext& run) {
            EXPECT_FALSE(run.historyEntry);
            fs::remove(folder / "History");
        },
        [](auto&) {});
    EXPECT_EQ(finalText(stored().value()), "helo");
}

TEST_F(HistorySteps, WriteNothingWhereNoHistoryIsWanted)
{
    storage.historyStoragePolicy.set(HistoryStoragePolicy::disabled);
    run([](TranscriptProcessingContext& run) { EXPECT_FALSE(run.historyEntry); }, [](auto&) {});
    EXPECT_FALSE(stored());
}

} // namespace
