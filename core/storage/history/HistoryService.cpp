#include "core/storage/history/HistoryService.h"

#include "base/CaseName.h"
#include "base/Clock.h"
#include "base/Iso8601.h"
#include "base/Text.h"
#include "core/storage/history/HistoryWatcher.h"
#include "core/storage/history/archive/HistoryEntrySummary.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <algorithm>
#include <utility>

namespace vocalith {
namespace {

using Error = HistoryError;

constexpr std::chrono::hours kCleanupInterval(1);
constexpr std::chrono::days kLongestPlausiblePause(30);

std::string prefixFor(const char* operation, const Uuid& id)
{
    return operation + id.toString() + ": ";
}

bool passes(const HistoryFilter& filter, const HistoryEntry& entry)
{
    using namespace history_filter;
    using Kind = HistoryEntrySummary::Kind;
    const auto summary = summarize(entry);
    if (const auto* prompt = std::get_if<AIPromptEntries>(&filter.mode); prompt && summary.promptID != prompt->promptID)
        return false;
    if ((std::holds_alternative<Dictation>(filter.mode) && summary.kind != Kind::dictation) ||
        (std::holds_alternative<Files>(filter.mode) && summary.kind != Kind::file) ||
        (std::holds_alternative<Journal>(filter.mode) && summary.kind != Kind::journal))
        return false;
    return summary.searchText.find(searchForm(filter.searchQuery)) != std::string::npos;
}

} // namespace

HistoryService::HistoryService(HistoryPlaces places, PersistentAppStorage& appStorage, Clock& clock, Logger logger)
    : m_places(std::move(places)), m_appStorage(appStorage), m_clock(clock), m_logger(std::move(logger))
{
    m_policyChange = m_appStorage.historyStoragePolicy.subscribe([this](HistoryStoragePolicy policy) {
        m_logger.info("📚 History storage policy set to: " + std::string(caseName(policy)));
    });
}

HistoryService::~HistoryService() = default;

HistoryStore* HistoryService::store()
{
    if (m_store)
        return m_store.get();
    auto opened = HistoryStore::open(m_places, m_logger);
    if (opened) {
        m_store = std::move(*opened);
    } else if (opened.error() != m_storeFailure) {
        m_storeFailure = opened.error();
        m_logger.error("Cannot access Application Support directory: " + m_storeFailure.detail);
    }
    return m_store.get();
}

void HistoryService::start()
{
    if (!store() || m_watcher)
        return;
    m_watcher = std::make_unique<HistoryWatcher>(m_store->places().rootURL, m_clock);
    m_fileChanges = m_watcher->changed.subscribe([this](const std::vector<std::string>& days) {
        m_background.start(days.empty() ? lookAtAll() : lookAt(days));
    });
    m_background.start(lookAtAll());
}

Task<void> HistoryService::shutDown()
{
    m_fileChanges.reset();
    m_background.requestStop();
    co_await m_background.untilEmpty();
}

bool HistoryService::isEnabled() const
{
    return m_appStorage.historyStoragePolicy.get() != HistoryStoragePolicy::disabled;
}

template <class T>
Result<T, HistoryError> HistoryService::logged(const char* prefix, Result<T, HistoryError> outcome) const
{
    if (!outcome && outcome.error().kind != Error::Kind::cancelled)
        m_logger.error(prefix + userMessage(outcome.error()));
    return outcome;
}

Task<Result<void, Error>> HistoryService::upsert(HistoryEntry entry)
{
    const auto prefix = prefixFor("Cannot upsert entry ", entry.id);
    if (!store())
        co_return logged<void>(prefix.c_str(), failure(m_storeFailure));
    auto written = co_await m_store->upsert(entry);
    if (written)
        show(entry);
    co_return logged(prefix.c_str(), std::move(written));
}

Task<Result<HistoryEntry, Error>> HistoryService::entry(Uuid id)
{
    if (!store())
        co_return failure(m_storeFailure);
    co_return co_await m_store->entry(id);
}

/// Puts the entry where it belongs among those that are shown.
void HistoryService::show(const HistoryEntry& entry)
{
    auto shown = m_filteredEntries.get();
    const bool wasShown = std::erase_if(shown, [&](const auto& other) { return other.id == entry.id; }) > 0;
    const bool newestFirst = m_currentFilter.sortOrder == HistorySortOrder::newestFirst;
    const auto comesBefore = [newestFirst](const HistoryEntry& one, const HistoryEntry& other) {
        return newestFirst ? one.creationDate > other.creationDate : one.creationDate < other.creationDate;
    };
    const auto place = std::lower_bound(shown.begin(), shown.end(), entry, comesBefore);
    // Behind the last one loaded it belongs only when there is nothing more to be loaded.
    const bool isLoaded = m_hasLoaded && (place != shown.end() || !m_pagingCursor);
    if (isLoaded && passes(m_currentFilter, entry))
        shown.insert(place, entry);
    m_filteredEntries.set(std::move(shown));
    if (!wasShown && m_lastInserted != entry.id) { // a dictation is written several times
        m_lastInserted = entry.id;
        newEntryInserted.emit(entry.id);
    }
}

void HistoryService::hide(const std::vector<Uuid>& ids)
{
    auto shown = m_filteredEntries.get();
    std::erase_if(shown, [&](const auto& entry) { return std::find(ids.begin(), ids.end(), entry.id) != ids.end(); });
    m_filteredEntries.set(std::move(shown));
}

Task<Result<void, Error>> HistoryService::setFilter(HistoryFilter filter)
{
    m_currentFilter = std::move(filter);
    const bool isSearch = !m_currentFilter.searchQuery.empty();
    isSearching.set(isSearch);
    const auto generation = m_loadGeneration + 1;
    auto loaded = co_await load(pageSize, false);
    if (generation == m_loadGeneration)
        isSearching.set(false);
    co_return logged("Cannot load history: ", std::move(loaded));
}

Task<Result<void, Error>> HistoryService::loadMore()
{
    if (!m_pagingCursor)
        co_return Result<void, Error>();
    auto loaded = co_await load(pageSize, true);
    co_return logged("Cannot load recent entries: ", std::move(loaded));
}

/// Loads that many entries, from the beginning or behind those loaded. One that is overtaken by another changes
/// nothing.
Task<Result<void, Error>> HistoryService::load(std::size_t size, bool isContinuation)
{
    const auto generation = ++m_loadGeneration;
    if (!store())
        co_return failure(m_storeFailure);
    HistoryPageRequest request{m_currentFilter, isContinuation ? m_pagingCursor : std::nullopt, size};
    auto page = co_await m_store->page(std::move(request));
    if (!page)
        co_return failure(std::move(page.error()));
    if (generation != m_loadGeneration)
        co_return Result<void, Error>();
    m_hasLoaded = true;
    m_pagingCursor = page->next;
    auto entries = isContinuation ? m_filteredEntries.get() : std::vector<HistoryEntry>();
    entries.insert(entries.end(), std::make_move_iterator(page->entries.begin()),
                   std::make_move_iterator(page->entries.end()));
    m_filteredEntries.set(std::move(entries));
    if (m_store->needsRefresh() && m_watcher && m_background.isEmpty())
        m_background.start(lookAtAll()); // the index was lost
    co_return Result<void, Error>();
}

Task<Result<void, Error>> HistoryService::reload()
{
    if (!m_hasLoaded)
        co_return Result<void, Error>();
    const auto size = std::max(pageSize, m_filteredEntries.get().size());
    auto loaded = co_await load(size, false);
    co_return logged("Cannot load history: ", std::move(loaded));
}

Task<Result<void, Error>> HistoryService::refresh()
{
    if (!store())
        co_return failure(m_storeFailure);
    auto refreshed = co_await m_store->refresh();
    if (!refreshed)
        co_return logged<void>("Cannot load history: ", failure(std::move(refreshed.error())));
    co_return co_await reload();
}

Task<void> HistoryService::lookAtAll()
{
    // Watched first: what changes while the files are looked at is then seen as well.
    const auto days = co_await m_store->days();
    if (days)
        m_watcher->watch(*days);
    const auto refreshed = co_await refresh();
    static_cast<void>(refreshed); // it has been logged
}

Task<void> HistoryService::lookAt(std::vector<std::string> days)
{
    const auto changed = co_await m_store->refresh(std::move(days));
    if (changed && *changed) {
        const auto shown = co_await reload();
        static_cast<void>(shown); // it has been logged
    }
}

Task<Result<HistoryDeletion, Error>> HistoryService::remove(std::vector<Uuid> ids)
{
    if (!store())
        co_return failure(m_storeFailure);
    const auto prefix = ids.size() == 1 ? prefixFor("Cannot delete entry ", ids.front()) : "Failed to delete entries: ";
    auto removed = co_await m_store->remove(ids);
    if (removed) {
        std::erase_if(ids, [&](const Uuid& id) {
            return std::find(removed->failed.begin(), removed->failed.end(), id) != removed->failed.end();
        });
        hide(ids);
    }
    co_return logged(prefix.c_str(), std::move(removed));
}

Task<Result<HistoryDeletion, Error>> HistoryService::removeAll()
{
    if (!store())
        co_return logged<HistoryDeletion>("Failed to delete all entries: ", failure(m_storeFailure));
    auto removed = co_await m_store->removeAll();
    if (removed && removed->failed.empty())
        m_logger.info("Deleted all history entries");
    const auto shown = co_await reload();
    static_cast<void>(shown); // it has been logged
    co_return logged("Failed to delete all entries: ", std::move(removed));
}

Task<Result<HistoryDeletion, Error>> HistoryService::cleanUp()
{
    if (!store())
        co_return logged<HistoryDeletion>("Failed to run history cleanup: ", failure(m_storeFailure));
    HistoryDeletion done;
    if (const auto period = retention(m_appStorage.historyStoragePolicy.get())) {
        auto removed = co_await m_store->removeCreatedBefore(m_clock.now() - *period);
        if (!removed)
            co_return logged("Failed to run history cleanup: ", std::move(removed));
        done = std::move(*removed);
    }
    noteCleanup();
    const auto shown = co_await reload();
    static_cast<void>(shown); // it has been logged
    co_return done;
}

Task<void> HistoryService::cleanUpWhenDue()
{
    const auto last = m_appStorage.lastHistoryCleanupDate.get();
    const auto now = m_clock.now();
    if (!last || now < *last || now - *last > kLongestPlausiblePause) {
        noteCleanup();
    } else if (now - *last >= kCleanupInterval) {
        const auto done = co_await cleanUp();
        static_cast<void>(done); // it has been logged
    }
}

void HistoryService::noteCleanup()
{
    const auto now = m_clock.now();
    m_appStorage.lastHistoryCleanupDate.set(now);
    m_logger.info("🧹 Last history cleanup date updated to: " + toIso8601(now));
}

} // namespace vocalith
