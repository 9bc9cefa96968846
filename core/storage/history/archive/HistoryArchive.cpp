#include "core/storage/history/archive/HistoryArchive.h"

#include "core/storage/FileLock.h"
#include "core/storage/history/HistoryStore.h"

#include <sys/stat.h>

#include <algorithm>
#include <limits>
#include <system_error>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRemovedAtOnce = 200;
constexpr std::size_t kReadAtOnce = 200;

std::uint64_t inodeOf(const fs::path& file)
{
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
}

bool isInside(const fs::path& file, const fs::path& folder)
{
    return file.lexically_normal().parent_path() == folder.lexically_normal();
}

} // namespace

HistoryArchive::HistoryArchive(const HistoryPlaces& places, Logger logger)
    : m_folder(places.rootURL), m_recordingsFolder(places.recordingsFolder), m_indexFile(places.indexFile),
      m_logger(std::move(logger))
{}

HistoryArchive::~HistoryArchive() = default;

void HistoryArchive::openIndex()
{
    if (m_index)
        return;
    static_cast<void>(createPrivateFolder(m_indexFile.parent_path())); // the opening says what is wrong
    {
        const FileLock alone(m_indexFile); // another process may be making it
        takeIndex();
    }
    m_needsRefresh = !m_index->isComplete();
    if (const auto failed = m_index->database().takeFailure())
        replaceIndex(*failed);
}

void HistoryArchive::takeIndex()
{
    m_index = std::make_unique<HistoryIndex>(m_isTemporary ? fs::path() : m_indexFile, m_folder.root());
    m_indexIdentity = inodeOf(m_indexFile);
}

bool HistoryArchive::settle()
{
    const auto failed = m_index->database().takeFailure();
    if (failed && failed->kind == SqliteDatabase::Failure::Kind::busy) {
        m_logger.warning("Cannot use the history index: " + failed->detail);
        m_needsRefresh = !m_gaveUp; // what could not be noted must be found again
    } else if (failed) {
        replaceIndex(*failed);
    }
    return !failed;
}

void HistoryArchive::replaceIndex(const SqliteDatabase::Failure& failed)
{
    m_logger.warning("Cannot use the history index: " + failed.detail);
    m_index.reset();
    if (failed.kind == SqliteDatabase::Failure::Kind::damaged && !m_isTemporary) {
        const FileLock alone(m_indexFile);
        if (inodeOf(m_indexFile) == m_indexIdentity) { // else another process has replaced it
            std::error_code ignored;
            for (const auto* suffix : {"", "-wal", "-shm"})
                fs::remove(m_indexFile.string() + suffix, ignored);
        }
        takeIndex();
    }
    if (!m_index || m_index->database().takeFailure()) {
        m_gaveUp = m_isTemporary;
        m_isTemporary = true;
        takeIndex();
        static_cast<void>(m_index->database().takeFailure());
    }
    m_needsRefresh = !m_gaveUp;
}

Result<void, HistoryError> HistoryArchive::write(const HistoryEntry& entry)
{
    const auto path = HistoryFolder::pathFor(entry);
    const auto older = pathsOf(entry.id);
    if (const auto written = m_folder.write(path, entry); !written)
        return failure(HistoryError{HistoryError::Kind::file, toString(written.error())});
    for (const auto& other : older) {
        if (other != path)
            static_cast<void>(m_folder.remove(other)); // one that stays behind is listed, not lost
    }
    return {};
}

void HistoryArchive::noteWritten(const HistoryEntry& entry)
{
    const auto paths = pathsOf(entry.id);
    SqliteTransaction changes(m_index->database());
    for (const auto& other : paths) {
        if (!m_folder.stamp(other))
            m_index->forget(other);
    }
    const auto path = HistoryFolder::pathFor(entry);
    if (const auto stamp = m_folder.stamp(path))
        note({path, *stamp}, summarize(entry));
    changes.commit();
    settle();
}

HistoryPage HistoryArchive::page(const HistoryPageRequest& request)
{
    openIndex();
    HistoryPage page;
    std::vector<HistoryFile> stale;
    auto after = request.after;
    bool isMore = true;
    while (isMore && page.entries.size() < request.size) {
        const auto wanted = request.size - page.entries.size();
        const auto rows = m_index->rows(request.filter, after, wanted);
        isMore = settle() && rows.size() == wanted;
        for (const auto& row : rows) {
            auto entry = m_folder.read(row.path);
            if (!entry || m_folder.stamp(row.path) != row.stamp)
                stale.push_back({row.path, row.stamp});
            if (entry)
                page.entries.push_back(std::move(*entry));
            after = HistoryCursor{HistoryIndex::creationDate(row.position), row.position};
        }
    }
    if (isMore && !m_index->rows(request.filter, after, 1).empty())
        page.next = after;
    settle();
    if (!stale.empty()) {
        SqliteTransaction changes(m_index->database());
        reread(stale);
        changes.commit();
        settle();
    }
    return page;
}

void HistoryArchive::reread(const std::vector<HistoryFile>& files)
{
    struct Read {
        HistoryFile file;
        HistoryEntrySummary summary;
    };
    std::vector<Read> entries;
    for (const auto& file : files) {
        // The stamp comes first: a change that comes between is then seen the next time.
        const auto stamp = m_folder.stamp(file.path);
        const auto entry = m_folder.read(file.path);
        if (!stamp) {
            m_index->forget(file.path);
        } else if (entry) {
            entries.push_back({{file.path, *stamp}, summarize(*entry)});
        } else {
            m_logger.warning("Cannot read history entry " + file.path + ": " + entry.error().detail);
            m_index->putUnreadable({file.path, *stamp}, entry.error().detail);
        }
    }
    std::sort(entries.begin(), entries.end(), [](const Read& one, const Read& other) {
        return one.summary.creationDate > other.summary.creationDate; // as the index likes it best
    });
    for (auto& entry : entries)
        note(entry.file, std::move(entry.summary));
}

void HistoryArchive::note(const HistoryFile& file, HistoryEntrySummary summary)
{
    // Of the files that entries name, only recordings are ever looked for.
    summary.audio = isInside(summary.audio, m_recordingsFolder) ? summary.audio.filename() : fs::path();
    m_index->put(file, summary);
}

std::vector<std::string> HistoryArchive::pathsOf(const Uuid& id)
{
    openIndex();
    std::vector<std::string> paths;
    for (const auto& row : m_index->rowsOf(id))
        paths.push_back(row.path);
    if (!settle() || (paths.empty() && m_needsRefresh)) {
        if (auto found = m_folder.find(id))
            paths.push_back(std::move(*found));
    }
    return paths;
}

Result<HistoryEntry, HistoryError> HistoryArchive::entry(const Uuid& id)
{
    auto paths = pathsOf(id);
    if (paths.empty()) { // it may be too new for the index
        if (auto found = m_folder.find(id))
            paths.push_back(std::move(*found));
    }
    if (paths.empty())
        return failure(HistoryError{HistoryError::Kind::notFound, id.toString()});
    return m_folder.read(paths.front());
}

std::vector<Uuid> HistoryArchive::identifiers(const std::string& prefix, std::size_t limit)
{
    openIndex();
    auto found = m_index->identifiers(prefix, limit);
    settle();
    return found;
}

std::size_t HistoryArchive::count(const HistoryFilter& filter)
{
    openIndex();
    const auto found = m_index->count(filter);
    settle();
    return found;
}

Result<HistoryCursor, HistoryError> HistoryArchive::cursor(const Uuid& id)
{
    openIndex();
    const auto rows = m_index->rowsOf(id);
    if (!settle() || rows.empty())
        return failure(HistoryError{HistoryError::Kind::notFound, id.toString()});
    return HistoryCursor{HistoryIndex::creationDate(rows.front().position), rows.front().position};
}

std::vector<UnreadableEntry> HistoryArchive::unreadable()
{
    openIndex();
    auto found = m_index->unreadable();
    settle();
    for (auto& entry : found)
        entry.file = m_folder.root() / entry.file;
    return found;
}

void HistoryArchive::remove(const Uuid& id, HistoryDeletion& done)
{
    const auto paths = pathsOf(id);
    SqliteTransaction changes(m_index->database());
    for (const auto& path : paths)
        removeFile(path, id, done);
    changes.commit();
    settle();
}

bool HistoryArchive::removeSomeBefore(Date date, std::int64_t& position, HistoryDeletion& done)
{
    openIndex();
    const auto rows = m_index->rowsBefore(date, position, kRemovedAtOnce);
    SqliteTransaction changes(m_index->database());
    for (const auto& row : rows) {
        position = row.position;
        // What was changed by hand meanwhile may be of another date, or no entry any more.
        if (m_folder.stamp(row.path) != row.stamp)
            reread({{row.path, row.stamp}});
        else
            removeFile(row.path, row.id, done);
    }
    changes.commit();
    return settle() && !rows.empty();
}

void HistoryArchive::removeFile(const std::string& path, const Uuid& id, HistoryDeletion& done)
{
    const auto audio = m_index->audioOf(path);
    if (const auto removed = m_folder.remove(path); !removed) {
        m_logger.error("Cannot delete entry " + id.toString() + ": " + toString(removed.error()));
        done.failed.push_back(id);
        return;
    }
    m_index->forget(path);
    ++done.entries;
    if (!audio.empty())
        removeRecording(audio, done);
}

void HistoryArchive::removeRecording(const fs::path& audio, HistoryDeletion& done)
{
    if (m_index->isAudioUsed(audio) || isNamedByUnreadable(audio) || m_index->database().hasFailed())
        return;
    std::error_code error;
    if (fs::remove(m_recordingsFolder / audio, error))
        ++done.recordings;
    else if (error)
        m_logger.warning("Cannot remove the recording " + audio.string() + ": " + error.message());
}

bool HistoryArchive::isNamedByUnreadable(const fs::path& audio)
{
    const auto files = m_index->unreadable();
    return std::any_of(files.begin(), files.end(), [&](const UnreadableEntry& entry) {
        const auto content = readWholeFile(m_folder.root() / entry.file);
        return !content || content->find(audio.native()) != std::string::npos;
    });
}

Result<std::vector<std::string>, HistoryError> HistoryArchive::days() const
{
    return m_folder.days().map_error([](const FileError& error) {
        return HistoryError{HistoryError::Kind::file, toString(error)};
    });
}

Result<HistoryArchive::Refresh, HistoryError>
HistoryArchive::beginRefresh(const std::optional<std::vector<std::string>>& days)
{
    openIndex();
    Refresh refresh;
    refresh.isOfAll = !days;
    if (days) {
        refresh.days = *days;
    } else {
        const auto present = this->days();
        if (!present)
            return failure(present.error());
        const auto known = m_index->days();
        settle();
        std::set_union(present->rbegin(), present->rend(), known.rbegin(), known.rend(),
                       std::back_inserter(refresh.days));
    }
    refresh.dayCount = refresh.days.size();
    return refresh;
}

bool HistoryArchive::refreshSome(Refresh& refresh, std::chrono::milliseconds duration)
{
    const auto end = std::chrono::steady_clock::now() + duration;
    openIndex();
    SqliteTransaction changes(m_index->database());
    while (!(refresh.changed.empty() && refresh.days.empty()) && std::chrono::steady_clock::now() < end) {
        if (refresh.changed.empty())
            nextDay(refresh);
        else
            readSome(refresh);
    }
    const bool isAtEnd = refresh.changed.empty() && refresh.days.empty();
    changes.commit();
    if (isAtEnd && refresh.isOfAll && !m_index->isComplete())
        m_index->setComplete();
    if (!settle()) {
        refresh.restarted = true;
        return true;
    }
    if (isAtEnd && refresh.isOfAll)
        m_needsRefresh = false;
    return isAtEnd;
}

void HistoryArchive::readSome(Refresh& refresh)
{
    const auto count = std::min(refresh.changed.size(), kReadAtOnce);
    const std::vector<HistoryFile> files(refresh.changed.end() - static_cast<std::ptrdiff_t>(count),
                                         refresh.changed.end());
    refresh.changed.resize(refresh.changed.size() - count);
    reread(files);
}

void HistoryArchive::nextDay(Refresh& refresh)
{
    const auto day = std::move(refresh.days.back());
    refresh.days.pop_back();
    // The index is asked first: an entry that another process adds between is then looked at once too often, and never
    // forgotten.
    auto known = m_index->filesOf(day);
    for (auto& file : m_folder.files(day)) {
        const auto same = known.find(file.path);
        if (same == known.end() || same->second != file.stamp)
            refresh.changed.push_back(std::move(file));
        if (same != known.end())
            known.erase(same);
    }
    for (const auto& [path, stamp] : known)
        m_index->forget(path);
    if (known.empty() && refresh.changed.empty())
        return;
    refresh.foundChange = true;
    m_folder.removeLeftovers(day);
}

} // namespace vocalith
