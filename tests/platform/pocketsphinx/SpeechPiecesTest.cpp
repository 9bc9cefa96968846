#include "platform/pocketsphinx/SpeechPieces_p.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace vocalith;

namespace {

constexpr std::size_t kRate = 16000;

/// A tone with pauses of 0.4 s, each around one of the given seconds.
std::vector<float> toneWithPauses(double seconds, const std::vector<double>& pauses)
{
    std::vector<float> samples(static_cast<std::size_t>(seconds * kRate));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = 0.5F * std::sin(static_cast<float>(i) * 0.2F);
    for (const double pause : pauses) {
        const auto begin = static_cast<std::size_t>((pause - 0.2) * kRate);
        std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(begin), kRate * 4 / 10, 0.001F);
    }
    return samples;
}

TEST(SpeechPieces, CoverTheAudioWithoutGapsAndAreNeitherLongNorTiny)
{
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, 30 * kRate, 30 * kRate + 1, 61 * kRate, 600 * kRate}) {
        const auto pieces = piecesCutAtPauses(std::vector<float>(size, 0.1F));
        std::size_t end = 0;
        for (const auto& piece : pieces) {
            EXPECT_EQ(piece.begin, end);
            EXPECT_GT(piece.end, piece.begin);
            EXPECT_LE(piece.end - piece.begin, 30 * kRate);
            if (pieces.size() > 1) {
                EXPECT_GE(piece.end - piece.begin, 5 * kRate) << "of " << size;
            }
            end = piece.end;
        }
        EXPECT_EQ(end, size);
    }
}

TEST(SpeechPieces, AreCutInTheMiddleOfAPauseNotInsideAWord)
{
    auto samples = toneWithPauses(70, {3, 18, 45, 66});
    // A closure inside a word: quieter than the pause, but short.
    std::fill_n(samples.begin() + 22 * kRate, kRate / 20, 0.0F);
    const auto pieces = piecesCutAtPauses(samples);
    ASSERT_EQ(pieces.size(), 3U);
    EXPECT_NEAR(static_cast<double>(pieces[0].end) / kRate, 18, 0.15);
    EXPECT_NEAR(static_cast<double>(pieces[1].end) / kRate, 45, 0.15);
}

TEST(SpeechPieces, SamplesBecomeNearlyFullScaleWhateverComes)
{
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::vector<float> quiet{0.1F, -0.05F, kNan, kInfinity, -kInfinity, 0};
    EXPECT_FLOAT_EQ(gainFor(quiet), 9);
    EXPECT_EQ(to16Bit(quiet, gainFor(quiet)), (std::vector<std::int16_t>{29490, -14745, 0, 0, 0, 0}));
    EXPECT_EQ(to16Bit(std::vector<float>{3, -1e30F}, gainFor(std::vector<float>{3, -1e30F})),
              (std::vector<std::int16_t>{32767, -32767}));
    EXPECT_FLOAT_EQ(gainFor(std::vector<float>(100, 0.0F)), 1);
    EXPECT_FLOAT_EQ(gainFor(std::vector<float>(100, 1e-6F)), 30) << "noise was blown up to speech";
}

} // namespace
