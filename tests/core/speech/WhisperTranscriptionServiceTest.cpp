#include "core/speech/whisper/WhisperTranscriptionService.h"

#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/core/speech/FakeWhisperCPP.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakePCMConverter.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/ScriptedWhisperModel.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Kind = TranscriptionError::Kind;
using Request = WhisperTranscriptionService::Request;
using Outcome = Result<TranscriptionData, TranscriptionError>;

namespace {

constexpr std::size_t kMinute = std::size_t{60} * 16000;
const TranscriptionModelID kModel = std::string("model");

class WhisperTranscriptionServiceTest : public testing::Test {
protected:
    WhisperTranscriptionServiceTest() { ScriptedWhisperModel().write(m_folder / "Models/model.bin"); }

    Outcome transcribe(const Request& request, TranscriptionService::ProgressHandler progress = {})
    {
        return await(m_service.transcribe(request, "recording.wav", std::move(progress)));
    }
    std::string transcribeFailing(const Request& request)
    {
        const auto outcome = transcribe(request);
        return outcome ? "no failure" : userMessage(outcome.error());
    }

    TemporaryFolder m_folder;
    RecordedLog m_log;
    FakeClock m_clock;
    PersistentAppStorage m_storage{m_folder / "settings.json", m_clock, m_log.logger()};
    VoiceModelCatalogue m_catalogue;
    ModelFileManager m_files{m_folder / "Models", m_catalogue};
    FakePCMConverter m_converter;
    FakeWhisperCPPType m_type;
    WhisperTranscriptionService m_service{m_storage, m_files, m_converter, m_type, m_clock, m_log.logger()};
};

TEST_F(WhisperTranscriptionServiceTest, ASecondDictationLoadsNothing)
{
    EXPECT_TRUE(await(m_service.prepare({kModel})));
    EXPECT_EQ(m_type.loads().size(), 1U) << "loaded while the user speaks";
    const auto transcript = transcribe({kModel});
    ASSERT_TRUE(transcript);
    EXPECT_EQ(plainText(*transcript), "said");
    EXPECT_EQ(transcript->modelId, kModel);
    EXPECT_TRUE(await(m_service.prepare({kModel})));
    EXPECT_TRUE(transcribe({kModel}));
    EXPECT_EQ(m_type.loads().size(), 1U);
    EXPECT_TRUE(m_log.has("Full transcription completed in "));
}

TEST_F(WhisperTranscriptionServiceTest, EveryChangeReplacesTheModel)
{
    const std::vector<std::function<void(PersistentAppStorage&)>> changes = {
        [](auto& storage) { storage.whisperThreads.set(storage.whisperThreads.get() + 1); },
        [](auto& storage) { storage.whisperMaxSentenceLength.set(42); },
        [](auto& storage) { storage.whisperTranslateToEnglish.set(true); },
        [](auto& storage) { storage.whisperLanguage.set("de"); },
        [](auto& storage) { storage.whisperTemperature.set(0.25F); },
        [](auto& storage) { storage.whisperPrompt.set("Vocalith"); },
        [](auto& storage) { storage.whisperFixRepetitions.set(!storage.whisperFixRepetitions.get()); },
    };
    EXPECT_TRUE(transcribe({kModel}));
    for (std::size_t i = 0; i < changes.size(); ++i) {
        changes[i](m_storage);
        EXPECT_TRUE(transcribe({kModel}));
        EXPECT_EQ(m_type.loads().size(), i + 2);
    }
    const auto settings = m_type.loads().back().settings;
    EXPECT_EQ(settings, readWhisperSettings(m_storage));
    EXPECT_EQ(settings.whisperLanguage, WhisperLanguage::de);
    EXPECT_EQ(settings.whisperPrompt, "Vocalith");

    EXPECT_TRUE(transcribe({kModel, TranscriptionSource::file}));
    EXPECT_EQ(m_type.loads().back().source, TranscriptionSource::file);
    EXPECT_TRUE(transcribe({kModel, TranscriptionSource::file, {"Polish"}}));
    EXPECT_EQ(m_type.loads().back().settings.whisperLanguage, WhisperLanguage::pl);

    ScriptedWhisperModel().write(m_folder / "Models/other.bin");
    EXPECT_TRUE(transcribe({std::string("other")}));
    EXPECT_EQ(m_type.loads().back().modelFile.filename(), "other.bin");
    EXPECT_EQ(m_type.mostLoaded, 1) << "two models were in memory at a time";
}

TEST_F(WhisperTranscriptionServiceTest, ANewFileUnderTheSameNameIsLoadedAndVerified)
{
    EXPECT_TRUE(transcribe({kModel}));
    writeFile(m_folder / "Models/model.bin", "something else");
    const auto refused = transcribe({kModel});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, Kind::modelDamaged);
    EXPECT_THAT(userMessage(refused.error()), testing::HasSubstr((m_folder / "Models/model.bin").string()));
    EXPECT_EQ(m_type.loads().size(), 1U) << "the library saw a damaged file";
}

TEST_F(WhisperTranscriptionServiceTest, AStopIsAnsweredAtOnceAndTheNextRequestGoesThrough)
{
    m_type.waitsForCancel = true;
    TaskScope scope;
    std::optional<Outcome> stopped;
    int reports = 0;
    scope.start(storeResult(m_service.transcribe({kModel}, "recording.wav", [&](double) { ++reports; }), stopped));
    runUntil([&] { return m_type.decoding == 1; });
    scope.requestStop();
    drainMainThread();
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->error().kind, Kind::cancelled);
    const int reportsThen = reports;
    runUntil([&] { return m_type.decoding == 0; });
    m_type.waitsForCancel = false;
    EXPECT_TRUE(transcribe({kModel}));
    EXPECT_EQ(m_type.loads().size(), 1U) << "the model was loaded again after the stop";
    EXPECT_EQ(reports, reportsThen) << "progress was reported to a request that had ended";
}

TEST_F(WhisperTranscriptionServiceTest, FreesTheModelAfterDisuseAndArmsNoTimerWithoutOne)
{
    EXPECT_EQ(m_clock.pendingTimers(), 0U);
    EXPECT_FALSE(transcribe({std::string("absent")}));
    EXPECT_EQ(m_clock.pendingTimers(), 0U);
    EXPECT_TRUE(await(m_service.prepare({kModel})));
    m_clock.advance(4min);
    EXPECT_TRUE(transcribe({kModel}));
    m_clock.advance(WhisperTranscriptionService::kIdleTime - 1s);
    EXPECT_EQ(m_type.loaded, 1);
    m_clock.advance(1s);
    runUntil([&] { return m_type.loaded == 0; });
    EXPECT_EQ(m_clock.pendingTimers(), 0U);
    EXPECT_TRUE(transcribe({kModel}));
    EXPECT_EQ(m_type.loads().size(), 2U);
}

TEST_F(WhisperTranscriptionServiceTest, SaysWhatWentWrong)
{
    EXPECT_EQ(transcribeFailing({std::string("absent")}), "Model not found: absent");
    EXPECT_EQ(transcribeFailing({kModel, TranscriptionSource::dictation, {"klingon"}}),
              "The model does not know the language \"klingon\". Choose another.");
    m_type.isSilent = true;
    EXPECT_EQ(transcribeFailing({kModel}), "No speech detected");
    m_converter.error = ConversionError{ConversionError::Kind::noAudio, {}, "stream 0"};
    EXPECT_EQ(transcribeFailing({kModel}), "Audio conversion failed.");
    EXPECT_EQ(transcribeFailing({kModel, TranscriptionSource::file}),
              "Audio conversion failed. \"recording.wav\" has no audio track.");
    EXPECT_TRUE(m_log.has("stream 0"));
}

TEST_F(WhisperTranscriptionServiceTest, CutsLongFilesWhereItIsQuiet)
{
    m_converter.samples.assign(25 * kMinute, 0.5F);
    const auto quiet = m_converter.samples.begin() + static_cast<std::ptrdiff_t>(10 * kMinute - 5 * 16000);
    std::fill(quiet, quiet + 8000, 0.001F);
    std::vector<double> progress;
    const auto transcript =
        transcribe({kModel, TranscriptionSource::file}, [&](double value) { progress.push_back(value); });
    ASSERT_TRUE(transcript);
    const auto buffers = m_type.buffers();
    ASSERT_EQ(buffers.size(), 3U);
    EXPECT_GE(buffers[0], 10 * kMinute - 5 * 16000);
    EXPECT_LE(buffers[0], 10 * kMinute - 5 * 16000 + 8000) << "not cut in the pause";
    EXPECT_LE(buffers[1], 10 * kMinute);
    EXPECT_EQ(buffers[0] + buffers[1] + buffers[2], 25 * kMinute) << "audio was lost";
    ASSERT_EQ(transcript->segments.size(), 3U);
    EXPECT_DOUBLE_EQ(transcript->segments[1].start, static_cast<double>(buffers[0]) / 16000);
    EXPECT_DOUBLE_EQ(transcript->segments[2].end, static_cast<double>(buffers[0] + buffers[1]) / 16000 + 1);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_DOUBLE_EQ(progress.back(), 1.0);

    EXPECT_TRUE(transcribe({kModel, TranscriptionSource::dictation}));
    EXPECT_EQ(m_type.buffers().size(), 4U) << "a dictation is one piece";
}

TEST_F(WhisperTranscriptionServiceTest, AFailureInTheMiddleOfAFileFailsTheWhole)
{
    m_converter.samples.assign(15 * kMinute, 0.5F);
    m_converter.failAfter = 12 * kMinute;
    EXPECT_THAT(transcribeFailing({kModel, TranscriptionSource::file}),
                testing::StartsWith("Audio conversion failed."));
}

} // namespace
