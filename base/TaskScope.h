#pragma once

#include "base/OneShot.h"
#include "base/Task.h"

#include <memory>

namespace vocalith {

/// Owns running tasks. Its owner gives it tasks, can ask those that run to stop, and awaits it empty before it is
/// destroyed: a suspended frame is never thrown away, so destroying a scope that still runs something is a bug and ends
/// the program. Main thread only.
class TaskScope {
public:
    TaskScope();
    TaskScope(const TaskScope&) = delete;
    TaskScope& operator=(const TaskScope&) = delete;
    ~TaskScope();

    /// Runs the task up to its first real wait before it returns, and the rest from the event loop.
    void start(Task<void> task);
    /// Asks everything that runs now to stop. What is started later is not affected.
    void requestStop();
    bool isEmpty() const;
    /// Ends once nothing runs. It does not itself yield to cancellation: what was started must come to its end.
    Task<void> untilEmpty();

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace vocalith
