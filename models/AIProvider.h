#pragma once

#include "base/JsonFields.h"
#include "base/Uuid.h"
#include "models/AIProviderType.h"

#include <string>
#include <string_view>
#include <variant>

namespace vocalith {

enum class AIProviderState {
    tested,    ///< the last test request succeeded
    notTested, ///< new, or edited since
    failing    ///< the last test or use failed
};

/// The kinds of providers, in the order in which they are offered. The names are the stored form.
enum class AIProviderKind {
    appleIntelligence,
    openRouter,
    cerebras,
    openai,
    anthropic,
    xai,
    googleGemini,
    groq,
    ollama,
    straico,
    custom,
};

/// "Google Gemini"
std::string_view displayName(AIProviderKind kind);

/// A provider at an address that everybody knows.
template <AIProviderKind Kind>
struct HostedAIProvider {
    static constexpr AIProviderKind kKind = Kind;

    Uuid id;
    std::string key;   ///< the API key, in clear text
    std::string model; ///< its name, as the user typed it
    AIProviderState state = AIProviderState::notTested;

    bool operator==(const HostedAIProvider&) const = default;
};

/// A provider at an address of the user's.
template <AIProviderKind Kind>
struct AddressedAIProvider {
    static constexpr AIProviderKind kKind = Kind;

    Uuid id;
    std::string key;
    std::string model;
    std::string baseURL; ///< as the user typed it
    AIProviderState state = AIProviderState::notTested;

    bool operator==(const AddressedAIProvider&) const = default;
};

using OpenRouterAIProvider = HostedAIProvider<AIProviderKind::openRouter>;
using CustomAIProvider = AddressedAIProvider<AIProviderKind::custom>;
using OllamaProvider = AddressedAIProvider<AIProviderKind::ollama>;
using OpenAIProvider = HostedAIProvider<AIProviderKind::openai>;
using AnthropicProvider = HostedAIProvider<AIProviderKind::anthropic>;
using XAIProvider = HostedAIProvider<AIProviderKind::xai>;
using GoogleGeminiProvider = HostedAIProvider<AIProviderKind::googleGemini>;
using GroqProvider = HostedAIProvider<AIProviderKind::groq>;
using CerebrasProvider = HostedAIProvider<AIProviderKind::cerebras>;
using StraicoProvider = HostedAIProvider<AIProviderKind::straico>;

/// The model on the device itself: no key, no address.
struct AppleIntelligenceProvider {
    static constexpr AIProviderKind kKind = AIProviderKind::appleIntelligence;

    Uuid id;
    AIProviderState state = AIProviderState::notTested;

    bool operator==(const AppleIntelligenceProvider&) const = default;
};

/// A language-model provider that the user has set up.
using AIProvider =
    std::variant<OpenRouterAIProvider, CustomAIProvider, OllamaProvider, OpenAIProvider, AnthropicProvider, XAIProvider,
                 GoogleGeminiProvider, GroqProvider, CerebrasProvider, StraicoProvider, AppleIntelligenceProvider>;

Uuid id(const AIProvider& provider);
AIProviderState state(const AIProvider& provider);
AIProviderKind kind(const AIProvider& provider);
/// The service behind it, as the speech engines name theirs.
AIProviderType providerType(const AIProvider& provider);

template <AIProviderKind Kind>
constexpr auto jsonFields(JsonType<HostedAIProvider<Kind>>)
{
    using Provider = HostedAIProvider<Kind>;
    return fields(field("id", &Provider::id), field("key", &Provider::key), field("model", &Provider::model),
                  field("state", &Provider::state));
}

template <AIProviderKind Kind>
constexpr auto jsonFields(JsonType<AddressedAIProvider<Kind>>)
{
    using Provider = AddressedAIProvider<Kind>;
    return fields(field("id", &Provider::id), field("key", &Provider::key), field("model", &Provider::model),
                  field("baseURL", &Provider::baseURL), field("state", &Provider::state));
}

constexpr auto jsonFields(JsonType<AppleIntelligenceProvider>)
{
    return fields(field("id", &AppleIntelligenceProvider::id), field("state", &AppleIntelligenceProvider::state));
}

constexpr auto jsonUnion(JsonType<AIProvider>)
{
    return typedUnion("type", "provider", "openRouter", "custom", "ollama", "openai", "anthropic", "xai",
                      "googleGemini", "groq", "cerebras", "straico", "appleIntelligence");
}

} // namespace vocalith
