#include "app/cli/ExitCode.h"
#include "app/cli/history/commands/HistoryLookup.h"
#include "app/cli/history/commands/HistorySubcommands.h"
#include "app/cli/history/text/HistoryText.h"
#include "core/storage/history/HistoryService.h"

#include <algorithm>

namespace vocalith {
namespace {

constexpr std::size_t kMostUnreadable = 10; // named one by one

struct Listing {
    std::vector<HistoryEntry> entries;
    bool isMore = false;
};
using Listed = Result<Listing, HistoryComplaint>;

Task<Listed> firstEntries(HistoryFilter filter, std::size_t limit, const HistoryServices& services)
{
    auto& history = services.history;
    auto loaded = co_await history.setFilter(std::move(filter));
    while (loaded && history.pagingCursor() && history.filteredEntries().get().size() < limit) {
        auto more = co_await history.loadMore();
        loaded = std::move(more);
    }
    if (!loaded)
        co_return failure(complaintOf(loaded.error()));
    Listing listing{history.filteredEntries().get(), history.pagingCursor().has_value()};
    if (listing.entries.size() > limit) {
        listing.entries.resize(limit);
        listing.isMore = true;
    }
    co_return listing;
}

Task<Listed> entriesBehind(std::string name, HistoryFilter filter, std::size_t limit, const HistoryServices& services)
{
    const auto last = co_await findEntry(std::move(name), services);
    if (!last)
        co_return failure(last.error());
    auto& store = *services.history.store();
    const auto cursor = co_await store.cursor(last->id);
    if (!cursor)
        co_return failure(complaintOf(cursor.error()));
    HistoryPageRequest request{std::move(filter), *cursor, limit};
    auto page = co_await store.page(std::move(request));
    if (!page)
        co_return failure(complaintOf(page.error()));
    co_return Listing{std::move(page->entries), page->next.has_value()};
}

std::string lines(const std::vector<HistoryEntry>& entries, const HistoryOutput& output)
{
    std::string text;
    for (const auto& entry : entries)
        text += historyLine(entry, output) + '\n';
    return text;
}

std::string jsonArray(const std::vector<HistoryEntry>& entries)
{
    std::string text = "[";
    for (const auto& entry : entries) {
        const auto stored = storedForm(entry);
        text += (text.size() > 1 ? ",\n" : "\n") + stored.substr(0, stored.find_last_not_of('\n') + 1);
    }
    return text + (entries.empty() ? "]\n" : "\n]\n");
}

/// As one word for the shell.
std::string quoted(const std::string& text)
{
    std::string word = "'";
    for (const char c : text)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + '\'';
}

/// The command that shows what comes behind that entry.
std::string nextPage(const HistoryListOptions& options, const Uuid& last)
{
    const auto& selection = options.selection;
    std::string command =
        "vocalith history " + (selection.query.empty() ? "list" : "search " + quoted(selection.query));
    if (options.limit != HistoryListOptions().limit)
        command += " --limit " + std::to_string(options.limit);
    if (options.oldestFirst)
        command += " --oldest-first";
    if (!selection.prompt.empty())
        command += " --prompt " + quoted(selection.prompt);
    switch (selection.kind) {
    case HistorySelection::Kind::all: break;
    case HistorySelection::Kind::dictation: command += " --only dictation"; break;
    case HistorySelection::Kind::files: command += " --only files"; break;
    case HistorySelection::Kind::journal: command += " --only journal"; break;
    }
    return command + " --before " + last.toString();
}

/// Whether the options let everything through.
bool isWhole(const HistoryListOptions& options)
{
    const auto& [kind, prompt, query] = options.selection;
    return kind == HistorySelection::Kind::all && prompt.empty() && query.empty() && options.before.empty();
}

Task<Result<std::monostate, HistoryComplaint>> nameUnreadable(const HistoryServices& services)
{
    const auto unreadable = co_await services.history.store()->unreadable();
    if (!unreadable)
        co_return failure(complaintOf(unreadable.error()));
    const auto named = std::min(unreadable->size(), kMostUnreadable);
    for (std::size_t i = 0; i < named; ++i) {
        const auto& [file, reason] = (*unreadable)[i];
        services.output.note("Cannot be read: \"" + file.string() + "\": " + reason);
    }
    if (unreadable->size() > named)
        services.output.note("… and " + std::to_string(unreadable->size() - named) + " more files.");
    co_return std::monostate();
}

} // namespace

Task<int> runHistory(HistoryListOptions options, const HistoryServices& services)
{
    const auto& output = services.output;
    const auto refreshed = co_await refreshHistory(services);
    if (!refreshed)
        co_return report(refreshed.error(), output);
    const auto order = options.oldestFirst ? HistorySortOrder::oldestFirst : HistorySortOrder::newestFirst;
    auto filter = co_await filterFor(options.selection, order, services);
    if (!filter)
        co_return report(filter.error(), output);
    auto listing = options.before.empty() ? firstEntries(*std::move(filter), options.limit, services)
                                          : entriesBehind(options.before, *std::move(filter), options.limit, services);
    const auto listed = co_await listing;
    if (!listed)
        co_return report(listed.error(), output);
    const auto& entries = listed->entries;
    const int code = options.json ? output.print(jsonArray(entries)) : output.show(lines(entries, output));
    if (code != exitSuccess)
        co_return code;
    if (entries.empty() && !options.json)
        output.note(isWhole(options) ? "The history is empty." : "There are no such entries.");
    if (listed->isMore && !entries.empty() && !options.json)
        output.note("More: " + nextPage(options, entries.back().id));
    const auto told = co_await nameUnreadable(services);
    co_return told ? static_cast<int>(exitSuccess) : report(told.error(), output);
}

} // namespace vocalith
