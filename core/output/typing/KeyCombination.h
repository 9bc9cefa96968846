#pragma once

#include "ports/KeyEvents.h"

#include <string>

namespace vocalith {

class Logger;

/// A key that is pressed while the command key is held.
struct KeyCombination {
    int virtualKeyCode = 0;
    KeyEvents::SourceState state = KeyEvents::SourceState::hidSystem;
    std::string label;           ///< in the log
    std::uint64_t moreFlags = 0; ///< held with the command key while the key goes down and up
};

/// Presses and releases it; yields why not, which is in the log already: no detail where there are no such events.
Result<void, KeyEventsError> postKeyCombination(KeyEvents& keyEvents, const KeyCombination& combination,
                                                const Logger& logger);

} // namespace vocalith
