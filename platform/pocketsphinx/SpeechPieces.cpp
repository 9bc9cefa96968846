#include "platform/pocketsphinx/SpeechPieces_p.h"

#include <algorithm>
#include <cmath>

namespace vocalith {
namespace {

constexpr std::size_t kSampleRate = 16000;
constexpr std::size_t kLongestPiece = 30 * kSampleRate;
/// How far from its ideal place a cut may move to find a pause.
constexpr std::size_t kSearchRadius = 6 * kSampleRate;
constexpr std::size_t kFrame = kSampleRate / 100;
/// A cut lies in the middle of this many quiet frames: longer than the silence inside a word.
constexpr std::size_t kPauseFrames = 24;

float finite(float sample)
{
    return std::isfinite(sample) ? sample : 0.0F;
}

double energyOf(std::span<const float> frame)
{
    double sum = 0;
    for (const float sample : frame)
        sum += static_cast<double>(finite(sample)) * finite(sample);
    return sum;
}

/// The middle of the quietest pause in the samples from `begin` to `end`.
std::size_t quietestPlace(std::span<const float> samples, std::size_t begin, std::size_t end)
{
    std::vector<double> energies;
    for (auto at = begin; at + kFrame <= end; at += kFrame)
        energies.push_back(energyOf(samples.subspan(at, kFrame)));
    double inWindow = 0;
    double least = -1;
    std::size_t place = begin + (end - begin) / 2;
    for (std::size_t i = 0; i < energies.size(); ++i) {
        inWindow += energies[i];
        if (i + 1 < kPauseFrames)
            continue;
        const auto first = i + 1 - kPauseFrames;
        if (least < 0 || inWindow < least) {
            least = inWindow;
            place = begin + (first + kPauseFrames / 2) * kFrame;
        }
        inWindow = std::max(0.0, inWindow - energies[first]);
    }
    return place;
}

} // namespace

std::vector<SpeechPiece> piecesCutAtPauses(std::span<const float> samples)
{
    std::vector<SpeechPiece> pieces;
    std::size_t begin = 0;
    while (samples.size() - begin > kLongestPiece) {
        const auto remaining = samples.size() - begin;
        const auto count = (remaining + kLongestPiece - 1) / kLongestPiece;
        const auto ideal = begin + remaining / count;
        const auto cut =
            quietestPlace(samples, ideal - kSearchRadius, std::min(ideal + kSearchRadius, begin + kLongestPiece));
        pieces.push_back({begin, cut});
        begin = cut;
    }
    if (begin < samples.size())
        pieces.push_back({begin, samples.size()});
    return pieces;
}

float gainFor(std::span<const float> samples)
{
    constexpr float kNearlyFull = 0.9F;
    constexpr float kMost = 30.0F; // what is quieter is no speech
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::min(1.0F, std::abs(finite(sample))));
    return peak > 0 ? std::min(kMost, kNearlyFull / peak) : 1.0F;
}

std::vector<std::int16_t> to16Bit(std::span<const float> samples, float gain)
{
    constexpr float kFullScale = 32767.0F;
    std::vector<std::int16_t> converted;
    converted.reserve(samples.size());
    for (const float sample : samples)
        converted.push_back(
            static_cast<std::int16_t>(std::lrint(std::clamp(finite(sample) * gain, -1.0F, 1.0F) * kFullScale)));
    return converted;
}

} // namespace vocalith
