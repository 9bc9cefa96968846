#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vocalith::test {

/// The form of a WAV file that a test writes.
struct WavForm {
    enum class Coding { pcm = 1, floating = 3, aLaw = 6, muLaw = 7 };
    int rate = 16000;
    int channels = 1;
    int bits = 16;
    Coding coding = Coding::pcm;
    bool extensible = false; ///< with the channel mask below
    std::uint32_t mask = 0;  ///< 0: the speakers are unknown
    int onlyChannel = -1;    ///< the sound is in this channel alone; -1: in all
};

std::string wavHeader(const WavForm& form, std::uint32_t dataBytes);
std::string wavOf(const WavForm& form, std::span<const double> samples);

std::vector<double> tone(double hertz, double amplitude, double seconds, int rate);
/// A WAV file with a tone of 440 Hz and amplitude 0.5.
std::string wavOfTone(const WavForm& form, double seconds);

/// What a sound is, its first and last 50 ms left out (resamplers and codecs fade there).
struct Measured {
    double seconds = 0;
    double amplitude = 0; ///< of the frequency that was asked for
    double rest = 0;      ///< the amplitude of a tone as loud as everything else together
};
Measured measure(std::span<const float> samples, double hertz);

} // namespace vocalith::test
