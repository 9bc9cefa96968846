#pragma once

#include "base/Observable.h"
#include "base/Uuid.h"
#include "core/output/TextOutput.h"
#include "models/AIConversation.h"
#include "models/DictationResult.h"
#include "models/DictationSession.h"
#include "models/HistoryEntry.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// Something that a step noted: "bash_script" and what the script printed, for instance.
struct DiagnosticRecord {
    std::string label;
    std::string text;
    bool operator==(const DiagnosticRecord&) const = default;
};

/// What the steps of one run read and rewrite.
struct TranscriptProcessingContext {
    Uuid sessionID;
    DictationResult dictationResult;
    /// Set while the AI transform is in flight, so that the overlay can show it.
    std::shared_ptr<Observable<bool>> isRunningAITranform = std::make_shared<Observable<bool>>(false);
    OverlayActivationMode activationMode;
    /// Moves the session's visible state.
    std::function<void(ProcessingIndicator::State)> transitionToState = [](ProcessingIndicator::State) {};
    std::optional<AIConversation> conversation;
    /// The AI rewrite, once it has run; its `finalText` is the model's answer.
    std::optional<AITransform> aiTransform;
    /// Of the dictation. All that the run writes to the history bears it, and so goes to one entry.
    Date creationDate;
    /// The run's entry as the history has it; absent while the history has none.
    std::optional<HistoryEntry> historyEntry;
    /// Where the text is; absent until it has been delivered.
    std::optional<TextDestination> destination;
    /// What the steps have noted on their way, for those who look into the run; nothing else reads it.
    std::vector<DiagnosticRecord> diagnostics;
    /// Why nothing was inserted on purpose, as a sentence for people; empty unless that is so.
    std::string endReason;
    /// The run ended on purpose, but what it ended for has failed.
    bool hasEndedInFailure = false;
    /// The text as it stands after the steps run so far.
    std::string transcript;
};

/// The prompt that the run is for, or none for plain journal dictation.
inline const AIPrompt* activePrompt(const TranscriptProcessingContext& context)
{
    return std::get_if<AIPrompt>(&context.activationMode);
}

} // namespace vocalith
