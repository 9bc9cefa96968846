#pragma once

#include <string>

namespace vocalith {

/// The services that offer language models or speech recognition. The names are the stored form.
enum class AIProviderType {
    openRouter,
    custom,
    ollama,
    openai,
    anthropic,
    xai,
    googleGemini,
    groq,
    elevenLabs,
    fireworks,
    deepgram,
    apple,
    assemblyai,
    mistral,
    nvidia,
    cerebras,
    soniox,
    straico,
    volcengine,
    cartesia,
    qwen,
};

/// Where the icon lies in the image store: "ai_providers/googlegemini.png".
std::string iconPath(AIProviderType type);

} // namespace vocalith
