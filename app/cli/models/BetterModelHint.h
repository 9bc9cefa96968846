#pragma once

#include "models/TranscriptionModelID.h"

namespace vocalith {

class PersistentAppStorage;
class Terminal;

/// Says, the first time that a text of the system's own recogniser is shown, that there are better ones.
void hintAtBetterModels(const TranscriptionModelID& used, PersistentAppStorage& appStorage, Terminal& terminal);

} // namespace vocalith
