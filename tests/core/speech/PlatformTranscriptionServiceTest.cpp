#include "core/speech/PlatformTranscriptionService.h"

#include "core/speech/SpanSegments.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakePCMConverter.h"
#include "tests/support/FakeSpeechRecognizer.h"
#include "tests/support/MainLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Kind = TranscriptionError::Kind;

namespace {

TEST(SpanSegments, EndAtPausesAndAtTwelveSeconds)
{
    const auto pauses = segmentsOf({{"one", 0.5, 0.8}, {"two", 1.3, 1.75}, {"three", 2.5, 3}}, 100);
    ASSERT_EQ(pauses.size(), 2U);
    EXPECT_EQ(pauses[0].text, "one two");
    EXPECT_EQ(pauses[0].start, 100.5);
    EXPECT_EQ(pauses[0].end, 101.75);
    EXPECT_EQ(pauses[1].text, "three");
    EXPECT_EQ(pauses[1].start, 102.5);

    std::vector<RecognizedSpan> withoutPause;
    withoutPause.reserve(30);
    for (int i = 0; i < 30; ++i)
        withoutPause.push_back({"word", static_cast<double>(i), i + 1.0});
    for (const auto& segment : segmentsOf(withoutPause, 0))
        EXPECT_LE(segment.end - segment.start, 12);
    EXPECT_EQ(segmentsOf(withoutPause, 0).size(), 3U);
    EXPECT_EQ(segmentsOf({{"long", 0, 20}}, 0).size(), 1U);
}

class PlatformTranscriptionServiceTest : public testing::Test {
protected:
    FakeClock m_clock;
    FakePCMConverter m_converter;
    FakeSpeechRecognizer m_recognizer;
    PlatformRecognitionEngine m_engine{m_recognizer, m_converter, m_clock, Logger()};
    PlatformTranscriptionService m_service{m_engine, {std::string("appleSpeechTranscriber")}};
};

TEST_F(PlatformTranscriptionServiceTest, TellsThatItLoadsAndWhatItHeard)
{
    m_recognizer.spans = {{"hello", 0.1, 0.4}, {"there", 0.5, 0.9}};
    std::vector<TranscriptionState> states;
    const auto subscription = m_service.textEvents().subscribe([&](const auto& state) { states.push_back(state); });
    EXPECT_TRUE(await(m_service.start()));
    EXPECT_TRUE(m_recognizer.isPrepared());
    const auto transcript = await(m_service.transcribe("recording.wav", {}));
    ASSERT_TRUE(transcript);
    EXPECT_EQ(plainText(*transcript), "hello there");
    EXPECT_EQ(transcript->modelId, m_service.modelId());
    ASSERT_EQ(states.size(), 3U);
    EXPECT_TRUE(states[0].isLoading);
    EXPECT_FALSE(states[1].isLoading);
    EXPECT_EQ(states[2].final, "hello there");

    m_clock.advance(PlatformRecognitionEngine::kIdleTime);
    runUntil([&] { return !m_recognizer.isPrepared(); });
}

TEST_F(PlatformTranscriptionServiceTest, PassesTheLanguageAsACode)
{
    m_recognizer.spans = {{"hello", 0.1, 0.4}};
    const auto transcribeIn = [&](std::optional<std::string> language) {
        PlatformTranscriptionService service(m_engine,
                                             {m_service.modelId(), TranscriptionSource::file, {std::move(language)}});
        return await(service.transcribe("recording.wav", {}));
    };
    EXPECT_TRUE(transcribeIn(std::nullopt));
    EXPECT_EQ(m_recognizer.calls().back().language, "auto");
    EXPECT_TRUE(transcribeIn("English"));
    EXPECT_EQ(m_recognizer.calls().back().language, "en");
    const auto refused = transcribeIn("klingon");
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, Kind::unavailable);
    EXPECT_THAT(userMessage(refused.error()), testing::HasSubstr("klingon"));
}

TEST_F(PlatformTranscriptionServiceTest, SaysWhatTheRecogniserSays)
{
    EXPECT_EQ(await(m_service.transcribe("recording.wav", {})).error().kind, Kind::noSpeech);
    m_recognizer.error = SpeechRecognizerError{SpeechRecognizerError::Kind::modelMissing, "en-us"};
    const auto refused = await(m_service.start());
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, Kind::unavailable);
    EXPECT_EQ(userMessage(refused.error()), userMessage(*m_recognizer.error));
}

TEST_F(PlatformTranscriptionServiceTest, AStopIsAnsweredAtOnce)
{
    std::atomic<bool> isIn = false;
    std::atomic<bool> goesOn = false;
    m_recognizer.whileRecognizing = [&] {
        isIn = true;
        goesOn.wait(false);
    };
    TaskScope scope;
    std::optional<Result<TranscriptionData, TranscriptionError>> stopped;
    scope.start(storeResult(m_service.transcribe("recording.wav", {}), stopped));
    runUntil([&] { return isIn.load(); });
    scope.requestStop();
    drainMainThread();
    ASSERT_TRUE(stopped) << "the request waited for the recogniser";
    EXPECT_EQ(stopped->error().kind, Kind::cancelled);
    goesOn = true;
    goesOn.notify_all();
    EXPECT_TRUE(await(m_service.start())) << "the recogniser did not become free";
}

} // namespace
