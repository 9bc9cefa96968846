#include "app/whisper/WhisperCPPType.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/speech/whisper/WhisperModelFile.h"
#include "core/speech/whisper/WhisperTranscriptionService.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakePCMConverter.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/ScriptedWhisperModel.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <random>

#include <unistd.h>

using namespace vocalith;
using namespace vocalith::test;
using Kind = TranscriptionError::Kind;
using Outcome = Result<TranscriptionData, TranscriptionError>;

namespace {

const TranscriptionModelID kModel = std::string("model");

/// The service with the real library behind it.
class WhisperServiceTest : public testing::Test {
protected:
    WhisperServiceTest() { m_storage.whisperThreads.set(1); }

    Outcome transcribe(TranscriptionSource source = TranscriptionSource::dictation)
    {
        return await(m_service.transcribe({kModel, source}, "recording.wav", {}));
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder / "Models/model.bin";
    RecordedLog m_log;
    FakeClock m_clock;
    PersistentAppStorage m_storage{m_folder / "settings.json", m_clock, m_log.logger()};
    VoiceModelCatalogue m_catalogue;
    ModelFileManager m_files{m_folder / "Models", m_catalogue};
    FakePCMConverter m_converter;
    WhisperCPPType m_type{m_log.logger()};
    WhisperTranscriptionService m_service{m_storage, m_files, m_converter, m_type, m_clock, m_log.logger()};
};

TEST_F(WhisperServiceTest, AStopInTheMiddleOfADecodeIsAnsweredAtOnce)
{
    ScriptedWhisperModel().write(m_file);
    m_converter.samples.assign(std::size_t{300} * 16000, 0.0F);
    TaskScope scope;
    std::optional<Outcome> stopped;
    bool isDecoding = false;
    scope.start(storeResult(m_service.transcribe({kModel}, "long.wav", [&](double) { isDecoding = true; }), stopped));
    runUntil([&] { return isDecoding; });
    EXPECT_FALSE(stopped);
    scope.requestStop();
    drainMainThread();
    ASSERT_TRUE(stopped) << "the request waited for the library";
    EXPECT_EQ(stopped->error().kind, Kind::cancelled);

    m_converter.samples.resize(std::size_t{10} * 16000);
    const auto next = transcribe();
    ASSERT_TRUE(next);
    EXPECT_EQ(plainText(*next), "The quick brown fox jumps. Over the lazy dog, twice.");
    EXPECT_TRUE(m_log.has("failed to")) << "the first decode was not aborted";
}

TEST_F(WhisperServiceTest, AFileIsRecognisedWithTimesOfTheWhole)
{
    ScriptedWhisperModel scripted;
    scripted.segments = {{0, 2, "again"}};
    scripted.write(m_file);
    m_converter.samples.assign(std::size_t{65} * 16000, 0.0F);
    const auto transcript = transcribe(TranscriptionSource::file);
    ASSERT_TRUE(transcript);
    ASSERT_GE(transcript->segments.size(), 3U) << "one for each window at least";
    for (std::size_t i = 1; i < transcript->segments.size(); ++i)
        EXPECT_GE(transcript->segments[i].start, transcript->segments[i - 1].end);
    EXPECT_GE(transcript->segments.back().start, 60);
    EXPECT_LE(transcript->segments.back().end, 65);
}

TEST_F(WhisperServiceTest, TheLibraryNeverSeesADamagedModel)
{
    ScriptedWhisperModel().write(m_file);
    const auto content = readFile(m_file);
    for (const auto length :
         {std::size_t{0}, std::size_t{30}, std::size_t{60'000}, content.size() / 2, content.size() - 1}) {
        writeFile(m_file, std::string_view(content).substr(0, length));
        const auto refused = transcribe();
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().kind, Kind::modelDamaged) << length;
    }
    writeFile(m_file, content);
    EXPECT_TRUE(transcribe());
}

TEST_F(WhisperServiceTest, WhatTheVerificationLetsThroughTheLibraryDecodes)
{
    ScriptedWhisperModel().write(m_file);
    const auto content = readFile(m_file);
    const auto weights = content.find("encoder.positional_embedding");
    std::minstd_rand random(3);
    int accepted = 0;
    for (int round = 0; round < 200 && accepted < 4; ++round) {
        auto changed = content;
        // The header twice as often as the words: these are what the library does not check.
        const auto range = round % 3 == 0 ? weights : std::size_t{60};
        changed[random() % range] = static_cast<char>(random());
        if (changed == content)
            continue;
        writeFile(m_file, changed);
        if (!readWhisperModelFile(m_file))
            continue;
        ++accepted;
        const auto outcome = transcribe();
        EXPECT_TRUE(outcome || outcome.error().kind == Kind::noSpeech || outcome.error().kind == Kind::decodeFailed);
    }
    EXPECT_GT(accepted, 0);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // they keep freed memory
/// The memory of this process that is its own, in bytes.
std::size_t residentMemory()
{
    std::ifstream statistics("/proc/self/statm");
    std::size_t size = 0;
    std::size_t resident = 0;
    statistics >> size >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST_F(WhisperServiceTest, DisuseGivesTheMemoryBack)
{
    ScriptedWhisperModel scripted;
    scripted.size = ScriptedWhisperModel::Size::whisperTiny;
    scripted.write(m_file);
    const auto before = residentMemory();
    EXPECT_TRUE(transcribe());
    EXPECT_GT(residentMemory(), before + 60'000'000) << "the test sees no model in memory";
    m_clock.advance(WhisperTranscriptionService::kIdleTime);
    EXPECT_TRUE(runUntil([&] { return residentMemory() < before + 15'000'000; }));
}
#endif

} // namespace
