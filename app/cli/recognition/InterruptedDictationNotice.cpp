#include "app/cli/recognition/InterruptedDictationNotice.h"

#include "app/cli/recognition/HistoryCommandHint.h"
#include "app/cli/terminal/Terminal.h"
#include "core/session/InterruptedDictationRecovery.h"

#include <fmt/format.h>

namespace vocalith {

std::string interruptedDictationNotice(const InterruptedDictation& interrupted)
{
    const std::string transcribe =
        fmt::format("Write it down with: vocalith transcribe \"{}\"", interrupted.recording.string());
    if (interrupted.failure)
        return userMessage(*interrupted.failure) + "\n" + transcribe;
    if (!interrupted.entryID)
        return fmt::format("A dictation was cut off earlier; its recording ({:.1f} s) was kept.\n{}",
                           interrupted.duration, transcribe);
    if (interrupted.hasText)
        return "A dictation was cut off earlier; its text is in the history.\nSee it with: " +
               historyCommand("show", *interrupted.entryID);
    return fmt::format("A dictation was cut off earlier; its recording ({:.1f} s) is in the history.\nWrite it down "
                       "with: {}",
                       interrupted.duration, historyCommand("retry", *interrupted.entryID));
}

void noticeInterruptedDictation(const InterruptedDictation& interrupted, Terminal& terminal)
{
    terminal.line(terminal.coloured(Terminal::Colour::yellow, "Notice: ") + interruptedDictationNotice(interrupted));
}

} // namespace vocalith
