#pragma once

#include "models/AIPrompt.h"

namespace vocalith {

/// The main prompt as it is until the user changes it: tidies up what was dictated. Always the same, its identity too.
AIPrompt defaultMainPrompt();

/// The voice journal's shortcut until the user chooses its keys.
KeyboardShortcut defaultVoiceJournalShortcut();

} // namespace vocalith
