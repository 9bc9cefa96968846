#include "core/session/InterruptedDictationRecovery.h"

#include "core/audio/AudioRecordingManager.h"
#include "core/audio/WavFile.h"
#include "core/storage/ProcessLock.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeAudioInput.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
namespace fs = std::filesystem;

namespace {

class InterruptedDictations : public testing::Test {
protected:
    /// As a program leaves it that was killed after two seconds of speech.
    InterruptedDictations()
    {
        fs::create_directories(recordings);
        EXPECT_TRUE(WavWriter::create(abandoned).value().append(std::vector<std::int16_t>(32000, 7)));
        storage.crashRecoveryInfo.set(info);
    }

    std::vector<HistoryEntry> entries() { return await(history.store()->page(HistoryPageRequest()))->entries; }
    void expectOneFailure()
    {
        const auto all = entries();
        ASSERT_EQ(all.size(), 1u);
        EXPECT_EQ(all[0].id, id);
        ASSERT_TRUE(errorMessage(all[0]));
        EXPECT_EQ(*errorMessage(all[0]), "Recording interrupted — app was terminated");
        EXPECT_DOUBLE_EQ(audioFile(all[0]).duration, 2.0);
        EXPECT_EQ(readWavHeader(*filePath(audioFile(all[0]).fileBookmark))->duration(), 2.0) << "it can be played";
    }

    const Uuid id = Uuid::random();
    TemporaryFolder folder;
    const fs::path recordings = folder / "VocalithRecordings";
    const fs::path abandoned = recordings / (id.toString() + ".wav");
    const AudioCrashRecoveryInfo info{abandoned.string(), kWavHeaderSize};
    FakeClock clock;
    FakeAudioInput input;
    RecordedLog log;
    PersistentAppStorage storage{folder / "settings.json", clock, log.logger()};
    HistoryService history{{folder / "History", recordings, folder / "history.sqlite"}, storage, clock, log.logger()};
    AudioRecordingManager recorder{input, storage, clock, recordings, log.logger()};
    InterruptedDictationRecovery recovery{recorder, storage, history};
};

TEST_F(InterruptedDictations, BecomeAFailureThatCanBePlayed)
{
    const auto found = await(recovery.recover());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->entryID, id);
    EXPECT_FALSE(found->hasText);
    expectOneFailure();
    EXPECT_FALSE(storage.crashRecoveryInfo.get());
    EXPECT_FALSE(await(recovery.recover()));
}

TEST_F(InterruptedDictations, AreOneEntryHoweverOftenTheirRecoveryIsCutOffToo)
{
    ASSERT_TRUE(await(recorder.recover(info))); // and killed before the entry was written
    EXPECT_EQ(await(recovery.recover())->entryID, id);
    expectOneFailure();

    storage.crashRecoveryInfo.set(info); // killed before this was cleared
    clock.advance(std::chrono::hours(24));
    EXPECT_EQ(await(recovery.recover())->entryID, id);
    expectOneFailure();
    EXPECT_FALSE(storage.crashRecoveryInfo.get());
}

TEST_F(InterruptedDictations, KeepWordsThatTheHistoryHasAlready)
{
    HistoryEntry entry{id, clock.now(), {}};
    HistoryEntry::VoiceJournalEntry journal;
    journal.result.id = id;
    journal.result.audioFile = {fileBookmark(abandoned, clock.now()), 2.0, 64044};
    journal.result.transcriptionData.segments.push_back({Uuid::random(), "words", 0, 2, std::nullopt});
    entry.content = journal;
    ASSERT_TRUE(await(history.upsert(entry)));

    const auto found = await(recovery.recover());
    ASSERT_TRUE(found);
    EXPECT_TRUE(found->hasText);
    EXPECT_EQ(entries(), std::vector{entry});
    EXPECT_TRUE(fs::exists(abandoned)) << "the entry's recording stays where the entry says";
    EXPECT_FALSE(storage.crashRecoveryInfo.get());
}

TEST_F(InterruptedDictations, AreAFileWhereNoHistoryIsWanted)
{
    storage.historyStoragePolicy.set(HistoryStoragePolicy::disabled);
    const auto found = await(recovery.recover());
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->entryID);
    EXPECT_EQ(readWavHeader(found->recording)->duration(), 2.0);
    EXPECT_TRUE(entries().empty());
    EXPECT_FALSE(storage.crashRecoveryInfo.get());
}

TEST_F(InterruptedDictations, AreTriedAgainWhenTheHistoryCouldNotBeWritten)
{
    writeFile(folder / "History", "no folder");
    const auto found = await(recovery.recover());
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->entryID);
    EXPECT_TRUE(fs::exists(found->recording)) << "its user is told where it is";
    EXPECT_EQ(storage.crashRecoveryInfo.get(), info);

    fs::remove(folder / "History");
    EXPECT_EQ(await(recovery.recover())->entryID, id);
    expectOneFailure();
}

TEST_F(InterruptedDictations, AreTriedAgainAlsoWhenThereWasAnotherDictationMeanwhile)
{
    writeFile(folder / "History", "no folder");
    ASSERT_TRUE(await(recovery.recover()));
    ASSERT_TRUE(await(recorder.start({Uuid::random()})));
    EXPECT_NE(storage.crashRecoveryInfo.get(), info) << "killed now, the newer one is in danger";
    input.capture()->pushSilence(std::chrono::seconds(1));
    const auto recorded = await(recorder.stop());
    ASSERT_TRUE(recorded);
    recorder.settle();

    fs::remove(folder / "History");
    EXPECT_EQ(await(recovery.recover())->entryID, id);
    expectOneFailure();
    ASSERT_TRUE(await(recorder.start({Uuid::random()})));
    await(recorder.cancel());
    EXPECT_FALSE(storage.crashRecoveryInfo.get()) << "what was recovered does not come back";
}

TEST_F(InterruptedDictations, AreLeftAloneWhileADictationRuns)
{
    const auto lockFile = folder / "dictation.lock";
    {
        const auto running = ProcessLock::take(lockFile);
        ASSERT_TRUE(running);
        EXPECT_FALSE(await(recovery.recoverUnlessDictating(lockFile)));
        EXPECT_TRUE(fs::exists(abandoned));
        EXPECT_EQ(storage.crashRecoveryInfo.get(), info);
    }
    EXPECT_TRUE(await(recovery.recoverUnlessDictating(lockFile)));
    EXPECT_TRUE(ProcessLock::take(lockFile)) << "and the lock is given back";
    expectOneFailure();
}

TEST_F(InterruptedDictations, ThatCannotBeSavedYetAreNamed)
{
    fs::create_directories(recordings / ("VocalithRecovered-" + id.toString() + ".wav") / "in the way");
    const auto found = await(recovery.recover());
    ASSERT_TRUE(found);
    EXPECT_EQ(found->failure, RecordingRecoveryFailure::failed);
    EXPECT_EQ(found->recording, abandoned);
    EXPECT_TRUE(fs::exists(abandoned));
    EXPECT_EQ(storage.crashRecoveryInfo.get(), info);
}

} // namespace
