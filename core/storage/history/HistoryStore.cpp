#include "core/storage/history/HistoryStore.h"

#include "core/storage/history/archive/HistoryArchive.h"
#include "core/storage/history/archive/HistoryIndex.h"

#include <limits>
#include <type_traits>

namespace vocalith {
namespace {

constexpr std::chrono::milliseconds kSlice(40); // of a refresh, before others have their turn

using Error = HistoryError;

template <class T>
Result<T, Error> flat(Result<Result<T, Error>, Error> nested)
{
    if (!nested)
        return failure(std::move(nested.error()));
    return std::move(*nested);
}

} // namespace

std::string userMessage(const HistoryError& error)
{
    switch (error.kind) {
    case HistoryError::Kind::notFound: return "Entry not found";
    case HistoryError::Kind::unreadable: return "The entry's file cannot be read: " + error.detail;
    case HistoryError::Kind::file: return "The history cannot be reached: " + error.detail;
    case HistoryError::Kind::cancelled: return "Cancelled";
    }
    return {};
}

Result<std::unique_ptr<HistoryStore>, Error> HistoryStore::open(HistoryPlaces places, Logger logger)
{
    if (const auto made = createPrivateFolder(places.rootURL); !made)
        return failure(Error{Error::Kind::file, toString(made.error())});
    return std::unique_ptr<HistoryStore>(new HistoryStore(std::move(places), std::move(logger)));
}

HistoryStore::HistoryStore(HistoryPlaces places, Logger logger)
    : m_places(std::move(places)), m_archive(std::make_shared<HistoryArchive>(m_places, std::move(logger)))
{}

HistoryStore::~HistoryStore() = default;

bool HistoryStore::needsRefresh() const
{
    return m_archive->needsRefresh();
}

template <class Job>
auto HistoryStore::perform(Job job) -> Task<Result<std::invoke_result_t<Job&, HistoryArchive&>, Error>>
{
    auto onWorker = [archive = m_archive, job = std::move(job)](const StopToken&) mutable { return job(*archive); };
    auto outcome = co_await m_worker.run(std::move(onWorker));
    if (!outcome)
        co_return failure(Error{Error::Kind::cancelled, {}});
    co_return std::move(*outcome);
}

Task<Result<void, Error>> HistoryStore::upsert(HistoryEntry entry)
{
    auto job = [this, entry = std::move(entry)](HistoryArchive& archive) {
        auto written = archive.write(entry);
        if (written) // before anything that is asked for later, but without anybody waiting for it
            m_worker.post([archive = m_archive, entry] { archive->noteWritten(entry); });
        return written;
    };
    auto outcome = co_await perform(std::move(job));
    co_return flat(std::move(outcome));
}

Task<Result<HistoryPage, Error>> HistoryStore::page(HistoryPageRequest request)
{
    auto job = [request = std::move(request)](HistoryArchive& archive) { return archive.page(request); };
    co_return co_await perform(std::move(job));
}

Task<Result<HistoryEntry, Error>> HistoryStore::entry(Uuid id)
{
    auto job = [id](HistoryArchive& archive) { return archive.entry(id); };
    auto outcome = co_await perform(std::move(job));
    co_return flat(std::move(outcome));
}

Task<Result<HistoryCursor, Error>> HistoryStore::cursor(Uuid id)
{
    auto job = [id](HistoryArchive& archive) { return archive.cursor(id); };
    auto outcome = co_await perform(std::move(job));
    co_return flat(std::move(outcome));
}

HistoryCursor HistoryStore::cursorAt(Date date)
{
    return HistoryIndex::cursorAt(date);
}

Task<Result<std::vector<Uuid>, Error>> HistoryStore::identifiers(std::string prefix, std::size_t limit)
{
    auto job = [prefix = std::move(prefix), limit](HistoryArchive& archive) {
        return archive.identifiers(prefix, limit);
    };
    co_return co_await perform(std::move(job));
}

Task<Result<std::size_t, Error>> HistoryStore::count(HistoryFilter filter)
{
    auto job = [filter = std::move(filter)](HistoryArchive& archive) { return archive.count(filter); };
    co_return co_await perform(std::move(job));
}

Task<Result<std::vector<UnreadableEntry>, Error>> HistoryStore::unreadable()
{
    auto job = [](HistoryArchive& archive) { return archive.unreadable(); };
    co_return co_await perform(std::move(job));
}

Task<Result<HistoryDeletion, Error>> HistoryStore::remove(std::vector<Uuid> ids)
{
    // Whether a recording has other users is known only once all files are, also those that others have put there.
    const auto ready = co_await refresh();
    if (!ready)
        co_return failure(ready.error());
    HistoryDeletion done;
    for (const auto& id : ids) {
        auto job = [id, done](HistoryArchive& archive) mutable {
            archive.remove(id, done);
            return done;
        };
        auto outcome = co_await perform(std::move(job));
        if (!outcome)
            co_return failure(std::move(outcome.error()));
        done = std::move(*outcome);
    }
    co_return done;
}

Task<Result<HistoryDeletion, Error>> HistoryStore::removeAll()
{
    return removeCreatedBefore(Date::max());
}

Task<Result<HistoryDeletion, Error>> HistoryStore::removeCreatedBefore(Date date)
{
    const auto ready = co_await refresh();
    if (!ready)
        co_return failure(ready.error());
    struct Progress {
        HistoryDeletion done;
        std::int64_t position = std::numeric_limits<std::int64_t>::max();
        bool isMore = true;
    };
    Progress progress;
    while (progress.isMore) {
        auto job = [progress, date](HistoryArchive& archive) mutable {
            progress.isMore = archive.removeSomeBefore(date, progress.position, progress.done);
            return progress;
        };
        auto outcome = co_await perform(std::move(job));
        if (!outcome)
            co_return failure(std::move(outcome.error()));
        progress = std::move(*outcome);
    }
    co_return std::move(progress.done);
}

Task<Result<std::vector<std::string>, Error>> HistoryStore::days()
{
    auto job = [](HistoryArchive& archive) { return archive.days(); };
    auto outcome = co_await perform(std::move(job));
    co_return flat(std::move(outcome));
}

Task<Result<bool, Error>> HistoryStore::refresh()
{
    return refreshUntilWhole(std::nullopt);
}

Task<Result<bool, Error>> HistoryStore::refresh(std::vector<std::string> days)
{
    return refreshUntilWhole(std::move(days));
}

Task<Result<bool, Error>> HistoryStore::refreshUntilWhole(std::optional<std::vector<std::string>> days)
{
    constexpr int kAttempts = 3; // an index that is lost on the way is begun anew
    bool foundChange = false;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const auto passed = co_await refreshOnce(days);
        m_indexingProgress.set(std::nullopt);
        if (!passed)
            co_return failure(passed.error());
        foundChange = foundChange || passed->foundChange || passed->restarted;
        if (!passed->restarted)
            break;
        days.reset();
    }
    co_return foundChange;
}

Task<Result<HistoryStore::Pass, Error>> HistoryStore::refreshOnce(std::optional<std::vector<std::string>> days)
{
    auto begin = [days = std::move(days)](HistoryArchive& archive) { return archive.beginRefresh(days); };
    auto nested = co_await perform(std::move(begin));
    auto begun = flat(std::move(nested));
    if (!begun)
        co_return failure(std::move(begun.error()));
    const auto refresh = std::make_shared<HistoryArchive::Refresh>(std::move(*begun));
    for (bool isAtEnd = false; !isAtEnd;) {
        auto slice = [refresh](HistoryArchive& archive) { return archive.refreshSome(*refresh, kSlice); };
        const auto sliced = co_await perform(std::move(slice));
        if (!sliced)
            co_return failure(sliced.error());
        isAtEnd = *sliced;
        if (refresh->dayCount > 0)
            m_indexingProgress.set(1.0 -
                                   static_cast<double>(refresh->days.size()) / static_cast<double>(refresh->dayCount));
    }
    co_return Pass{refresh->foundChange, refresh->restarted};
}

} // namespace vocalith
