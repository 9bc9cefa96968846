#pragma once

#include "base/Uuid.h"
#include "core/session/DictationOutcome.h"
#include "models/AIConversation.h"
#include "models/DictationSession.h"
#include "models/TranscriptionState.h"

#include <optional>
#include <string_view>
#include <variant>

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

/// Draws a dictation: windows, or a terminal line. Main thread; no call may block or start another dictation from
/// within.
class OverlayDisplay {
public:
    virtual ~OverlayDisplay() = default;

    virtual void show(const OverlayVisibilityState& state) = 0;
    virtual void showIndicator(ProcessingIndicator::State indicator) = 0;
    /// The share of the recognition that is done, in 0..1.
    virtual void showProgress(double progress) = 0;
    /// The dictation is over and its text, recording or end is as `outcome` says. Comes last, once per dictation.
    virtual void dictationEnded(const DictationOutcome& outcome) = 0;
};

} // namespace vocalith
