#pragma once

#include "models/AIToolSetID.h"
#include "models/KeyboardShortcut.h"
#include "models/TranscriptionModelID.h"

#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// What is done with the text of a dictation.
enum class ActionMode {
    autoInsert,      ///< insert it into the focused application
    pasteAndSend,    ///< insert it, then send it there
    copyToClipboard, ///< only copy it
    historyOnly      ///< only record it in the history
};

/// A prompt of the user's: a mode that rewrites or acts on a dictation.
struct AIPrompt {
    enum class ReasoningEffort { default_, none, minimal, low, medium, high };

    Uuid id;
    std::string prompt;                             ///< the instruction text
    std::string description;                        ///< shown in lists
    KeyboardShortcut shortcut;                      ///< the prompt's own; its keys may be absent
    std::optional<std::string> appBundleIdentifier; ///< the application that the prompt is tied to
    std::string name;
    ActionMode mode = ActionMode::autoInsert;
    std::vector<AIToolSetID> enabledTools;
    std::optional<Uuid> aiProviderID;
    std::optional<Uuid> fallbackAIProviderID;                 ///< tried when the first one fails
    std::optional<TranscriptionModelID> transcriptionModelID; ///< overrides the selected voice model
    ReasoningEffort reasoningEffort = ReasoningEffort::default_;
    std::string customSystemPrompt; ///< empty for none
    std::optional<double> temperature;
    bool includeClipboardContext = false;
    bool includeFocusedAppContext = false;
    bool includeCursorContext = false;
    bool disableAgentSystemTools = false; ///< leave out the tools that are otherwise always there
    std::string preAIPromptScript;        ///< shell script run on the text before the request; empty for none
    std::string postAIPromptScript;       ///< shell script run on the answer; empty for none

    bool operator==(const AIPrompt&) const = default;
};

constexpr auto jsonFields(JsonType<AIPrompt>)
{
    return fields(
        field("id", &AIPrompt::id), field("prompt", &AIPrompt::prompt), field("description", &AIPrompt::description),
        field("shortcut", &AIPrompt::shortcut), field("appBundleIdentifier", &AIPrompt::appBundleIdentifier),
        field("name", &AIPrompt::name), field("mode", &AIPrompt::mode), field("enabledTools", &AIPrompt::enabledTools),
        field("aiProviderID", &AIPrompt::aiProviderID), field("fallbackAIProviderID", &AIPrompt::fallbackAIProviderID),
        field("transcriptionModelID", &AIPrompt::transcriptionModelID),
        field("reasoningEffort", &AIPrompt::reasoningEffort),
        field("customSystemPrompt", &AIPrompt::customSystemPrompt), field("temperature", &AIPrompt::temperature),
        field("includeClipboardContext", &AIPrompt::includeClipboardContext),
        field("includeFocusedAppContext", &AIPrompt::includeFocusedAppContext),
        field("includeCursorContext", &AIPrompt::includeCursorContext),
        field("disableAgentSystemTools", &AIPrompt::disableAgentSystemTools),
        field("preAIPromptScript", &AIPrompt::preAIPromptScript),
        field("postAIPromptScript", &AIPrompt::postAIPromptScript));
}

/// A prompt with a `legacyBashScript`, which ran before the request: it becomes `preAIPromptScript` unless there is
/// one, then `postAIPromptScript` unless there is one.
Result<AIPrompt, JsonError> readLegacyPrompt(const Json& older);

constexpr JsonOlderForm<AIPrompt> jsonOlderForm(JsonType<AIPrompt>)
{
    return {"legacyBashScript", "", &readLegacyPrompt};
}

} // namespace vocalith
