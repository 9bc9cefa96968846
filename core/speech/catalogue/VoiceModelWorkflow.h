#pragma once

#include "ports/PCMConverter.h"

#include <variant>

namespace vocalith {

/// Where a finished recording is uploaded to.
enum class FileBasedWorkflow {
    vocalith, ///< the vendor's backend
    soniox,
    openAI,
    deepgram,
    elevenLabs,
    groq,
    fireworks,
    openAICompatible,
    assemblyAI,
    mistral,
    cartesia
};

/// Where the audio is streamed to while the user speaks.
enum class OnlineStreamingConfig {
    // through the vendor's backend
    vocalithWhisper3,
    vocalithNova3,
    vocalithNova3En,
    vocalithNova3Medical,
    vocalithSoniox,
    vocalithCartesia,
    // straight to the provider, with the user's key
    soniox,
    deepgram,
    assemblyAI,
    volcengine,
    elevenLabsStreaming
};

/// The recording is uploaded as one file, compressed first as `compression` says.
struct FileBased {
    FileBasedWorkflow workflow = FileBasedWorkflow::vocalith;
    AudioUploadCompression compression = AudioUploadCompression::none;
    bool operator==(const FileBased&) const = default;
};

/// The audio goes over a WebSocket while the user speaks.
struct Streaming {
    OnlineStreamingConfig config = OnlineStreamingConfig::soniox;
    bool operator==(const Streaming&) const = default;
};

/// How audio reaches an online engine.
using VoiceModelWorkflow = std::variant<FileBased, Streaming>;

/// The way that the user's own key opens to a model which the vendor's backend serves otherwise.
enum class BYODictationAPIKeyOption {
    soniox,
    gpt4oTranscribe,
    gpt4oMiniTranscribe,
    whisperV3Large,
    whisperV3Turbo,
    nova3
};

/// The place whose Soniox endpoints are used.
enum class SonioxRegion { us, eu, japan };

} // namespace vocalith
