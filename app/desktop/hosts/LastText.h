#pragma once

#include "base/Observable.h"
#include "base/Result.h"
#include "base/TaskScope.h"
#include "core/storage/history/HistoryError.h"

#include <string>

namespace vocalith {

class HistoryService;
class Notices;
class TextOutput;

/// The newest text of the history, for inserting it once more. Main thread.
class LastText {
public:
    LastText(HistoryService& history, TextOutput& output, Notices& notices);

    /// Whether there is one, as far as was looked.
    Observable<bool> isThere{false};

    /// Looks for it now, and again whenever the history has been looked through. To be called once the history is there
    /// to be used.
    void start();
    /// Looks for it again. Returns at once.
    void look() { m_tasks.start(lookForIt()); }
    /// Delivers it as a dictation's text is; the user is told what fails.
    void insertAgain() { m_tasks.start(deliver()); }
    /// To be awaited before destruction.
    Task<void> shutDown();

private:
    Task<void> lookForIt();
    Task<void> deliver();
    /// Empty when there is none.
    Task<Result<std::string, HistoryError>> find();

    HistoryService& m_history;
    TextOutput& m_output;
    Notices& m_notices;
    TaskScope m_tasks;
    Subscription m_lookedThrough;
};

} // namespace vocalith
