#pragma once

namespace vocalith {

struct InterruptedDictation;
class Terminal;

/// Tells the user that a dictation was cut off earlier, where it is, and the command that makes text of it.
void noticeInterruptedDictation(const InterruptedDictation& interrupted, Terminal& terminal);

} // namespace vocalith
