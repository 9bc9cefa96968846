#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/Task.h"
#include "base/TaskScope.h"
#include "core/storage/history/HistoryStore.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

class Clock;
class HistoryWatcher;
class PersistentAppStorage;

/// The history as screens and the pipeline use it: shows it page by page, filtered and sorted, and applies the user's
/// storage policy. Lives as long as the program; main thread. Failures are logged and returned; none loses an entry.
class HistoryService {
public:
    static constexpr std::size_t pageSize = 30;

    HistoryService(HistoryPlaces places, PersistentAppStorage& appStorage, Clock& clock, Logger logger);
    HistoryService(const HistoryService&) = delete;
    HistoryService& operator=(const HistoryService&) = delete;
    ~HistoryService();

    /// Follows from now on what others do to the files, and looks at all of them once, in the background. For programs
    /// that stay.
    void start();
    /// Ends what runs in the background. To be awaited before destruction once `start` was called.
    Task<void> shutDown();

    /// Opened when it is first asked for; nullptr when the folder of the history cannot be made.
    HistoryStore* store();
    /// Whether the user wants dictations to be kept.
    bool isEnabled() const;

    /// Keeps the entry, in place of one of the same identifier. Whoever makes entries unasked looks at `isEnabled`
    /// first.
    Task<Result<void, HistoryError>> upsert(HistoryEntry entry);
    Task<Result<HistoryEntry, HistoryError>> entry(Uuid id);

    const Observable<std::vector<HistoryEntry>>& filteredEntries() const { return m_filteredEntries; }
    const HistoryFilter& currentFilter() const { return m_currentFilter; }
    /// Where the entries loaded so far end; absent before the first page and when there is no more.
    const std::optional<HistoryCursor>& pagingCursor() const { return m_pagingCursor; }

    /// Shows the first page of what the filter lets through. Of several calls the last one counts.
    Task<Result<void, HistoryError>> setFilter(HistoryFilter filter);
    /// Appends the next page; does nothing when there is none.
    Task<Result<void, HistoryError>> loadMore();
    /// Brings the index in line with the files, and what is shown with both.
    Task<Result<void, HistoryError>> refresh();

    Task<Result<HistoryDeletion, HistoryError>> remove(std::vector<Uuid> ids);
    /// All that can be read; what cannot is left alone.
    Task<Result<HistoryDeletion, HistoryError>> removeAll();
    /// Removes what is older than the policy lets it become.
    Task<Result<HistoryDeletion, HistoryError>> cleanUp();
    /// The same, as the program does it by itself: when an hour has gone by since the last time. After a month without,
    /// and when the clock stands before the last time, it only notes the time: a clock that is wrong for a moment must
    /// not cost anybody their history.
    Task<void> cleanUpWhenDue();

    Observable<bool> isSearching;
    Signal<Uuid> newEntryInserted;

private:
    Task<Result<void, HistoryError>> load(std::size_t size, bool isContinuation);
    Task<Result<void, HistoryError>> reload();
    Task<void> lookAtAll();
    Task<void> lookAt(std::vector<std::string> days);
    void show(const HistoryEntry& entry);
    void hide(const std::vector<Uuid>& ids);
    void noteCleanup();
    template <class T>
    Result<T, HistoryError> logged(const char* prefix, Result<T, HistoryError> outcome) const;

    const HistoryPlaces m_places;
    PersistentAppStorage& m_appStorage;
    Clock& m_clock;
    const Logger m_logger;
    HistoryError m_storeFailure;
    std::unique_ptr<HistoryStore> m_store;
    std::unique_ptr<HistoryWatcher> m_watcher;
    Observable<std::vector<HistoryEntry>> m_filteredEntries;
    HistoryFilter m_currentFilter;
    std::optional<HistoryCursor> m_pagingCursor;
    bool m_hasLoaded = false;
    std::optional<Uuid> m_lastInserted;
    std::uint64_t m_loadGeneration = 0;
    TaskScope m_background;
    Subscription m_fileChanges;
    Subscription m_policyChange;
};

} // namespace vocalith
