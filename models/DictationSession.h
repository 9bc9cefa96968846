#pragma once

#include "models/AIPrompt.h"

#include <variant>

namespace vocalith {

/// A dictation that only goes into the journal.
struct VoiceJournal {
    bool operator==(const VoiceJournal&) const = default;
};

/// What a dictation is for: a run of a prompt, or the journal.
using OverlayActivationMode = std::variant<AIPrompt, VoiceJournal>;

/// The indicator in the overlay.
struct ProcessingIndicator {
    enum class State { starting, transcribing, processing, speaking };
};

} // namespace vocalith
