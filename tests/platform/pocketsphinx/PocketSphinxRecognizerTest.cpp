#include "platform/pocketsphinx/PocketSphinxRecognizer.h"

#include "tests/support/Places.h"
#include "tests/support/SpokenAudio.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <limits>

#include <unistd.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

namespace fs = std::filesystem;
using Kind = SpeechRecognizerError::Kind;

constexpr auto kSentence = "I think we should meet at the station and walk to the restaurant together.";
const std::string kSentenceWords = "i think we should meet at the station and walk to the restaurant together";

std::vector<RecognizedSpan> recognize(const std::vector<float>& samples)
{
    PocketSphinxRecognizer recognizer;
    const auto words = recognizer.recognize(samples, "en", {}, {});
    EXPECT_TRUE(words) << userMessage(words.error());
    return words.value_or(std::vector<RecognizedSpan>());
}

void append(std::vector<float>& samples, const std::vector<float>& more)
{
    samples.insert(samples.end(), more.begin(), more.end());
}

TEST(PocketSphinxRecognizer, HearsMostWordsOfSpeech)
{
    const auto loud = spoken(kSentence);
    EXPECT_LE(wordErrorRate(kSentenceWords, joined(recognize(loud))), 0.3);
    auto quiet = loud;
    for (float& sample : quiet)
        sample = sample * 0.01F + 0.02F; // far from the microphone, on a sound card with an offset
    EXPECT_LE(wordErrorRate(kSentenceWords, joined(recognize(quiet))), 0.3);

    const auto recording = recognize(wavSamples(recordedSpeech()));
    EXPECT_LE(wordErrorRate("and so my fellow americans ask not what your country can do for you ask what you can do "
                            "for your country",
                            joined(recording)),
              0.4)
        << joined(recording);
}

TEST(PocketSphinxRecognizer, TimesHoldAcrossSilencesAndPieces)
{
    const auto sentence = spoken(kSentence);
    const double duration = static_cast<double>(sentence.size()) / 16000;
    std::vector<float> samples;
    std::vector<double> starts;
    for (const double pause : {1.0, 5.0, 2.0, 4.0, 6.0, 3.0}) {
        append(samples, silence(pause));
        starts.push_back(static_cast<double>(samples.size()) / 16000);
        append(samples, sentence);
    }
    ASSERT_GT(samples.size(), 31U * 16000) << "one piece would be enough";
    const auto words = recognize(samples);
    EXPECT_LE(wordErrorRate(kSentenceWords + " " + kSentenceWords + " " + kSentenceWords + " " + kSentenceWords + " " +
                                kSentenceWords + " " + kSentenceWords,
                            joined(words)),
              0.3)
        << joined(words);
    for (const double start : starts) {
        // The first words are said at once, the last one ends with the sentence.
        const auto inside = [&](const RecognizedSpan& word) {
            return word.start > start - 0.2 && word.end < start + duration + 0.2;
        };
        EXPECT_GE(std::count_if(words.begin(), words.end(), inside), 10) << "sentence at " << start;
        const auto first = std::find_if(words.begin(), words.end(), inside);
        ASSERT_NE(first, words.end());
        EXPECT_NEAR(first->start, start, 0.3);
    }
    const auto isBetween = [&](const RecognizedSpan& word) {
        return std::none_of(starts.begin(), starts.end(), [&](double start) {
            return word.start > start - 0.3 && word.end < start + duration + 0.3;
        });
    };
    EXPECT_EQ(std::count_if(words.begin(), words.end(), isBetween), 0) << "words were heard in silence";
}

TEST(PocketSphinxRecognizer, WhatIsNoSpeechGivesNoWordsAndNoHarm)
{
    EXPECT_TRUE(recognize(silence(3)).empty());
    EXPECT_TRUE(recognize(std::vector<float>(16000, std::numeric_limits<float>::quiet_NaN())).empty());

    auto damaged = spoken(kSentence);
    for (std::size_t i = 0; i < damaged.size(); i += 997)
        damaged[i] = i % 2 == 0 ? std::numeric_limits<float>::quiet_NaN() : std::numeric_limits<float>::infinity();
    for (const auto& word : recognize(damaged))
        EXPECT_FALSE(word.text.empty());
}

TEST(PocketSphinxRecognizer, AStopIsSeenInTheMiddleOfLongAudio)
{
    std::vector<float> samples;
    for (int i = 0; i < 20; ++i)
        append(samples, spoken(kSentence));
    PocketSphinxRecognizer recognizer;
    StopSource stop;
    double reached = 0;
    const auto stopped = recognizer.recognize(
        samples, "en",
        [&](double done) {
            reached = done;
            if (done > 0.01)
                stop.request_stop();
        },
        stop.get_token());
    ASSERT_FALSE(stopped);
    EXPECT_EQ(stopped.error().kind, Kind::cancelled);
    EXPECT_LT(reached, 0.05) << "much was decoded although nobody wanted it";
}

/// Prepares with a model of which one file is replaced, and says what that gave: "missing", "failed" or "ready".
std::string prepareWith(const fs::path& replaced, const std::optional<std::string>& content)
{
    const auto installed = installedPocketSphinxModel();
    const TemporaryFolder folder;
    fs::create_directories(folder / "en-us");
    for (const auto& entry : fs::recursive_directory_iterator(installed)) {
        const auto name = fs::relative(entry.path(), installed);
        if (entry.is_regular_file() && name != replaced)
            fs::create_symlink(entry.path(), folder / name);
    }
    if (content)
        writeFile(folder / replaced, *content);
    const auto prepared = PocketSphinxRecognizer(folder.path()).prepare();
    if (prepared)
        return "ready";
    if (prepared.error().kind == Kind::modelMissing && prepared.error().detail == folder / replaced)
        return "missing";
    return prepared.error().kind == Kind::failed ? "failed" : "wrong error: " + prepared.error().detail;
}

TEST(PocketSphinxRecognizerDeathTest, ADamagedModelIsAnErrorAndNeverEndsTheProgram)
{
    struct Case {
        fs::path file;
        const char* cutOff; ///< what half of the file gives
        const char* other;  ///< what a file of another kind gives
    };
    const std::vector<Case> cases{
        {"en-us.lm.bin", "missing", "missing"},
        {"cmudict-en-us.dict", "ready", "ready"}, // a text of which any line may be missing
        {"en-us/feat.params", "ready", "failed"},
        {"en-us/mdef", "missing", "missing"},
        {"en-us/means", "failed", "missing"},
        {"en-us/variances", "failed", "missing"},
        {"en-us/transition_matrices", "failed", "missing"},
        {"en-us/noisedict", "ready", "ready"},
        {"en-us/sendump", "missing", "missing"},
    };
    // In a child process: where the library fails it loses memory, and it may end the process.
    const auto check = [](const Case& damaged) {
        const auto whole = readFile(installedPocketSphinxModel() / damaged.file);
        const auto half = whole.substr(0, whole.size() / 2);
        const auto other = "no model\n" + whole.substr(whole.size() / 2);
        std::cerr << prepareWith(damaged.file, std::nullopt) << ' ' << prepareWith(damaged.file, "") << ' '
                  << prepareWith(damaged.file, half) << ' ' << prepareWith(damaged.file, other) << ";\n";
        ::_exit(0);
    };
    for (const auto& damaged : cases)
        EXPECT_EXIT(check(damaged), testing::ExitedWithCode(0),
                    std::string("missing missing ") + damaged.cutOff + " " + damaged.other + ";")
            << damaged.file;
}

TEST(PocketSphinxRecognizer, TheLibraryWritesNothingToTheTerminal)
{
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    recognize(silence(1));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
