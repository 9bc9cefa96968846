#pragma once

#include <string>

namespace vocalith {

struct InterruptedDictation;
class Terminal;

/// That a dictation was cut off earlier, where it is, and the command that makes text of it.
std::string interruptedDictationNotice(const InterruptedDictation& interrupted);

/// Tells the user so on the terminal.
void noticeInterruptedDictation(const InterruptedDictation& interrupted, Terminal& terminal);

} // namespace vocalith
