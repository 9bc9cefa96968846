#pragma once

#include "app/cli/history/HistoryOptions.h"
#include "app/cli/history/commands/HistoryServices.h"
#include "base/TaskScope.h"

namespace vocalith {

/// `vocalith history`: runs the command that was chosen, which Ctrl-C ends.
class HistoryCommand {
public:
    HistoryCommand(HistoryOptions options, HistoryServices services);

    /// Yields the exit code.
    Task<int> run();

private:
    Task<void> runChosen();

    const HistoryOptions m_options;
    const HistoryServices m_services;
    TaskScope m_work;
    int m_exitCode = 0;
};

} // namespace vocalith
