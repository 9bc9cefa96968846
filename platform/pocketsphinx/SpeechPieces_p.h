#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vocalith {

/// A stretch of the audio that is decoded by itself.
struct SpeechPiece {
    std::size_t begin = 0; ///< samples from the beginning of the audio
    std::size_t end = 0;
    bool operator==(const SpeechPiece&) const = default;
};

/// Divides 16 kHz audio into pieces of at most half a minute, of about equal length, cut where it is quietest. Short
/// audio is one piece, no audio none.
std::vector<SpeechPiece> piecesCutAtPauses(std::span<const float> samples);

/// The factor that makes the loudest sample nearly full scale, so that quiet speech loses nothing in 16 bits.
float gainFor(std::span<const float> samples);

/// 16-bit samples after the gain. What is not finite becomes silence, what is too loud is clipped.
std::vector<std::int16_t> to16Bit(std::span<const float> samples, float gain);

} // namespace vocalith
