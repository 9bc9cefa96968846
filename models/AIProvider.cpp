#include "models/AIProvider.h"

namespace vocalith {

std::string_view displayName(AIProviderKind kind)
{
    switch (kind) {
    case AIProviderKind::appleIntelligence: return "Apple Intelligence";
    case AIProviderKind::openRouter: return "OpenRouter";
    case AIProviderKind::cerebras: return "Cerebras";
    case AIProviderKind::openai: return "OpenAI";
    case AIProviderKind::anthropic: return "Anthropic";
    case AIProviderKind::xai: return "xAI";
    case AIProviderKind::googleGemini: return "Google Gemini";
    case AIProviderKind::groq: return "Groq";
    case AIProviderKind::ollama: return "Ollama";
    case AIProviderKind::straico: return "Straico";
    case AIProviderKind::custom: return "OpenAI Compatible";
    }
    return "";
}

Uuid id(const AIProvider& provider)
{
    return std::visit([](const auto& record) { return record.id; }, provider);
}

AIProviderState state(const AIProvider& provider)
{
    return std::visit([](const auto& record) { return record.state; }, provider);
}

AIProviderKind kind(const AIProvider& provider)
{
    return std::visit([](const auto& record) { return record.kKind; }, provider);
}

AIProviderType providerType(const AIProvider& provider)
{
    switch (kind(provider)) {
    case AIProviderKind::appleIntelligence: return AIProviderType::apple;
    case AIProviderKind::openRouter: return AIProviderType::openRouter;
    case AIProviderKind::cerebras: return AIProviderType::cerebras;
    case AIProviderKind::openai: return AIProviderType::openai;
    case AIProviderKind::anthropic: return AIProviderType::anthropic;
    case AIProviderKind::xai: return AIProviderType::xai;
    case AIProviderKind::googleGemini: return AIProviderType::googleGemini;
    case AIProviderKind::groq: return AIProviderType::groq;
    case AIProviderKind::ollama: return AIProviderType::ollama;
    case AIProviderKind::straico: return AIProviderType::straico;
    case AIProviderKind::custom: return AIProviderType::custom;
    }
    return AIProviderType::custom;
}

} // namespace vocalith
