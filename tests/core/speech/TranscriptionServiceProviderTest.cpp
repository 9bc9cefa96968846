#include "core/speech/TranscriptionServiceProvider.h"

#include "core/speech/LocalAudioTranscriptionService.h"
#include "core/speech/PlatformTranscriptionService.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/core/speech/FakeWhisperCPP.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakePCMConverter.h"
#include "tests/support/FakeSpeechRecognizer.h"
#include "tests/support/MainLoop.h"
#include "tests/support/ScriptedWhisperModel.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using Kind = TranscriptionError::Kind;
using testing::HasSubstr;

namespace {

class TranscriptionServiceProviderTest : public testing::Test {
protected:
    TranscriptionError refusal(const TranscriptionModelID& model, PlatformTraits traits = {}) const
    {
        const TranscriptionServiceProvider provider(m_catalogue, m_files, traits, m_whisper, m_platform);
        const auto service = provider.service(model, TranscriptionSource::dictation);
        return service ? TranscriptionError{} : service.error();
    }

    TemporaryFolder m_folder;
    FakeClock m_clock;
    PersistentAppStorage m_storage{m_folder / "settings.json", m_clock, Logger()};
    VoiceModelCatalogue m_catalogue;
    ModelFileManager m_files{m_folder / "Models", m_catalogue};
    FakePCMConverter m_converter;
    FakeWhisperCPPType m_type;
    FakeSpeechRecognizer m_recognizer;
    mutable WhisperTranscriptionService m_whisper{m_storage, m_files, m_converter, m_type, m_clock, Logger()};
    mutable PlatformRecognitionEngine m_platform{m_recognizer, m_converter, m_clock, Logger()};
    TranscriptionServiceProvider m_provider{m_catalogue, m_files, {}, m_whisper, m_platform};
};

TEST_F(TranscriptionServiceProviderTest, LeadsEachModelToItsEngine)
{
    ScriptedWhisperModel().write(*m_files.expectedFile(PredefinedModelID::tiny));
    ScriptedWhisperModel().write(m_folder / "Models/mine.bin");
    for (const TranscriptionModelID& model :
         {TranscriptionModelID(PredefinedModelID::tiny), TranscriptionModelID(std::string("mine"))}) {
        const auto service = m_provider.service(model, TranscriptionSource::file, {"German"});
        ASSERT_TRUE(service);
        EXPECT_EQ((*service)->modelId(), model);
        const auto transcript = await((*service)->transcribe("a.wav", {}));
        ASSERT_TRUE(transcript);
        EXPECT_EQ(transcript->modelId, model);
        EXPECT_EQ(m_type.loads().back().settings.whisperLanguage, WhisperLanguage::de);
    }
    const auto platform = m_provider.service(std::string(kSpeechTranscriberID), TranscriptionSource::dictation);
    ASSERT_TRUE(platform);
    EXPECT_NE(dynamic_cast<PlatformTranscriptionService*>(platform->get()), nullptr);
}

TEST_F(TranscriptionServiceProviderTest, RefusesWhatCannotBeUsedAndNamesIt)
{
    EXPECT_EQ(refusal(std::string("absent")), (TranscriptionError{Kind::modelNotFound, "absent"}));
    EXPECT_EQ(refusal(PredefinedModelID::small), (TranscriptionError{Kind::modelNotFound, "small"}));
    const PlatformTraits intel{true, true, false};
    const std::vector<std::pair<TranscriptionModelID, std::string>> cases = {
        {PredefinedModelID::parakeetTDT06V2, "not compatible with Intel Macs"},
        {PredefinedModelID::parakeetTDT06, "\"NVIDIA Parakeet TDT 0.6B V3\" cannot be used"},
        {PredefinedModelID::parakeetEou, "\"NVIDIA Parakeet EOU 120M\" cannot be used"},
        {PredefinedModelID::qwen3ASR, "\"Qwen3-ASR 0.6B\" cannot be used"},
        {std::string(kSpeechAnalyzerID), "Apple Speech Analyzer requires"},
        {PredefinedModelID::nova3, "\"Real-time Nova-3\" is an online model"},
        {PredefinedModelID::groq, "is an online model"},
    };
    for (const auto& [model, sentence] : cases) {
        const auto error = refusal(model, intel);
        EXPECT_EQ(error.kind, Kind::unavailable) << toString(model);
        EXPECT_THAT(userMessage(error), HasSubstr(sentence));
    }
}

} // namespace
