#include "core/audio/StreamMixer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>
#include <vector>

using namespace vocalith;

namespace {

using Samples = std::vector<std::int16_t>;
using Input = StreamMixer::Input;

constexpr double kRate = 16000;
constexpr double kSlow = 5;   // Hz: one period is far longer than any misalignment
constexpr double kTone = 440; // Hz
constexpr double kSlowAmplitude = 6000;
constexpr double kToneAmplitude = 3000;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) // slow, and the first minutes have all the code paths
constexpr double kLength = 300;
#else
constexpr double kLength = 3600; // seconds
#endif

/// What both microphone and loudspeaker would hear at a moment, sampled by a clock of any rate.
class Tones {
public:
    Tones(double rate, double start)
        : m_slow(std::polar(1.0, step(kSlow, start))), m_tone(std::polar(1.0, step(kTone, start))),
          m_slowStep(std::polar(1.0, step(kSlow, 1 / rate))), m_toneStep(std::polar(1.0, step(kTone, 1 / rate)))
    {}
    void fill(Samples& samples)
    {
        for (auto& sample : samples) {
            sample =
                static_cast<std::int16_t>(std::lround(kSlowAmplitude * m_slow.imag() + kToneAmplitude * m_tone.imag()));
            m_slow *= m_slowStep;
            m_tone *= m_toneStep;
        }
        m_slow /= std::abs(m_slow);
        m_tone /= std::abs(m_tone);
    }

private:
    static double step(double frequency, double time)
    {
        return 2 * std::numbers::pi * std::fmod(frequency * time, 1.0);
    }
    std::complex<double> m_slow, m_tone, m_slowStep, m_toneStep;
};

/// Judges the mixed timeline second by second and keeps nothing of it.
class Judge {
public:
    void take(const Samples& mixed, double from)
    {
        for (const double sample : mixed) {
            const auto time = static_cast<double>(m_count++) / kRate;
            if (time >= from) {
                m_correlation += sample * m_reference;
                m_worstBend = std::max(m_worstBend, std::abs(sample - 2 * m_last + m_beforeLast));
            }
            m_beforeLast = std::exchange(m_last, sample);
            m_reference *= m_step;
            if (m_count % static_cast<std::size_t>(kRate) == 0) {
                if (time >= from + 1)
                    m_worstDelay = std::max(m_worstDelay, std::abs(std::arg(m_correlation) / m_omega));
                m_correlation = 0;
                m_reference = {0, 1};
            }
        }
    }
    double worstDelay() const { return m_worstDelay; } // seconds
    /// The largest second difference: a click bends far more than the tones do.
    double worstBend() const { return m_worstBend; }

private:
    static constexpr double m_omega = 2 * std::numbers::pi * kSlow;
    // i exp(-iwt): its correlation with sin(w(t - d)) has the argument -wd.
    std::complex<double> m_reference{0, 1};
    const std::complex<double> m_step = std::polar(1.0, -m_omega / kRate);
    std::complex<double> m_correlation;
    std::size_t m_count = 0;
    double m_last = 0, m_beforeLast = 0, m_worstDelay = 0, m_worstBend = 0;
};

/// A silent master of 16000 Hz and tones from a device whose clock is off, each delivering its own pieces.
Judge mixForAnHour(double ppm, std::size_t masterPiece, std::size_t secondPiece)
{
    const double secondRate = kRate * (1 + ppm * 1e-6);
    const double secondStart = 0.313; // it took that long to open
    StreamMixer mixer;
    Judge judge;
    Tones tones(secondRate, secondStart);
    const Samples silence(masterPiece);
    Samples piece(secondPiece);
    Samples mixed;
    double masterNext = static_cast<double>(masterPiece) / kRate;
    double secondNext = secondStart + static_cast<double>(secondPiece) / secondRate;
    while (masterNext < kLength) {
        mixed.clear();
        if (masterNext <= secondNext) {
            mixer.push(Input::master, silence, mixed);
            masterNext += static_cast<double>(masterPiece) / kRate;
        } else {
            tones.fill(piece);
            mixer.push(Input::second, piece, mixed);
            secondNext += static_cast<double>(secondPiece) / secondRate;
        }
        judge.take(mixed, secondStart + 0.5);
    }
    return judge;
}

TEST(StreamMixer, AnHourOfDifferentClocksStaysAlignedAndSmooth)
{
    const double bendOfTones = kToneAmplitude * std::pow(2 * std::numbers::pi * kTone / kRate, 2) +
                               kSlowAmplitude * std::pow(2 * std::numbers::pi * kSlow / kRate, 2);
    struct Case {
        double ppm;
        std::size_t masterPiece, secondPiece;
    };
    for (const auto& [ppm, masterPiece, secondPiece] : {Case{200, 320, 320}, Case{-200, 480, 400}}) {
        const auto judge = mixForAnHour(ppm, masterPiece, secondPiece);
        RecordProperty("worstDelayMs" + std::to_string(static_cast<int>(ppm)),
                       std::to_string(judge.worstDelay() * 1e3));
        EXPECT_LT(judge.worstDelay(), 0.020) << ppm;
        EXPECT_LT(judge.worstBend(), 1.1 * bendOfTones + 4) << ppm; // 4: rounding
    }
}

Samples constant(std::size_t count, std::int16_t value)
{
    return Samples(count, value);
}

/// Pushes both streams in pieces of 20 ms, the master first, for `pieces` pieces.
void pushBoth(StreamMixer& mixer, int pieces, std::int16_t master, std::int16_t second, Samples& mixed)
{
    for (int i = 0; i < pieces; ++i) {
        mixer.push(Input::master, constant(320, master), mixed);
        mixer.push(Input::second, constant(320, second), mixed);
    }
}

TEST(StreamMixer, TheMasterComesOutUnchangedAndWhole)
{
    Samples master(50000);
    std::iota(master.begin(), master.end(), std::int16_t{0});
    StreamMixer mixer;
    Samples mixed;
    for (std::size_t at = 0; at < master.size(); at += 500)
        mixer.push(Input::master, std::span(master).subspan(at, 500), mixed);
    EXPECT_GE(mixed.size(), 48000U); // held back by no more than a tenth of a second
    mixer.finish(mixed);
    EXPECT_EQ(mixed, master);
}

TEST(StreamMixer, TheSumSaturates)
{
    for (const std::int16_t value : {std::int16_t{30000}, std::int16_t{-30000}}) {
        StreamMixer mixer;
        Samples mixed;
        pushBoth(mixer, 50, value, value, mixed);
        mixer.finish(mixed);
        ASSERT_GE(mixed.size(), 16000U);
        EXPECT_TRUE(std::all_of(mixed.begin() + 200, mixed.begin() + 15000,
                                [&](auto sample) { return sample == (value > 0 ? 32767 : -32768); }));
    }
}

std::size_t firstAbove(const Samples& mixed, std::size_t from, int limit)
{
    return static_cast<std::size_t>(std::find_if(mixed.begin() + static_cast<std::ptrdiff_t>(from), mixed.end(),
                                                 [limit](auto sample) { return sample > limit; }) -
                                    mixed.begin());
}

TEST(StreamMixer, LateOpeningAndGapsAreSilenceAndEndInPlace)
{
    StreamMixer mixer;
    Samples mixed;
    const auto masterAlone = [&](int pieces) {
        for (int i = 0; i < pieces; ++i)
            mixer.push(Input::master, constant(320, 0), mixed);
    };
    masterAlone(100);                     // 0...2 s
    pushBoth(mixer, 100, 0, 1000, mixed); // 2...4 s
    masterAlone(150);                     // 4...7 s
    pushBoth(mixer, 50, 0, 1000, mixed);  // 7...8 s
    mixer.finish(mixed);
    ASSERT_NEAR(static_cast<double>(mixed.size()), 8 * kRate, 330);
    const auto begin = firstAbove(mixed, 0, 500);
    EXPECT_NEAR(static_cast<double>(begin), 2 * kRate, 330);
    const auto gap = static_cast<std::size_t>(std::find_if(mixed.begin() + static_cast<std::ptrdiff_t>(begin),
                                                           mixed.end(), [](auto sample) { return sample < 500; }) -
                                              mixed.begin());
    EXPECT_NEAR(static_cast<double>(gap), 4 * kRate, 330);
    EXPECT_NEAR(static_cast<double>(firstAbove(mixed, gap, 500)), 7 * kRate, 330);
    for (std::size_t i = 1; i < mixed.size(); ++i)
        ASSERT_LE(std::abs(mixed[i] - mixed[i - 1]), 60) << "click at " << i;
}

TEST(StreamMixer, AudioThatTheSecondDeviceLostIsMadeGoodWithinSeconds)
{
    StreamMixer mixer;
    Samples mixed;
    pushBoth(mixer, 100, 0, 1000, mixed); // 2 s
    for (int i = 0; i < 4; ++i)           // 80 ms are lost, too little for the queue to run empty
        mixer.push(Input::master, constant(320, 0), mixed);
    pushBoth(mixer, 250, 0, 1000, mixed); // 5 s
    pushBoth(mixer, 50, 0, 8000, mixed);
    mixer.finish(mixed);
    EXPECT_NEAR(static_cast<double>(firstAbove(mixed, 0, 4000)), 7.08 * kRate, 330);
}

TEST(StreamMixer, TheSecondCarriesOnWhenTheMasterStopsOrStalls)
{
    for (const bool ends : {true, false}) {
        StreamMixer mixer;
        Samples mixed;
        pushBoth(mixer, 50, 100, 1000, mixed); // 1 s
        if (ends)
            mixer.end(Input::master, mixed);
        for (int i = 0; i < 200; ++i) // 4 s
            mixer.push(Input::second, constant(320, 1000), mixed);
        EXPECT_GT(mixed.size(), 4.8 * kRate) << "not live";
        if (!ends)
            pushBoth(mixer, 50, 100, 1000, mixed);
        mixer.finish(mixed);
        const auto length = ends ? 5 : 6;
        EXPECT_NEAR(static_cast<double>(mixed.size()), length * kRate, 330);
        EXPECT_NEAR(mixed[8000], 1100, 1);
        EXPECT_EQ(mixed[3 * 16000], 1000);
        EXPECT_NEAR(mixed[static_cast<std::size_t>(length) * 16000 - 8000], ends ? 1000 : 1100, 1);
    }
}

TEST(StreamMixer, AMasterThatOpensSlowlyLosesNothingOfTheSecond)
{
    StreamMixer mixer;
    Samples mixed;
    for (int i = 0; i < 25; ++i) // half a second
        mixer.push(Input::second, constant(320, 1000), mixed);
    pushBoth(mixer, 50, 100, 1000, mixed);
    mixer.end(Input::second, mixed);
    mixer.push(Input::master, constant(16000, 100), mixed);
    mixer.finish(mixed);
    EXPECT_NEAR(static_cast<double>(mixed.size()), 2.5 * kRate, 330);
    EXPECT_EQ(mixed[4000], 1000);
    EXPECT_NEAR(mixed[16000], 1100, 1);
    EXPECT_EQ(mixed[2 * 16000], 100);
}

} // namespace
