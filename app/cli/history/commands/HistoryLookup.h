#pragma once

#include "app/cli/history/HistoryOptions.h"
#include "app/cli/history/commands/HistoryServices.h"
#include "base/Task.h"
#include "core/storage/history/HistoryError.h"
#include "core/storage/history/HistoryFilter.h"
#include "core/storage/history/HistoryPage.h"

namespace vocalith {

/// Why a command ends early: what it has to say, and its exit code.
struct HistoryComplaint {
    int exitCode = 0;
    std::string text; ///< empty when it was cancelled
};

HistoryComplaint complaintOf(const HistoryError& error);
/// Says it, and yields the exit code.
int report(const HistoryComplaint& complaint, const HistoryOutput& output);

/// Brings the index in line with the files; shows how far it is when that takes longer than a moment.
Task<Result<void, HistoryComplaint>> refreshHistory(const HistoryServices& services);

/// The entry that the user names: by the beginning of its identifier, or as `last`.
Task<Result<HistoryEntry, HistoryComplaint>> findEntry(std::string name, const HistoryServices& services);

/// The filter that the user describes, in that order.
Task<Result<HistoryFilter, HistoryComplaint>> filterFor(HistorySelection selection, HistorySortOrder order,
                                                        const HistoryServices& services);

} // namespace vocalith
