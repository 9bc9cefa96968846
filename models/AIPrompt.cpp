#include "models/AIPrompt.h"

#include "base/Json.h"

namespace vocalith {
namespace {

constexpr const char* kLegacyScript = "legacyBashScript";

} // namespace

Result<AIPrompt, JsonError> readLegacyPrompt(const Json& older)
{
    Json current = older;
    current.erase(kLegacyScript);
    // The stores that wrote the one script did not know the two that came after it.
    for (const auto* key : {"preAIPromptScript", "postAIPromptScript"}) {
        if (!current.contains(key))
            current[key] = "";
    }
    auto script = fromJson<std::optional<std::string>>(older.at(kLegacyScript));
    if (!script)
        return failure(JsonError{kLegacyScript, std::move(script.error().message)});
    return fromJson<AIPrompt>(current).map([&](AIPrompt&& prompt) {
        auto& pre = prompt.preAIPromptScript;
        auto& post = prompt.postAIPromptScript;
        if (auto& free = pre.empty() ? pre : post; free.empty())
            free = script->value_or("");
        return std::move(prompt);
    });
}

} // namespace vocalith
