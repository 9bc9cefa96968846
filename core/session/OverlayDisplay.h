#pragma once

#include "base/Uuid.h"
#include "core/session/DictationOutcome.h"
#include "models/AIConversation.h"
#include "models/DictationSession.h"
#include "models/TranscriptionState.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vocalith {

/// What the overlay shows for one dictation.
struct OverlayState {
    Uuid sessionID;
    TranscriptionState textEvent;
    std::optional<AIConversation> conversation;
    bool operator==(const OverlayState&) const = default;
};

struct OverlayHidden {
    bool operator==(const OverlayHidden&) const = default;
};

/// Whether the overlay is up, and with what.
using OverlayVisibilityState = std::variant<OverlayState, OverlayHidden>;

/// What a dictation is for, and what else it could be for.
struct PromptChoice {
    std::string name;                  ///< of the prompt that runs; empty for the journal
    std::vector<std::string> numbered; ///< the prompts that the keys 1 to 9 choose, in their order; empty where none do
    bool operator==(const PromptChoice&) const = default;
};

/// Draws a dictation: windows, or a terminal line. Main thread; no call may block or start another dictation from
/// within.
class OverlayDisplay {
public:
    virtual ~OverlayDisplay() = default;

    virtual void show(const OverlayVisibilityState& state) = 0;
    /// Comes with the first `show` of a dictation, and when the user chooses another prompt.
    virtual void showPrompt(const PromptChoice& choice) = 0;
    virtual void showIndicator(ProcessingIndicator::State indicator) = 0;
    /// The share of the recognition that is done, in 0..1.
    virtual void showProgress(double progress) = 0;
    /// The dictation is over and its text, recording or end is as `outcome` says. Comes last, once per dictation.
    virtual void dictationEnded(const DictationOutcome& outcome) = 0;
};

} // namespace vocalith
