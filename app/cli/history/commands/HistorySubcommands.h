#pragma once

#include "app/cli/history/HistoryOptions.h"
#include "app/cli/history/commands/HistoryServices.h"
#include "base/Task.h"

namespace vocalith {

/// One function for each command of `vocalith history`. Each says itself what went wrong and yields the exit code;
/// asked to stop, `exitCancelled`. The services outlive the task.
Task<int> runHistory(HistoryListOptions options, const HistoryServices& services);
Task<int> runHistory(HistoryShowOptions options, const HistoryServices& services);
Task<int> runHistory(HistoryPlayOptions options, const HistoryServices& services);
Task<int> runHistory(HistoryCopyOptions options, const HistoryServices& services);
Task<int> runHistory(HistoryRetryOptions options, const HistoryServices& services);
Task<int> runHistory(HistoryDeleteOptions options, const HistoryServices& services);
Task<int> runHistory(HistoryExportOptions options, const HistoryServices& services);
Task<int> runHistory(HistoryCleanupOptions options, const HistoryServices& services);

} // namespace vocalith
