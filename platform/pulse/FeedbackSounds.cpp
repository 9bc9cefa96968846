#include "platform/pulse/FeedbackSounds_p.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vocalith {
namespace {

constexpr double kRate = 16000;
constexpr double kLength = 0.2;   // seconds
constexpr double kStep = 0.065;   // from the first note to the second
constexpr double kAttack = 0.006; // too short to be heard as a fade, long enough not to click
constexpr double kDecay = 0.045;
constexpr double kLoudness = 0.16;

constexpr double kLow = 587.33;  // D5
constexpr double kHigh = 880.00; // A5

/// A soft wooden note: a sine with a little of its octave, struck and dying away.
double note(double frequency, double time)
{
    if (time < 0)
        return 0;
    const double envelope = std::min(time / kAttack, 1.0) * std::exp(-time / kDecay);
    const double phase = 2 * std::numbers::pi * frequency * time;
    return envelope * (std::sin(phase) + 0.2 * std::sin(2 * phase));
}

} // namespace

std::vector<float> feedbackSound(SoundPlayer::Sound sound)
{
    const bool rises = sound == SoundPlayer::Sound::recordingStarted;
    const double first = rises ? kLow : kHigh;
    const double second = rises ? kHigh : kLow;
    std::vector<float> samples(static_cast<std::size_t>(kLength * kRate));
    for (std::size_t index = 0; index < samples.size(); ++index) {
        const double time = static_cast<double>(index) / kRate;
        const double fade = std::min((kLength - time) / 0.02, 1.0);
        samples[index] = static_cast<float>(kLoudness * fade * (note(first, time) + note(second, time - kStep)));
    }
    return samples;
}

} // namespace vocalith
