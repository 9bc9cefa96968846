#include "tests/platform/media/Sound.h"
#include "tests/platform/media/Conversion.h"
#include "tests/platform/media/EncodedMedia.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Coding = WavForm::Coding;

void expectTone(std::span<const float> samples, double seconds, double tolerance, double amplitudeTolerance = 0.01)
{
    const auto sound = measure(samples, 440);
    EXPECT_NEAR(sound.seconds, seconds, tolerance);
    EXPECT_NEAR(sound.amplitude, 0.5, amplitudeTolerance);
    EXPECT_LT(sound.rest, 0.02) << "something else than the tone is in the sound";
}

TEST(ConvertedSound, AToneSurvivesEveryFormOfWav)
{
    const WavForm forms[] = {
        {.rate = 16000},
        {.rate = 8000},
        {.rate = 11025},
        {.rate = 44100, .channels = 2},
        {.rate = 48000, .channels = 2, .bits = 24},
        {.rate = 192000, .channels = 2},
        {.rate = 768000, .bits = 32},
        {.rate = 22050, .bits = 8},
        {.rate = 48000, .bits = 32},
        {.rate = 16000, .bits = 32, .coding = Coding::floating},
        {.rate = 96000, .channels = 2, .bits = 64, .coding = Coding::floating},
        {.rate = 8000, .bits = 8, .coding = Coding::muLaw},
        {.rate = 48000, .channels = 8, .extensible = true, .mask = 0x63F}, // 7.1
        {.rate = 48000, .channels = 6, .extensible = true, .mask = 0x3F},  // 5.1
        {.rate = 48000, .channels = 8},                                    // speakers unknown
        {.rate = 16000, .channels = 9, .extensible = true},                // no usual layout has nine
        {.rate = 16000, .channels = 4, .extensible = true, .mask = 0x3},   // a mask that does not fit
        {.rate = 16000, .channels = 1, .extensible = true, .mask = 0x8},   // the low-frequency speaker alone
        {.rate = 16000, .channels = 64},
    };
    const TemporaryFolder folder;
    for (const auto& form : forms) {
        SCOPED_TRACE(testing::Message() << form.rate << " Hz, " << form.channels << " channels, " << form.bits
                                        << " bits, coding " << static_cast<int>(form.coding) << ", mask " << form.mask);
        const auto samples = converted(folder, wavOfTone(form, 1.5));
        ASSERT_TRUE(samples) << samples.error().detail;
        expectTone(*samples, 1.5, 0.001);
    }
}

TEST(ConvertedSound, AToneSurvivesEveryUsualContainerAndCodec)
{
    const MediaForm forms[] = {
        {.muxer = "ipod", .audioEncoder = "aac"},
        {.muxer = "ipod", .audioEncoder = "alac", .rate = 44100, .channels = 1},
        {.muxer = "mp3", .audioEncoder = "libmp3lame", .rate = 44100},
        {.muxer = "mp3", .audioEncoder = "libmp3lame", .coverArt = true},
        {.muxer = "flac", .audioEncoder = "flac", .rate = 96000},
        {.muxer = "ogg", .audioEncoder = "libopus"},
        {.muxer = "ogg", .audioEncoder = "libvorbis", .rate = 44100},
        {.muxer = "webm", .audioEncoder = "libopus", .channels = 6},
        {.muxer = "aiff", .audioEncoder = "pcm_s16be"},
        {.muxer = "caf", .audioEncoder = "pcm_f32le", .rate = 22050, .channels = 1},
        {.muxer = "adts", .audioEncoder = "aac", .rate = 32000},
        {.muxer = "mp4", .audioEncoder = "aac", .video = true},
        {.muxer = "mov", .audioEncoder = "pcm_s16le", .video = true},
        {.muxer = "matroska", .audioEncoder = "flac", .video = true},
        {.muxer = "avi", .audioEncoder = "libmp3lame", .video = true},
        {.muxer = "mpegts", .audioEncoder = "aac", .video = true},
        {.muxer = "mpeg", .audioEncoder = "mp2", .video = true},
    };
    const TemporaryFolder folder;
    const auto file = folder / "recording";
    for (const auto& form : forms) {
        SCOPED_TRACE(form.muxer + " " + form.audioEncoder);
        writeMedia(file, form, 2);
        const auto info = FFmpegPCMConverter().examine(file);
        ASSERT_TRUE(info) << info.error().detail;
        EXPECT_TRUE(info->hasAudio);
        EXPECT_EQ(info->hasVideo, form.video);
        EXPECT_NEAR(info->duration, 2, 0.2);
        const auto samples = converted(file);
        ASSERT_TRUE(samples) << samples.error().detail;
        expectTone(*samples, 2, 0.15, 0.03); // LAME makes everything 5 % quieter
    }
}

TEST(ConvertedSound, SixteenBitSamplesAtTheRightRateStayExactlyTheSame)
{
    std::vector<double> ramp;
    for (int value = -32768; value <= 32767; ++value)
        ramp.push_back(value / 32768.0);
    const TemporaryFolder folder;
    const auto samples = converted(folder, wavOf({.rate = 16000}, ramp));
    ASSERT_TRUE(samples);
    EXPECT_TRUE(std::equal(ramp.begin(), ramp.end(), samples->begin(), samples->end()));
}

TEST(ConvertedSound, WhatIsTooHighForTheRateDisappearsInsteadOfFoldingBack)
{
    const TemporaryFolder folder;
    const auto samples = converted(folder, wavOf({.rate = 48000}, tone(12000, 0.9, 1, 48000)));
    ASSERT_TRUE(samples);
    EXPECT_LT(measure(*samples, 4000).amplitude, 0.003);
    EXPECT_LT(measure(*samples, 4000).rest, 0.003);
}

TEST(ConvertedSound, ChannelsAreMixedByTheirPlaceAndNeverClip)
{
    const TemporaryFolder folder;
    const auto amplitudeFrom = [&folder](WavForm form, int channel) {
        form.onlyChannel = channel;
        const auto samples = converted(folder, wavOfTone(form, 0.5));
        return samples ? measure(*samples, 440).amplitude : -1;
    };
    const WavForm surround{.rate = 16000, .channels = 6, .extensible = true, .mask = 0x3F};
    const double centre = amplitudeFrom(surround, 2);
    EXPECT_GT(centre, 0.5 / 6) << "speech is in the centre of a surround recording";
    EXPECT_NEAR(amplitudeFrom(surround, 0), centre * M_SQRT1_2, 0.01);
    EXPECT_NEAR(amplitudeFrom(surround, 3), 0, 0.001) << "the low-frequency channel carries no speech";
    EXPECT_NEAR(amplitudeFrom({.rate = 16000, .channels = 2}, 1), 0.25, 0.005);
    EXPECT_NEAR(amplitudeFrom({.rate = 16000, .channels = 9}, 8), 0.5 / 9, 0.001);
}

TEST(ConvertedSound, FloatingPointSamplesThatAreNoSoundAreBroughtIntoRange)
{
    auto loud = tone(440, 30, 0.2, 48000);
    loud[4000] = std::numeric_limits<double>::quiet_NaN();
    loud[5000] = std::numeric_limits<double>::infinity();
    const TemporaryFolder folder;
    for (const int rate : {16000, 48000}) {
        const auto samples = converted(folder, wavOf({.rate = rate, .bits = 32, .coding = Coding::floating}, loud));
        ASSERT_TRUE(samples);
        EXPECT_TRUE(std::all_of(samples->begin(), samples->end(), [](float sample) { return std::abs(sample) <= 1; }));
        EXPECT_TRUE(std::any_of(samples->begin(), samples->end(), [](float sample) { return sample == 1; }));
    }
}

TEST(ConvertedSound, TheFormMayChangeInTheMiddle)
{
    const TemporaryFolder folder;
    std::string joined;
    for (const auto& form : {MediaForm{.muxer = "adts", .audioEncoder = "aac", .rate = 44100, .channels = 2},
                             MediaForm{.muxer = "adts", .audioEncoder = "aac", .rate = 22050, .channels = 1},
                             MediaForm{.muxer = "adts", .audioEncoder = "aac", .rate = 48000, .channels = 6}}) {
        writeMedia(folder / "part", form, 2);
        joined += readFile(folder / "part");
    }
    const auto samples = converted(folder, joined);
    ASSERT_TRUE(samples);
    const std::span all(*samples);
    ASSERT_GT(all.size(), 90000u);
    for (const std::size_t start : {4000u, 37000u, 70000u}) {
        SCOPED_TRACE(start);
        expectTone(all.subspan(start, 20000), 1.25, 0.001);
    }
}

TEST(ConvertedSound, AGapInTheTimelineBecomesSilence)
{
    const TemporaryFolder folder;
    const auto file = folder / "gap.mkv";
    writeMedia(file, {.muxer = "matroska", .audioEncoder = "flac", .gapAt = 1, .gap = 2}, 2);
    const auto samples = converted(file);
    ASSERT_TRUE(samples);
    const std::span all(*samples);
    ASSERT_NEAR(static_cast<double>(all.size()), 4.0 * 16000, 400);
    expectTone(all.first(16000), 1, 0.001);
    const auto silence = all.subspan(18500, 28000);
    EXPECT_TRUE(std::all_of(silence.begin(), silence.end(), [](float sample) { return sample == 0; }));
    expectTone(all.subspan(50000), 0.87, 0.05);
}

TEST(ConvertedSound, AWrongTimestampDoesNotBecomeHoursOfSilence)
{
    const TemporaryFolder folder;
    const auto file = folder / "gap.mkv";
    writeMedia(file, {.muxer = "matroska", .audioEncoder = "flac", .gapAt = 1, .gap = 20000}, 2);
    const auto samples = converted(file);
    ASSERT_TRUE(samples);
    EXPECT_NEAR(measure(*samples, 440).seconds, 2, 0.01);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // the sanitizers keep freed memory
long peakKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return std::stol(line.substr(6));
    return 0;
}

TEST(ConvertedSound, AnHourNeedsNoMoreMemoryThanASecond)
{
    const TemporaryFolder folder;
    const auto file = folder / "hour.wav";
    const WavForm form{.rate = 8000, .channels = 2};
    constexpr std::uint32_t kBytes = 3600 * 8000 * 4;
    writeFile(file, wavHeader(form, kBytes));
    std::filesystem::resize_file(file, 44 + kBytes);
    const auto before = peakKilobytes();
    const auto count = FFmpegPCMConverter().convert(file, [](std::span<const float>) { return true; }, {}, {});
    EXPECT_EQ(count.value_or(0), 3600 * 16000);
    EXPECT_LT(peakKilobytes() - before, 20 * 1024);
}
#endif

} // namespace
