#pragma once

#include "base/JsonFields.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace vocalith {

/// The voice models that the program knows by itself. The names are the stored form.
enum class PredefinedModelID {
    distilSmallEn,
    distilMediumEn,
    distilLargeV35,
    largeV3TurboQuantized,
    small,
    largeV3Turbo,
    largeV3,
    largeV2,
    base,
    tinyEnglish,
    tiny,
    parakeetTDT06V2,
    parakeetTDT06,
    qwen3ASR,
    qwen3ASRInt8,
    parakeetEou,
    sonioxRealtime,
    sonioxAsync,
    nova3English,
    nova3,
    nova3Medical,
    streamingWhisperV3,
    cartesiaInkStreaming,
    gpt4oMini,
    gpt4o,
    whisperLargeV3,
    whisperV3Turbo,
    elevenLabsScribe,
    voxtralMini,
    sonioxAPI,
    openAI,
    openAICompatible,
    deepgram,
    elevenLabs,
    fireworks,
    groq,
    assemblyAI,
};

/// The identity of a voice model: one that the program knows, or the identifier of any other.
using TranscriptionModelID = std::variant<PredefinedModelID, std::string>;

/// The case name of a predefined model, the identifier of any other one: what users type and messages show.
std::string toString(const TranscriptionModelID& id);

/// Every predefined model, in the order of the declaration.
std::span<const PredefinedModelID> allPredefinedModelIDs();

/// The predefined model with that case name.
std::optional<PredefinedModelID> predefinedModelID(std::string_view name);

constexpr auto jsonUnion(JsonType<TranscriptionModelID>)
{
    return taggedUnion(unlabelled("predefined"), unlabelled("custom"));
}

} // namespace vocalith
