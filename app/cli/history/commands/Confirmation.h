#pragma once

#include "base/Task.h"

#include <string>

namespace vocalith {

class Terminal;

/// Whether somebody sits there who can be asked: standard input and standard error are a terminal.
bool canAsk(const Terminal& terminal);

/// Asks a question whose answer is y or n; anything but y, and a stop, is no.
Task<bool> confirmed(std::string question, Terminal& terminal);

} // namespace vocalith
