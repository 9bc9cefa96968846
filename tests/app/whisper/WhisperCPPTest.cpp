#include "app/whisper/WhisperCPP.h"
#include "app/whisper/WhisperCPPType.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/ScriptedWhisperModel.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>

using namespace vocalith;
using namespace vocalith::test;
using Kind = TranscriptionError::Kind;
using testing::ElementsAre;

namespace {

const std::string kEnglish = "The quick brown fox jumps. Over the lazy dog, twice.";
const std::string kTranslated = "Translated text instead.";
constexpr std::size_t kSecond = 16000;

WhisperSettings oneThread()
{
    WhisperSettings settings;
    settings.whisperThreads = 1;
    return settings;
}

/// Decodes ten seconds of silence: the scripted models do not listen.
class WhisperCPPTest : public testing::Test {
protected:
    static void SetUpTestSuite() { s_folder = std::make_unique<TemporaryFolder>(); }
    static void TearDownTestSuite() { s_folder.reset(); }

    static std::filesystem::path model(const std::string& name, const ScriptedWhisperModel& model)
    {
        auto file = *s_folder / (name + ".bin");
        if (!std::filesystem::exists(file))
            model.write(file);
        return file;
    }
    static std::filesystem::path english() { return model("english", {}); }
    static std::filesystem::path multilingual()
    {
        ScriptedWhisperModel scripted;
        scripted.multilingual = true;
        scripted.detectedLanguage = 2; // German
        return model("multilingual", scripted);
    }

    std::unique_ptr<WhisperCPPDependencyProtocol> load(const std::filesystem::path& file,
                                                       const WhisperSettings& settings = oneThread(),
                                                       TranscriptionSource source = TranscriptionSource::file)
    {
        auto loaded = m_type.create(file, false, "test", source, settings);
        EXPECT_TRUE(loaded);
        return std::move(*loaded);
    }

    std::string decode(const std::filesystem::path& file, const WhisperSettings& settings = oneThread(),
                       TranscriptionSource source = TranscriptionSource::file)
    {
        const auto transcript = load(file, settings, source)->transcribe(m_samples, {});
        return transcript ? transcript->text : userMessage(transcript.error());
    }

    RecordedLog m_log;
    WhisperCPPType m_type{m_log.logger()};
    std::vector<float> m_samples = std::vector<float>(10 * kSecond);

private:
    static inline std::unique_ptr<TemporaryFolder> s_folder;
};

std::vector<std::pair<double, double>> times(const WhisperTranscript& transcript)
{
    std::vector<std::pair<double, double>> times;
    for (const auto& segment : transcript.segments)
        times.emplace_back(segment.start, segment.end);
    return times;
}

TEST_F(WhisperCPPTest, DecodesToTrimmedSegmentsInSeconds)
{
    ScriptedWhisperModel scripted;
    scripted.segments = {{0.0, 1.4, "One two"}, {1.5, 4.2, "three"}, {4.3, 12.0, "four"}};
    const auto whisper = load(model("times", scripted));
    std::vector<int> progress;
    const auto transcript = whisper->transcribe(m_samples, [&](int percent) { progress.push_back(percent); });
    ASSERT_TRUE(transcript);
    EXPECT_EQ(transcript->text, "One two three four");
    EXPECT_THAT(times(*transcript), ElementsAre(std::pair(0.0, 1.4), std::pair(1.5, 4.2), std::pair(4.3, 10.0)))
        << "the last one goes beyond the end of the audio";
    EXPECT_EQ(transcript->segments.front().text, "One two");
    EXPECT_THAT(progress, testing::Contains(0));
    EXPECT_THAT(progress, testing::Contains(100));
}

TEST_F(WhisperCPPTest, DecidesLanguageAndTranslation)
{
    struct Case {
        WhisperLanguage language;
        bool translate;
        std::string expected;
        std::string config;
    };
    const std::vector<Case> cases = {
        {WhisperLanguage::en, true, kEnglish, "language: 'en', translate: false"},
        {WhisperLanguage::automatic, true, kTranslated, "language: 'en', translate: true"},
        {WhisperLanguage::de, true, kTranslated, "language: 'en', translate: true"},
        {WhisperLanguage::de, false, kEnglish, "language: 'de', translate: false"},
        {WhisperLanguage::automatic, false, kEnglish, "language: '', translate: false, detect language: false"},
    };
    for (const auto& [language, translate, expected, config] : cases) {
        SCOPED_TRACE(config);
        auto settings = oneThread();
        settings.whisperLanguage = language;
        settings.whisperTranslateToEnglish = translate;
        EXPECT_EQ(decode(multilingual(), settings), expected);
        EXPECT_TRUE(m_log.has("Whisper config - " + config));
    }
    EXPECT_TRUE(m_log.has("auto-detected language: de")) << "the library's own output goes to the log";
}

TEST_F(WhisperCPPTest, DetectsNothingWithAModelThatKnowsEnglishOnly)
{
    EXPECT_EQ(decode(english()), kEnglish);
    EXPECT_TRUE(m_log.has("language: 'en'"));
}

TEST_F(WhisperCPPTest, RefusesALanguageThatTheModelHasNoTokenFor)
{
    // Cantonese came with the models of 100 languages; in those of 99 its number means "translate".
    auto settings = oneThread();
    settings.whisperLanguage = WhisperLanguage::yue;
    const auto refused = load(multilingual(), settings)->transcribe(m_samples, {});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), (TranscriptionError{Kind::languageUnknown, "Cantonese"}));
}

TEST_F(WhisperCPPTest, PassesThePromptUnlessRepetitionsAreFixed)
{
    ScriptedWhisperModel scripted;
    scripted.driver = ScriptedWhisperModel::Driver::position;
    scripted.segments = {{0, 9, "one two three four five six seven"}};
    const auto file = model("position", scripted);
    auto settings = oneThread();
    EXPECT_EQ(decode(file, settings), "one two three four five six seven");
    settings.whisperPrompt = "ab"; // a marker and two tokens, before the start
    EXPECT_EQ(decode(file, settings), "three four five six seven");
    settings.whisperFixRepetitions = true;
    EXPECT_EQ(decode(file, settings), "one two three four five six seven");
}

TEST_F(WhisperCPPTest, TakesPromptsOfAnyLength)
{
    auto settings = oneThread();
    for (int i = 0; i < 200'000; ++i)
        settings.whisperPrompt += "語"; // without a space the library's regular expression would need a deep stack
    EXPECT_EQ(decode(english(), settings), kEnglish);
}

TEST_F(WhisperCPPTest, LimitsSegmentsOnlyToAPositiveLength)
{
    for (const auto& [limit, expected] : {std::pair{10, 6U}, std::pair{0, 2U}, std::pair{-5, 2U}}) {
        auto settings = oneThread();
        settings.whisperMaxSentenceLength = limit;
        const auto transcript = load(english(), settings)->transcribe(m_samples, {});
        ASSERT_TRUE(transcript);
        EXPECT_EQ(transcript->text, kEnglish);
        EXPECT_EQ(transcript->segments.size(), expected) << limit;
    }
}

TEST_F(WhisperCPPTest, SuppressesSoundsInDictationsOnly)
{
    ScriptedWhisperModel scripted;
    scripted.segments = {{0, 9, "before ♪ after"}};
    const auto file = model("music", scripted);
    EXPECT_EQ(decode(file, oneThread(), TranscriptionSource::file), "before ♪ after");
    EXPECT_EQ(decode(file, oneThread(), TranscriptionSource::dictation), "before after");
}

TEST_F(WhisperCPPTest, TemperaturesThatTheLibraryCannotUseAreLimited)
{
    auto settings = oneThread();
    for (const float temperature : {-1.0F, std::numeric_limits<float>::quiet_NaN()}) {
        settings.whisperTemperature = temperature;
        EXPECT_EQ(decode(english(), settings), kEnglish) << temperature;
    }
    settings.whisperTemperature = 5;
    EXPECT_NE(decode(english(), settings), "") << "above 1 the library decodes nothing";
}

#if !defined(__SANITIZE_THREAD__) // it does not see how OpenMP's threads wait for each other
TEST_F(WhisperCPPTest, ChoosesTheNumberOfThreadsWhenNoneIsSet)
{
    auto settings = oneThread();
    settings.whisperThreads = 0;
    EXPECT_EQ(decode(english(), settings), kEnglish);
}
#endif

TEST_F(WhisperCPPTest, DecodesNothingOutOfNothing)
{
    const auto whisper = load(english());
    ASSERT_TRUE(whisper->transcribe(m_samples, {}));
    const auto nothing = whisper->transcribe({}, {});
    ASSERT_TRUE(nothing);
    EXPECT_EQ(nothing->text, "") << "the audio of the run before was decoded again";
    const auto little = whisper->transcribe(std::vector<float>(kSecond / 20), {});
    ASSERT_TRUE(little);
    EXPECT_TRUE(little->segments.empty());
}

TEST_F(WhisperCPPTest, ACancelledDecodeEndsAndTheModelDecodesAgain)
{
    const auto whisper = load(english());
    const std::vector<float> fiveMinutes(300 * kSecond);
    int calls = 0;
    const auto cancelled = whisper->transcribe(fiveMinutes, [&](int) {
        if (++calls == 2)
            whisper->cancel();
    });
    ASSERT_FALSE(cancelled);
    EXPECT_EQ(cancelled.error().kind, Kind::cancelled);
    EXPECT_EQ(calls, 2);
    const auto transcript = whisper->transcribe(m_samples, {});
    ASSERT_TRUE(transcript);
    EXPECT_EQ(transcript->text, kEnglish);
}

TEST_F(WhisperCPPTest, ReportsAMissingContext)
{
    const auto whisper = load(english());
    whisper->release();
    whisper->release();
    const auto transcript = whisper->transcribe(m_samples, {});
    ASSERT_FALSE(transcript);
    EXPECT_EQ(userMessage(transcript.error()), "Whisper context not initialized.");
}

TEST_F(WhisperCPPTest, ReportsAModelThatTheLibraryRefuses)
{
    const auto loaded = m_type.create("/nowhere/model.bin", false, "test", TranscriptionSource::file, oneThread());
    ASSERT_FALSE(loaded);
    EXPECT_EQ(userMessage(loaded.error()),
              "Failed to initialize Whisper. Please check model file availability at: /nowhere/model.bin");
}

} // namespace
