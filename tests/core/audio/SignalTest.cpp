#include "core/audio/AudioLevelMeter.h"
#include "core/audio/SilenceProbe.h"
#include "ports/AudioInput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace vocalith;

namespace {

std::vector<std::int16_t> sine(double amplitude, std::size_t count)
{
    std::vector<std::int16_t> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::int16_t>(
            std::lround(amplitude * std::sin(2 * std::numbers::pi * 400 * static_cast<double>(i) / kAudioSampleRate)));
    return samples;
}

PowerWindow windowOf(const std::vector<std::int16_t>& samples)
{
    PowerWindow window;
    window.add(samples);
    return window;
}

TEST(AudioLevelMeter, KnownTonesHaveTheirKnownPower)
{
    struct Case {
        double amplitude;
        float decibels, level;
    };
    for (const auto& [amplitude, decibels, level] : {Case{32767, -3.01F, 1}, Case{3276.7, -23.01F, 0.6398F},
                                                     Case{327.67, -43.01F, 0.2398F}, Case{32.767, -63.01F, 0}}) {
        const auto window = windowOf(sine(amplitude, 1600));
        EXPECT_NEAR(AudioLevelMeter::decibels(window), decibels, 0.1) << amplitude;
        EXPECT_NEAR(AudioLevelMeter::levelOf(decibels), level, 0.001) << amplitude;
    }
    EXPECT_EQ(AudioLevelMeter::decibels(windowOf(sine(0, 160))), -160);
    EXPECT_EQ(AudioLevelMeter::decibels({}), -160);
}

TEST(AudioLevelMeter, KeepsTheLastLevelsAndNoMore)
{
    AudioLevelMeter meter;
    const auto loud = windowOf(sine(32767, 1600));
    meter.read(loud);
    EXPECT_EQ(meter.audioLevel(), 1);
    ASSERT_EQ(meter.visualAudioLevels().size(), AudioLevelMeter::kVisualLevels);
    EXPECT_EQ(meter.visualAudioLevels().front(), 0);
    EXPECT_EQ(meter.visualAudioLevels().back(), 1);

    for (int i = 0; i < 10; ++i)
        meter.read({});
    EXPECT_EQ(meter.audioLevel(), 1) << "a capture that delivers large pieces makes the bars flicker";
    meter.read({});
    EXPECT_EQ(meter.audioLevel(), 0) << "a stalled capture shows a level for ever";

    for (int i = 0; i < 5000; ++i)
        meter.read(loud);
    EXPECT_EQ(meter.rawAudioPowerLevels().size(), AudioLevelMeter::kRawLevels);
    meter.reset();
    EXPECT_TRUE(meter.rawAudioPowerLevels().empty());
    EXPECT_EQ(meter.audioLevel(), 0);
}

TEST(SilenceProbe, TellsVoiceFromNoiseAndClicks)
{
    struct Case {
        std::vector<std::pair<double, std::size_t>> parts; // amplitude, samples
        const char* summary;
    };
    const Case cases[] = {
        {{{0, 16000}}, "SILENT, 0 of 16000 samples (max consecutive: 0)"},
        {{{60, 16000}}, "SILENT, 0 of 16000 samples (max consecutive: 0)"},
        {{{0, 1600}, {8000, 800}, {0, 1600}, {8000, 800}}, "SILENT, 1600 of 4800 samples (max consecutive: 800)"},
        {{{0, 1600}, {8000, 3200}, {0, 1600}, {8000, 160}}, "ACTIVE, 3360 of 6560 samples (max consecutive: 3200)"},
    };
    for (const auto& [parts, summary] : cases) {
        std::vector<std::int16_t> samples;
        for (const auto& [amplitude, count] : parts) {
            const auto part = sine(amplitude, count);
            samples.insert(samples.end(), part.begin(), part.end());
        }
        SilenceProbe probe;
        for (std::size_t at = 0; at < samples.size(); at += 100)
            probe.scan(std::span(samples).subspan(at, std::min<std::size_t>(100, samples.size() - at)));
        EXPECT_EQ(probe.summary(), summary);
    }
}

} // namespace
