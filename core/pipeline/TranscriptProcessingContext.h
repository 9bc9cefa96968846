#pragma once

#include "base/Observable.h"
#include "base/Uuid.h"
#include "models/AIConversation.h"
#include "models/DictationResult.h"
#include "models/DictationSession.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vocalith {

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
    /// The text as it stands after the steps run so far.
    std::string transcript;
};

/// The prompt that the run is for, or none for plain journal dictation.
inline const AIPrompt* activePrompt(const TranscriptProcessingContext& context)
{
    return std::get_if<AIPrompt>(&context.activationMode);
}

} // namespace vocalith
