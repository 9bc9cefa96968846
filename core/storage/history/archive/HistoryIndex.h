#pragma once

#include "core/storage/history/HistoryPage.h"
#include "core/storage/history/archive/HistoryEntrySummary.h"
#include "core/storage/history/archive/HistoryFolder.h"
#include "core/storage/history/archive/SqliteDatabase.h"

#include <map>
#include <string>
#include <vector>

namespace vocalith {

/// The derived index of a history: what was in which file when it was last read. An SQLite database with full-text
/// search, at which several processes may work at a time. All calls block; one thread at a time. Failures are kept
/// until `takeFailure`, and make every call yield nothing until then.
class HistoryIndex {
public:
    struct Row {
        std::int64_t position = 0; ///< orders the entries, the newest first; no two have the same
        std::string path;          ///< relative to the history's folder
        Uuid id;
        FileStamp stamp;
    };

    /// Opens the index of the history at `root`. One of another history or another version is emptied first.
    HistoryIndex(const std::filesystem::path& file, const std::filesystem::path& root);

    /// Whether all files have been looked at since the index was made.
    bool isComplete();
    void setComplete();

    /// What is known of the entries and the unreadable files of one day.
    std::map<std::string, FileStamp> filesOf(const std::string& day);
    /// The days of which anything is known, newest first.
    std::vector<std::string> days();

    /// Puts the entry in place of what was known of its file.
    void put(const HistoryFile& file, const HistoryEntrySummary& summary);
    void putUnreadable(const HistoryFile& file, const std::string& reason);
    void forget(const std::string& path);

    /// Rows in the filter's order behind `after`, at most `size`. A search text of three characters or more is looked
    /// up, a shorter one compared with every text.
    std::vector<Row> rows(const HistoryFilter& filter, const std::optional<HistoryCursor>& after, std::size_t size);
    std::size_t count(const HistoryFilter& filter);
    std::vector<Row> rowsOf(const Uuid& id);
    /// The oldest entries behind that position that were created before the date, at most `size`.
    std::vector<Row> rowsBefore(Date date, std::int64_t after, std::size_t size);
    std::vector<Uuid> identifiers(const std::string& prefix, std::size_t limit);
    std::vector<UnreadableEntry> unreadable();
    /// The name of the recording that the entry has; empty for none.
    std::filesystem::path audioOf(const std::string& path);
    bool isAudioUsed(const std::filesystem::path& audio);

    static Date creationDate(std::int64_t position);
    /// Behind it, newest first, comes what was created before the date.
    static HistoryCursor cursorAt(Date date);

    SqliteDatabase& database() { return m_database; }

private:
    void prepare(const std::string& root);
    void beCareful(bool careful);
    std::int64_t freePosition(Date date);
    std::vector<Row> collect(SqliteStatement& statement);

    SqliteDatabase m_database;
};

} // namespace vocalith
