#pragma once

#include "base/Result.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace vocalith {

/// What the header of a whisper model file says: ggml's legacy container, as whisper.cpp's converters write it.
struct WhisperModelFile {
    std::int32_t vocabulary = 0;
    std::int32_t audioContext = 0;
    std::int32_t audioState = 0;
    std::int32_t audioHeads = 0;
    std::int32_t audioLayers = 0;
    std::int32_t textContext = 0;
    std::int32_t textState = 0;
    std::int32_t textHeads = 0;
    std::int32_t textLayers = 0;
    std::int32_t melFilters = 0;
    std::int32_t format = 0; ///< ggml_ftype of the weights, without the version of the quantisation

    bool operator==(const WhisperModelFile&) const = default;
};

/// Reads a model file far enough to know that the library can load it: the header, the vocabulary, and of every tensor
/// its name, shape, type and place, up to the very end of the file. The library itself takes damaged files and then
/// aborts the program, exhausts the memory or says nothing. The weights are not read, so gigabytes take milliseconds.
/// Blocks. The error says what is wrong, for the log.
Result<WhisperModelFile, std::string> readWhisperModelFile(const std::filesystem::path& file);

} // namespace vocalith
