#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/TaskScope.h"
#include "ports/Pasteboard.h"

#include <chrono>
#include <optional>

namespace vocalith {

/// The user's clipboard while it carries a text of ours to the focused application: saved first, put back when the
/// text has arrived. Texts that follow each other closely borrow it once, so that what comes back is the user's. What
/// somebody else puts there meanwhile stays. Part of the typing service, main thread; one text at a time.
class BorrowedPasteboard {
public:
    /// From the paste keystroke until what was there may come back.
    static constexpr std::chrono::milliseconds kRestoreDelay{300};
    /// How much longer an application may take to fetch the text.
    static constexpr std::chrono::milliseconds kFetchGrace{2000};
    /// What an application that was late has for reading on, in another type for instance.
    static constexpr std::chrono::milliseconds kLateReading{100};
    /// How often the clipboard is read again because somebody has copied meanwhile.
    static constexpr int kMostSnapshots = 3;

    enum class Fate {
        fetched,    ///< read by the focused application, as far as the desktop says who reads
        notFetched, ///< not read in time: the text stays on the clipboard
        taken,      ///< somebody else's before it was read
        cancelled   ///< stopped while waiting; the clipboard comes back when it is due
    };

    BorrowedPasteboard(Pasteboard& pasteboard, Clock& clock, Logger logger);

    /// Saves what is there and puts the text in its place. After a failure or a stop the clipboard is as it was.
    Task<Result<void, PasteboardError>> put(std::string text, bool isTransient);
    /// To be awaited right after the paste keystroke: what has become of the text. The restore is seen to.
    Task<Fate> untilFetched();
    /// Puts back what was there, now.
    void giveBack();
    /// The text is to stay; what was there is forgotten.
    void leaveText();
    /// Puts back what is still due, and sees that it outlives the program. No text may be on its way.
    Task<void> shutDown();

private:
    Task<Result<void, PasteboardError>> save();
    Task<Result<PasteboardSnapshot, PasteboardError>> settledSnapshot();
    Task<void> restore(PasteboardSnapshot snapshot);
    bool isOurs() const { return m_pasteboard.changeCount() == m_changeCount; }

    Pasteboard& m_pasteboard;
    Clock& m_clock;
    const Logger m_logger;
    std::optional<PasteboardSnapshot> m_snapshot; ///< what the user had; absent while nothing is borrowed
    std::int64_t m_changeCount = 0;               ///< as it was when our text had been written
    Timer m_restoreTimer;
    TaskScope m_restores;
};

} // namespace vocalith
