#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "base/Task.h"
#include "base/Worker.h"
#include "core/storage/history/HistoryError.h"
#include "core/storage/history/HistoryPage.h"

#include <memory>

namespace vocalith {

class HistoryArchive;

/// Where the history keeps what it keeps. All absolute.
struct HistoryPlaces {
    std::filesystem::path rootURL;          ///< one folder a day, one file an entry
    std::filesystem::path recordingsFolder; ///< only recordings in it are ever removed with their entries
    std::filesystem::path indexFile;        ///< derived; may be deleted at any time
};

/// The history on disk: one JSON file an entry, and beside them a derived index that makes paging and search fast. The
/// files are the truth; the index is made again when it is missing, stale or damaged. All operations run one at a time
/// on a thread of the store's own and are awaited on the main thread. A stop makes the await yield `cancelled`; an
/// operation that has begun is carried through. Several processes may use one history.
class HistoryStore {
public:
    using Error = HistoryError;

    /// Makes the root folder. Fails when there is none and none can be made.
    static Result<std::unique_ptr<HistoryStore>, Error> open(HistoryPlaces places, Logger logger);
    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;
    ~HistoryStore();

    /// Writes the entry to its file, in place of what had the same identifier. It is on the disk when this ends.
    Task<Result<void, Error>> upsert(HistoryEntry entry);
    Task<Result<HistoryPage, Error>> page(HistoryPageRequest request);
    Task<Result<HistoryEntry, Error>> entry(Uuid id);
    /// The cursor of the page behind that entry, in either order.
    Task<Result<HistoryCursor, Error>> cursor(Uuid id);
    /// The cursor of the page, newest first, of what was created before the date.
    static HistoryCursor cursorAt(Date date);
    /// The entries whose identifier begins with `prefix` (in any case), at most `limit`.
    Task<Result<std::vector<Uuid>, Error>> identifiers(std::string prefix, std::size_t limit);
    /// How many entries there are for the filter.
    Task<Result<std::size_t, Error>> count(HistoryFilter filter);
    Task<Result<std::vector<UnreadableEntry>, Error>> unreadable();

    /// Removes the entries, and their recordings where no other entry uses them. An identifier without an entry is
    /// passed over.
    Task<Result<HistoryDeletion, Error>> remove(std::vector<Uuid> ids);
    /// All that can be read.
    Task<Result<HistoryDeletion, Error>> removeAll();
    Task<Result<HistoryDeletion, Error>> removeCreatedBefore(Date date);

    /// Brings the index in line with the files, in slices between which other operations have their turn, newest
    /// entries first. Yields whether anything had changed.
    Task<Result<bool, Error>> refresh();
    /// The same for these days only, each named "yyyy-MM-dd".
    Task<Result<bool, Error>> refresh(std::vector<std::string> days);
    /// The days that have a folder, newest first.
    Task<Result<std::vector<std::string>, Error>> days();
    /// Whether the index does not know all files, so that pages and searches may lack some.
    bool needsRefresh() const;
    /// How far a refresh has come, 0..1; absent while none runs.
    Observable<std::optional<double>>& indexingProgress() { return m_indexingProgress; }

    const HistoryPlaces& places() const { return m_places; }

private:
    HistoryStore(HistoryPlaces places, Logger logger);

    struct Pass {
        bool foundChange = false;
        bool restarted = false;
    };

    template <class Job>
    auto perform(Job job) -> Task<Result<std::invoke_result_t<Job&, HistoryArchive&>, Error>>;
    Task<Result<Pass, Error>> refreshOnce(std::optional<std::vector<std::string>> days);
    Task<Result<bool, Error>> refreshUntilWhole(std::optional<std::vector<std::string>> days);

    const HistoryPlaces m_places;
    const std::shared_ptr<HistoryArchive> m_archive; // used on the worker only
    Observable<std::optional<double>> m_indexingProgress;
    Worker m_worker;
};

} // namespace vocalith
