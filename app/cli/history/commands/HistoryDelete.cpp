#include "app/cli/ExitCode.h"
#include "app/cli/history/commands/Confirmation.h"
#include "app/cli/history/commands/HistoryLookup.h"
#include "app/cli/history/commands/HistorySubcommands.h"
#include "base/Clock.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <fmt/format.h>

#include <algorithm>

namespace vocalith {
namespace {

using Deleted = Result<HistoryDeletion, HistoryError>;
using IDs = Result<std::vector<Uuid>, HistoryComplaint>;

std::string counted(std::size_t count, const char* one, const char* many)
{
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

std::string deletedText(const HistoryDeletion& done)
{
    return fmt::format("{} and {}", counted(done.entries, "entry", "entries"),
                       counted(done.recordings, "recording", "recordings"));
}

int reportFailed(const HistoryDeletion& done, const HistoryOutput& output)
{
    if (done.failed.empty())
        return exitSuccess;
    std::string text = counted(done.failed.size(), "entry", "entries") + " could not be deleted:";
    for (const auto& id : done.failed)
        text += "\n  " + id.toString();
    return output.complain(text);
}

Task<IDs> findAll(std::vector<std::string> names, const HistoryServices& services)
{
    const auto refreshed = co_await refreshHistory(services); // an entry that is still unknown may share a recording
    if (!refreshed)
        co_return failure(refreshed.error());
    std::vector<Uuid> ids;
    for (const auto& name : names) {
        const auto entry = co_await findEntry(name, services);
        if (!entry)
            co_return failure(entry.error());
        if (std::find(ids.begin(), ids.end(), entry->id) == ids.end())
            ids.push_back(entry->id);
    }
    co_return ids;
}

/// What is to be said instead of deleting everything; empty when it may be done.
Task<Result<void, HistoryComplaint>> askWhetherAll(bool yes, const HistoryServices& services)
{
    const auto& output = services.output;
    if (!yes && !canAsk(output.terminal()))
        co_return failure(HistoryComplaint{exitUsage, "Nobody can be asked here. Add --yes to delete everything."});
    const auto refreshed = co_await refreshHistory(services);
    if (!refreshed)
        co_return failure(refreshed.error());
    if (yes)
        co_return Result<void, HistoryComplaint>();
    const auto count = co_await services.history.store()->count(HistoryFilter());
    if (!count)
        co_return failure(complaintOf(count.error()));
    const auto question = "Delete " + counted(*count, "entry", "entries") + " with their recordings?";
    const bool isMeant = co_await confirmed(question, output.terminal());
    if (!isMeant)
        co_return failure(HistoryComplaint{exitCancelled, {}});
    co_return Result<void, HistoryComplaint>();
}

/// How many entries are older than the retention allows, as pages tell: from the oldest on.
Task<Result<std::size_t, HistoryError>> countBefore(Date date, HistoryStore& store)
{
    HistoryPageRequest request;
    request.filter.sortOrder = HistorySortOrder::oldestFirst;
    std::size_t count = 0;
    do {
        const auto page = co_await store.page(request);
        if (!page)
            co_return failure(page.error());
        const auto& entries = page->entries;
        const auto firstKept = std::find_if(entries.begin(), entries.end(),
                                            [date](const HistoryEntry& entry) { return entry.creationDate >= date; });
        count += static_cast<std::size_t>(firstKept - entries.begin());
        request.after = firstKept == entries.end() ? page->next : std::nullopt;
    } while (request.after);
    co_return count;
}

} // namespace

Task<int> runHistory(HistoryDeleteOptions options, const HistoryServices& services)
{
    const auto& output = services.output;
    auto& history = services.history;
    Deleted deleted;
    if (options.all) {
        const auto agreed = co_await askWhetherAll(options.yes, services);
        if (!agreed)
            co_return report(agreed.error(), output);
        auto done = co_await history.removeAll();
        deleted = std::move(done);
    } else {
        auto ids = co_await findAll(options.ids, services);
        if (!ids)
            co_return report(ids.error(), output);
        auto done = co_await history.remove(*std::move(ids));
        deleted = std::move(done);
    }
    if (!deleted)
        co_return report(complaintOf(deleted.error()), output);
    output.note("Deleted " + deletedText(*deleted) + ".");
    co_return reportFailed(*deleted, output);
}

Task<int> runHistory(HistoryCleanupOptions options, const HistoryServices& services)
{
    const auto& output = services.output;
    const auto policy = services.appStorage.historyStoragePolicy.get();
    const auto name = fmt::format("\"{}\"", label(policy));
    const auto refreshed = co_await refreshHistory(services);
    if (!refreshed)
        co_return report(refreshed.error(), output);
    const auto period = retention(policy);
    if (options.dryRun && period) {
        const auto count = co_await countBefore(services.clock.now() - *period, *services.history.store());
        if (!count)
            co_return report(complaintOf(count.error()), output);
        output.note(counted(*count, "entry", "entries") + " would be deleted: the setting is " + name + ".");
        co_return static_cast<int>(exitSuccess);
    }
    if (!options.dryRun) {
        const auto done = co_await services.history.cleanUp();
        if (!done)
            co_return report(complaintOf(done.error()), output);
        if (period) {
            output.note("Deleted " + deletedText(*done) + ": the setting is " + name + ".");
            co_return reportFailed(*done, output);
        }
    }
    output.note("Nothing is ever too old: the setting is " + name + ".");
    co_return static_cast<int>(exitSuccess);
}

} // namespace vocalith
