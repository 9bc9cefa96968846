#pragma once

#include "base/Log.h"
#include "core/storage/history/HistoryPage.h"
#include "core/storage/history/archive/HistoryFolder.h"
#include "core/storage/history/archive/HistoryIndex.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace vocalith {

struct HistoryPlaces;

/// The files of the history and the index over them, kept together. All calls block and belong on one thread, but for
/// `needsRefresh`. A failure of the index is logged and costs at most what it could have found quickly: it is made
/// again, where it was or, when that cannot be, in a temporary file.
class HistoryArchive {
public:
    HistoryArchive(const HistoryPlaces& places, Logger logger);
    ~HistoryArchive();

    /// Writes the entry to its file. The index is told by `noteWritten`, which may come later.
    Result<void, HistoryError> write(const HistoryEntry& entry);
    void noteWritten(const HistoryEntry& entry);
    HistoryPage page(const HistoryPageRequest& request);
    Result<HistoryEntry, HistoryError> entry(const Uuid& id);
    /// The place of an entry among the others.
    Result<HistoryCursor, HistoryError> cursor(const Uuid& id);
    std::vector<Uuid> identifiers(const std::string& prefix, std::size_t limit);
    std::size_t count(const HistoryFilter& filter);
    std::vector<UnreadableEntry> unreadable();
    /// The days that have a folder, newest first.
    Result<std::vector<std::string>, HistoryError> days() const;

    void remove(const Uuid& id, HistoryDeletion& done);
    /// Removes some of the entries created before the date, behind `position`, which it moves on. False when none is
    /// left.
    bool removeSomeBefore(Date date, std::int64_t& position, HistoryDeletion& done);

    /// Whether the index does not know all files: a refresh is due. Any thread.
    bool needsRefresh() const { return m_needsRefresh; }

    /// One pass over the files, in slices.
    struct Refresh {
        bool isOfAll = false;
        std::vector<std::string> days; ///< still to be looked at, the next one last
        std::size_t dayCount = 0;
        std::vector<HistoryFile> changed; ///< of the day that is being looked at, still to be read
        bool foundChange = false;
        bool restarted = false; ///< the index was lost on the way
    };
    /// Of these days, or of all.
    Result<Refresh, HistoryError> beginRefresh(const std::optional<std::vector<std::string>>& days);
    /// Goes on for about that long. True when the pass has come to its end.
    bool refreshSome(Refresh& refresh, std::chrono::milliseconds duration);

private:
    void openIndex();
    void takeIndex();
    void replaceIndex(const SqliteDatabase::Failure& failed);
    /// Whether what was done with the index since the last call went well. If not, there is another index now.
    bool settle();
    void reread(const std::vector<HistoryFile>& files);
    void note(const HistoryFile& file, HistoryEntrySummary summary);
    void readSome(Refresh& refresh);
    void nextDay(Refresh& refresh);
    std::vector<std::string> pathsOf(const Uuid& id);
    void removeFile(const std::string& path, const Uuid& id, HistoryDeletion& done);
    void removeRecording(const std::filesystem::path& audio, HistoryDeletion& done);
    bool isNamedByUnreadable(const std::filesystem::path& audio);

    const HistoryFolder m_folder;
    const std::filesystem::path m_recordingsFolder;
    const std::filesystem::path m_indexFile;
    const Logger m_logger;
    bool m_isTemporary = false; ///< the index is in a file of this process's own
    bool m_gaveUp = false;      ///< no index can be had
    std::unique_ptr<HistoryIndex> m_index;
    std::uint64_t m_indexIdentity = 0; ///< of its file
    std::atomic<bool> m_needsRefresh = true;
};

} // namespace vocalith
