#include "app/cli/history/commands/HistoryLookup.h"

#include "app/cli/ExitCode.h"
#include "app/cli/history/text/HistoryDates.h"
#include "app/cli/history/text/HistoryText.h"
#include "base/Clock.h"
#include "base/Text.h"
#include "core/storage/history/HistoryService.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace vocalith {
namespace {

constexpr std::size_t kShortestPrefix = 4;
constexpr std::size_t kMostCandidates = 10;
constexpr std::chrono::milliseconds kMoment(300);
constexpr std::size_t kPageSize = 50;

Failure<HistoryComplaint> complain(std::string text, int exitCode = exitFailure)
{
    return failure(HistoryComplaint{exitCode, std::move(text)});
}

bool isPrefix(const std::string& name)
{
    return name.size() >= kShortestPrefix &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isxdigit(c) != 0 || c == '-'; });
}

HistoryComplaint unknown(const std::string& name)
{
    return {exitFailure, "There is no entry \"" + name + "\". \"vocalith history list\" shows which there are."};
}

Task<Result<HistoryEntry, HistoryComplaint>> load(Uuid id, const HistoryServices& services)
{
    auto entry = co_await services.history.entry(id);
    if (!entry && entry.error().kind == HistoryError::Kind::notFound)
        co_return failure(unknown(id.toString()));
    if (!entry)
        co_return failure(complaintOf(entry.error()));
    co_return *std::move(entry);
}

Task<Result<HistoryEntry, HistoryComplaint>> newest(const HistoryServices& services)
{
    const auto refreshed = co_await refreshHistory(services);
    if (!refreshed)
        co_return failure(refreshed.error());
    HistoryPageRequest request;
    request.size = 1;
    auto page = co_await services.history.store()->page(std::move(request));
    if (!page)
        co_return failure(complaintOf(page.error()));
    if (page->entries.empty())
        co_return complain("The history is empty.");
    co_return std::move(page->entries.front());
}

Task<Result<std::vector<Uuid>, HistoryComplaint>> identifiers(std::string prefix, const HistoryServices& services)
{
    auto& store = *services.history.store();
    if (!store.needsRefresh()) {
        auto known = co_await store.identifiers(prefix, kMostCandidates + 1);
        if (known && !known->empty())
            co_return *std::move(known);
    }
    // It may have been put there by hand.
    const auto refreshed = co_await refreshHistory(services);
    if (!refreshed)
        co_return failure(refreshed.error());
    auto found = co_await store.identifiers(prefix, kMostCandidates + 1);
    if (!found)
        co_return failure(complaintOf(found.error()));
    co_return *std::move(found);
}

Task<HistoryComplaint> ambiguous(std::string prefix, std::vector<Uuid> candidates, const HistoryServices& services)
{
    std::string text = "Several entries begin with \"" + prefix + "\":";
    const bool areMore = candidates.size() > kMostCandidates;
    candidates.resize(std::min(candidates.size(), kMostCandidates));
    for (const auto& id : candidates) {
        const auto entry = co_await services.history.entry(id);
        const auto head = "\n  " + id.toString() + "  ";
        const auto columns = std::max(services.output.columns(), head.size() + kMostCandidates) - head.size();
        const auto what = entry ? localDateAndTime(entry->creationDate) + "  " + finalText(*entry) : std::string();
        text += head + firstWords(what, columns);
    }
    co_return HistoryComplaint{exitFailure, text + (areMore ? "\n  …" : "")};
}

Task<Result<Uuid, HistoryComplaint>> promptInHistory(std::string name, const HistoryServices& services)
{
    HistoryPageRequest request{HistoryFilter{{}, name, {}}, std::nullopt, kPageSize};
    const auto wanted = searchForm(name);
    do {
        const auto page = co_await services.history.store()->page(request);
        if (!page)
            co_return failure(complaintOf(page.error()));
        for (const auto& entry : page->entries) {
            const auto* prompt = usedPrompt(entry);
            if (prompt && searchForm(prompt->name) == wanted)
                co_return prompt->id;
        }
        request.after = page->next;
    } while (request.after);
    co_return complain("No entry was made with a prompt named \"" + name + "\".");
}

/// A prompt of the settings, or one that is there no more but was used.
Task<Result<Uuid, HistoryComplaint>> promptNamed(std::string name, const HistoryServices& services)
{
    if (const auto id = Uuid::parse(name))
        co_return *id;
    const auto wanted = searchForm(name);
    auto prompts = services.appStorage.aiPrompts.get();
    prompts.push_back(services.appStorage.mainPrompt.get());
    for (const auto& prompt : prompts) {
        if (searchForm(prompt.name) == wanted)
            co_return prompt.id;
    }
    co_return co_await promptInHistory(std::move(name), services);
}

HistoryFilterMode modeOf(HistorySelection::Kind kind)
{
    switch (kind) {
    case HistorySelection::Kind::all: return history_filter::All{};
    case HistorySelection::Kind::dictation: return history_filter::Dictation{};
    case HistorySelection::Kind::files: return history_filter::Files{};
    case HistorySelection::Kind::journal: return history_filter::Journal{};
    }
    return {};
}

} // namespace

HistoryComplaint complaintOf(const HistoryError& error)
{
    if (error.kind == HistoryError::Kind::cancelled)
        return {exitCancelled, {}};
    return {exitFailure, userMessage(error)};
}

int report(const HistoryComplaint& complaint, const HistoryOutput& output)
{
    if (!complaint.text.empty())
        output.complain(complaint.text);
    return complaint.exitCode;
}

Task<Result<void, HistoryComplaint>> refreshHistory(const HistoryServices& services)
{
    auto* store = services.history.store();
    auto& terminal = services.output.terminal();
    Subscription progress;
    if (store) {
        const auto showFrom = services.clock.instant() + kMoment;
        progress = store->indexingProgress().subscribe([&, showFrom](const std::optional<double>& done) {
            if (done && services.clock.instant() >= showFrom)
                terminal.status(fmt::format("Reading the history: {:.0f} %", *done * 100));
        });
    }
    const auto refreshed = co_await services.history.refresh();
    terminal.clearStatus();
    if (!refreshed)
        co_return failure(complaintOf(refreshed.error()));
    co_return Result<void, HistoryComplaint>();
}

Task<Result<HistoryEntry, HistoryComplaint>> findEntry(std::string name, const HistoryServices& services)
{
    if (!services.history.store()) // which says why there is none
        co_return co_await load(Uuid(), services);
    if (name == "last")
        co_return co_await newest(services);
    if (const auto id = Uuid::parse(name))
        co_return co_await load(*id, services);
    if (!isPrefix(name))
        co_return complain(
            "\"" + name + "\" names no entry. Give the first characters of its identifier, at least four, or last.",
            exitUsage);
    auto found = co_await identifiers(name, services);
    if (!found)
        co_return failure(found.error());
    if (found->empty())
        co_return failure(unknown(name));
    if (found->size() == 1)
        co_return co_await load(found->front(), services);
    auto complaint = co_await ambiguous(std::move(name), *std::move(found), services);
    co_return failure(std::move(complaint));
}

Task<Result<HistoryFilter, HistoryComplaint>> filterFor(HistorySelection selection, HistorySortOrder order,
                                                        const HistoryServices& services)
{
    HistoryFilter filter{modeOf(selection.kind), selection.query, order};
    if (!selection.prompt.empty()) {
        const auto prompt = co_await promptNamed(selection.prompt, services);
        if (!prompt)
            co_return failure(prompt.error());
        filter.mode = history_filter::AIPromptEntries{*prompt};
    }
    co_return filter;
}

} // namespace vocalith
