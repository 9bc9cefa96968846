#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace vocalith {

struct WhisperModelFile;

/// A ggml element type: so many bytes hold a block of so many elements.
struct WhisperTensorType {
    std::int32_t id = 0;
    std::int64_t blockBytes = 0;
    std::int64_t blockElements = 0;
    bool operator==(const WhisperTensorType&) const = default;
};

/// The type of the big weights in a model of this format. Nothing for a format that is unknown or that the library
/// cannot compute with: whisper models in 32-bit floats load, and abort the program when they decode.
std::optional<WhisperTensorType> weightType(std::int32_t format);

struct WhisperTensor {
    std::array<std::int64_t, 3> shape{1, 1, 1}; ///< the innermost dimension first
    WhisperTensorType type;
    std::int64_t bytes() const;
};

/// The tensors that a model of these dimensions consists of, by name.
std::map<std::string, WhisperTensor> whisperTensors(const WhisperModelFile& model);

} // namespace vocalith
