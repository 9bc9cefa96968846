#include "platform/pocketsphinx/PocketSphinxRecognizer.h"
#include "tests/support/FakeSpeechRecognizer.h"
#include "tests/support/SpokenAudio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Kind = SpeechRecognizerError::Kind;

/// What every recogniser must do, the fake that stands in for it too.
struct Candidate {
    std::string name;
    std::function<std::unique_ptr<SpeechRecognizer>()> working;
    std::function<std::unique_ptr<SpeechRecognizer>()> withoutModel;
};

std::unique_ptr<SpeechRecognizer> fake(std::optional<SpeechRecognizerError> error)
{
    auto recognizer = std::make_unique<FakeSpeechRecognizer>();
    recognizer->spans = {{"good", 0.2, 0.5}, {"morning", 0.5, 0.9}};
    recognizer->error = std::move(error);
    return recognizer;
}

class SpeechRecognizerContract : public testing::TestWithParam<Candidate> {
protected:
    std::unique_ptr<SpeechRecognizer> m_recognizer = GetParam().working();
    std::vector<float> m_speech = spoken("Good morning everybody.");
};

TEST_P(SpeechRecognizerContract, WordsComeInTimeOrderWithinTheAudioAndProgressNeverFalls)
{
    EXPECT_TRUE(m_recognizer->availability());
    EXPECT_FALSE(m_recognizer->displayName().empty());
    std::vector<double> progress;
    const auto words = m_recognizer->recognize(m_speech, "en", [&](double done) { progress.push_back(done); }, {});
    ASSERT_TRUE(words);
    ASSERT_GE(words->size(), 2U);
    double last = 0;
    for (const auto& word : *words) {
        EXPECT_FALSE(word.text.empty());
        EXPECT_EQ(word.text.find_first_of(" <>[]()"), std::string::npos) << word.text;
        EXPECT_GE(word.start, last);
        EXPECT_GT(word.end, word.start);
        last = word.start;
    }
    EXPECT_LE(words->back().end, static_cast<double>(m_speech.size()) / 16000);
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_GE(progress.front(), 0);
    EXPECT_EQ(progress.back(), 1);
}

TEST_P(SpeechRecognizerContract, AudioTooShortForAWordIsASuccessWithoutWords)
{
    for (const double seconds : {0.0, 0.001, 0.05}) {
        const auto words = m_recognizer->recognize(silence(seconds), "", {}, {});
        ASSERT_TRUE(words) << seconds;
        EXPECT_TRUE(words->empty()) << seconds;
    }
}

TEST_P(SpeechRecognizerContract, KnowsItsLanguagesAndRefusesOthersByName)
{
    auto languages = m_recognizer->languages();
    EXPECT_EQ(std::count(languages.begin(), languages.end(), "en"), 1);
    languages.insert(languages.end(), {"", "auto"});
    for (const auto& language : languages)
        EXPECT_TRUE(m_recognizer->recognize(silence(0.05), language, {}, {})) << language;
    const auto refused = m_recognizer->recognize(m_speech, "tlh", {}, {});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), (SpeechRecognizerError{Kind::languageUnsupported, "tlh"}));
}

TEST_P(SpeechRecognizerContract, AStopEndsARecognitionAndTheNextOneWorks)
{
    StopSource before;
    before.request_stop();
    StopSource during;
    for (const auto& token : {before.get_token(), during.get_token()}) {
        const auto stopped = m_recognizer->recognize(
            m_speech, "en", [&](double) { during.request_stop(); }, token);
        ASSERT_FALSE(stopped);
        EXPECT_EQ(stopped.error().kind, Kind::cancelled);
    }
    const auto words = m_recognizer->recognize(m_speech, "en", {}, {});
    ASSERT_TRUE(words);
    EXPECT_FALSE(words->empty());
}

TEST_P(SpeechRecognizerContract, PreparingAndReleasingMayBeRepeatedAndNeitherIsNeeded)
{
    m_recognizer->release();
    EXPECT_TRUE(m_recognizer->prepare());
    EXPECT_TRUE(m_recognizer->prepare());
    m_recognizer->release();
    m_recognizer->release();
    const auto words = m_recognizer->recognize(m_speech, "en", {}, {});
    ASSERT_TRUE(words);
    EXPECT_FALSE(words->empty());
}

TEST_P(SpeechRecognizerContract, WithoutItsModelEveryCallSaysSo)
{
    const auto recognizer = GetParam().withoutModel();
    const auto available = recognizer->availability();
    const auto prepared = recognizer->prepare();
    const auto recognized = recognizer->recognize(m_speech, "en", {}, {});
    ASSERT_FALSE(available);
    ASSERT_FALSE(prepared);
    ASSERT_FALSE(recognized);
    EXPECT_EQ(available.error().kind, Kind::modelMissing);
    EXPECT_FALSE(available.error().detail.empty());
    EXPECT_EQ(prepared.error(), available.error());
    EXPECT_EQ(recognized.error(), available.error());
}

INSTANTIATE_TEST_SUITE_P(
    Every, SpeechRecognizerContract,
    testing::Values(Candidate{"Fake", [] { return fake(std::nullopt); },
                              [] {
                                  return fake(SpeechRecognizerError{Kind::modelMissing, "model.bin"});
                              }},
                    Candidate{"PocketSphinx", [] { return std::make_unique<PocketSphinxRecognizer>(); },
                              [] { return std::make_unique<PocketSphinxRecognizer>("/nowhere"); }}),
    [](const auto& candidate) { return candidate.param.name; });

} // namespace
