#include "core/storage/history/archive/HistoryIndex.h"

#include "base/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace vocalith {
namespace {

constexpr int kVersion = 1; // of the tables below and of what is put into them

constexpr const char* kTables = R"(
    CREATE TABLE facts(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
    CREATE TABLE entries(position INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE, id BLOB NOT NULL, kind INTEGER NOT NULL,
                         prompt BLOB, audio TEXT, modified INTEGER NOT NULL, size INTEGER NOT NULL);
    CREATE INDEX entries_id ON entries(id);
    CREATE INDEX entries_kind ON entries(kind);
    CREATE INDEX entries_prompt ON entries(prompt) WHERE prompt IS NOT NULL;
    CREATE INDEX entries_audio ON entries(audio) WHERE audio IS NOT NULL;
    CREATE TABLE texts(position INTEGER PRIMARY KEY, text TEXT NOT NULL);
    CREATE VIRTUAL TABLE search USING fts5(text, content='texts', content_rowid='position',
                                           tokenize='trigram case_sensitive 1');
    INSERT INTO search(search, rank) VALUES('hashsize', 8000000); -- bytes gathered before they are sorted in
    CREATE TABLE unreadable(path TEXT PRIMARY KEY, modified INTEGER NOT NULL, size INTEGER NOT NULL,
                            reason TEXT NOT NULL) WITHOUT ROWID;
)";

// A position is the date in milliseconds, negated, and a few digits that tell apart the entries of one instant: the
// newest entry has the smallest one. Full-text search takes texts in about four times faster when their numbers rise,
// and the newest come first; and it keeps them in less space when the numbers lie close together.
constexpr std::int64_t kTies = 16;
constexpr std::int64_t kManyTies = 1 << 20;             // for entries that some program has made, all at one instant
constexpr std::int64_t kLatest = std::int64_t{1} << 57; // milliseconds since 1970, later than any clock
constexpr std::size_t kTrigram = 3;

constexpr const char* kRowColumns = "entries.position, entries.path, entries.id, entries.modified, entries.size";

/// The first position of that instant.
std::int64_t firstPosition(Date date)
{
    const std::int64_t milliseconds = date.time_since_epoch().count();
    return -std::clamp(milliseconds, -kLatest, kLatest) * kTies;
}

/// All earlier dates have this position or a greater one.
std::int64_t firstPositionBefore(Date date)
{
    const bool isBeyondAll = date.time_since_epoch().count() > kLatest;
    return isBeyondAll ? std::numeric_limits<std::int64_t>::min() : firstPosition(date) + kTies;
}

SqliteStatement::Blob blob(const Uuid& id)
{
    return {id.bytes};
}

std::string_view textOf(const std::filesystem::path& path)
{
    return path.native();
}

Uuid uuidFrom(std::string_view bytes)
{
    Uuid id;
    std::copy_n(bytes.begin(), std::min(bytes.size(), id.bytes.size()), id.bytes.begin());
    return id;
}

/// The bounds of the paths of one day, as text.
std::pair<std::string, std::string> pathsOf(const std::string& day)
{
    return {day + '/', day + static_cast<char>('/' + 1)};
}

std::size_t characterCount(std::string_view utf8)
{
    const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), begins));
}

/// The text as one phrase of a full-text query.
std::string phrase(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text)
        quoted.append(c == '"' ? "\"\"" : std::string_view(&c, 1));
    return quoted + '"';
}

/// A filter as the tables and conditions of a query, with the parameters that they take in this order: the sought text,
/// then the kind or the prompt.
class FilterQuery {
public:
    explicit FilterQuery(const HistoryFilter& filter) : m_filter(filter), m_text(searchForm(filter.searchQuery))
    {
        m_lookUp = characterCount(m_text) >= kTrigram;
    }

    /// "FROM … WHERE …"
    std::string sql() const
    {
        using namespace history_filter;
        std::string sql = m_text.empty() ? "FROM entries WHERE 1"
                          : m_lookUp
                              ? "FROM search CROSS JOIN entries ON entries.position = search.rowid WHERE search MATCH ?"
                              : "FROM texts CROSS JOIN entries ON entries.position = texts.position "
                                "WHERE instr(texts.text, ?)";
        if (std::holds_alternative<AIPromptEntries>(m_filter.mode))
            sql += " AND entries.prompt = ?";
        else if (!std::holds_alternative<All>(m_filter.mode))
            sql += " AND entries.kind = ?";
        return sql;
    }

    /// The column that orders the entries where the query looks first.
    std::string position() const
    {
        return m_text.empty() ? "entries.position" : m_lookUp ? "search.rowid" : "texts.position";
    }

    void bind(SqliteStatement& statement) const
    {
        using namespace history_filter;
        using Kind = HistoryEntrySummary::Kind;
        if (!m_text.empty())
            statement.bind(m_lookUp ? phrase(m_text) : m_text);
        if (const auto* prompt = std::get_if<AIPromptEntries>(&m_filter.mode))
            statement.bind(blob(prompt->promptID));
        else if (std::holds_alternative<Dictation>(m_filter.mode))
            statement.bind(static_cast<std::int64_t>(Kind::dictation));
        else if (std::holds_alternative<Files>(m_filter.mode))
            statement.bind(static_cast<std::int64_t>(Kind::file));
        else if (std::holds_alternative<Journal>(m_filter.mode))
            statement.bind(static_cast<std::int64_t>(Kind::journal));
    }

private:
    const HistoryFilter& m_filter;
    std::string m_text;
    bool m_lookUp = false;
};

} // namespace

HistoryIndex::HistoryIndex(const std::filesystem::path& file, const std::filesystem::path& root) : m_database(file)
{
    m_database.execute("PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 4000;"); // kB
    prepare(root.native());
    beCareful(isComplete());
}

void HistoryIndex::beCareful(bool careful)
{
    // Once made, the index may lose its last moments to a power cut, never its order: the files are looked at again
    // anyway. While it is made for the first time there is little to lose.
    m_database.execute(careful ? "PRAGMA synchronous = NORMAL; PRAGMA cache_size = -2000;" // kB
                               : "PRAGMA synchronous = OFF; PRAGMA cache_size = -16000;");
}

void HistoryIndex::prepare(const std::string& root)
{
    const auto version = [this] {
        auto asked = m_database.statement("PRAGMA user_version");
        return asked.next() ? asked.integer(0) : 0;
    };
    if (version() == 0) {
        SqliteTransaction creation(m_database);
        if (version() == 0) { // unless another process was quicker
            m_database.execute(kTables);
            m_database.statement("INSERT INTO facts VALUES('root', ?)").bind(std::string_view(root)).next();
            m_database.execute(fmt::format("PRAGMA user_version = {}", kVersion).c_str());
        }
        creation.commit();
    }
    if (m_database.hasFailed())
        return;
    auto stored = m_database.statement("SELECT value FROM facts WHERE name = 'root'");
    if (version() != kVersion || !stored.next() || stored.text(0) != root)
        m_database.fail({SqliteDatabase::Failure::Kind::damaged, "it is of another version or another history"});
}

bool HistoryIndex::isComplete()
{
    return m_database.statement("SELECT 1 FROM facts WHERE name = 'complete'").next();
}

void HistoryIndex::setComplete()
{
    beCareful(true);
    m_database.execute("PRAGMA wal_checkpoint(TRUNCATE)"); // all that was written without care
    m_database.statement("INSERT OR REPLACE INTO facts VALUES('complete', '')").next();
}

std::map<std::string, FileStamp> HistoryIndex::filesOf(const std::string& day)
{
    std::map<std::string, FileStamp> files;
    const auto [first, end] = pathsOf(day);
    for (const auto* sql : {"SELECT path, modified, size FROM entries WHERE path >= ? AND path < ?",
                            "SELECT path, modified, size FROM unreadable WHERE path >= ? AND path < ?"}) {
        auto known = m_database.statement(sql);
        known.bind(std::string_view(first)).bind(std::string_view(end));
        while (known.next())
            files.emplace(known.text(0), FileStamp{known.integer(1), known.integer(2)});
    }
    return files;
}

std::vector<std::string> HistoryIndex::days()
{
    // From one day straight to the one before it, past all of its entries.
    std::vector<std::string> found;
    std::string before = "~";
    for (;;) {
        auto last = m_database.statement("SELECT max(path) FROM (SELECT max(path) AS path FROM entries WHERE path < ? "
                                         "UNION ALL SELECT max(path) FROM unreadable WHERE path < ?)");
        last.bind(std::string_view(before)).bind(std::string_view(before));
        if (!last.next() || last.isNull(0))
            return found;
        found.push_back(HistoryFolder::dayOf(std::string(last.text(0))));
        before = pathsOf(found.back()).first;
    }
}

void HistoryIndex::put(const HistoryFile& file, const HistoryEntrySummary& summary)
{
    forget(file.path);
    const std::int64_t position = freePosition(summary.creationDate);
    auto entry = m_database.statement("INSERT INTO entries VALUES(?, ?, ?, ?, ?, ?, ?, ?)");
    entry.bind(position).bind(std::string_view(file.path)).bind(blob(summary.id));
    entry.bind(static_cast<std::int64_t>(summary.kind));
    summary.promptID ? entry.bind(blob(*summary.promptID)) : entry.bindNull();
    summary.audio.empty() ? entry.bindNull() : entry.bind(textOf(summary.audio));
    entry.bind(file.stamp.modified).bind(file.stamp.size).next();
    for (const auto* sql :
         {"INSERT INTO texts(position, text) VALUES(?, ?)", "INSERT INTO search(rowid, text) VALUES(?, ?)"})
        m_database.statement(sql).bind(position).bind(std::string_view(summary.searchText)).next();
}

void HistoryIndex::putUnreadable(const HistoryFile& file, const std::string& reason)
{
    forget(file.path);
    auto row = m_database.statement("INSERT INTO unreadable VALUES(?, ?, ?, ?)");
    row.bind(std::string_view(file.path)).bind(file.stamp.modified).bind(file.stamp.size);
    row.bind(std::string_view(reason)).next();
}

void HistoryIndex::forget(const std::string& path)
{
    const std::string_view name = path;
    m_database.statement("DELETE FROM unreadable WHERE path = ?").bind(name).next();
    std::int64_t position = 0;
    {
        auto known = m_database.statement("SELECT position FROM entries WHERE path = ?");
        if (!known.bind(name).next())
            return;
        position = known.integer(0);
    }
    // The full-text index takes a text out only when it is told which one it was.
    for (const auto* sql :
         {"INSERT INTO search(search, rowid, text) SELECT 'delete', position, text FROM texts WHERE position = ?",
          "DELETE FROM texts WHERE position = ?", "DELETE FROM entries WHERE position = ?"})
        m_database.statement(sql).bind(position).next();
}

std::vector<HistoryIndex::Row> HistoryIndex::rows(const HistoryFilter& filter,
                                                  const std::optional<HistoryCursor>& after, std::size_t size)
{
    const FilterQuery query(filter);
    const bool newestFirst = filter.sortOrder == HistorySortOrder::newestFirst;
    const auto position = query.position();
    const auto sql = fmt::format("SELECT {} {} AND {} {} ? ORDER BY {} {} LIMIT ?", kRowColumns, query.sql(), position,
                                 newestFirst ? ">" : "<", position, newestFirst ? "ASC" : "DESC");
    auto statement = m_database.statement(sql);
    query.bind(statement);
    using Limits = std::numeric_limits<std::int64_t>;
    statement.bind(after ? after->position : newestFirst ? Limits::min() : Limits::max());
    statement.bind(static_cast<std::int64_t>(size));
    return collect(statement);
}

std::size_t HistoryIndex::count(const HistoryFilter& filter)
{
    const FilterQuery query(filter);
    auto statement = m_database.statement("SELECT count(*) " + query.sql());
    query.bind(statement);
    return statement.next() ? static_cast<std::size_t>(statement.integer(0)) : 0;
}

std::vector<HistoryIndex::Row> HistoryIndex::rowsOf(const Uuid& id)
{
    auto statement = m_database.statement(fmt::format("SELECT {} FROM entries WHERE id = ?", kRowColumns));
    statement.bind(blob(id));
    return collect(statement);
}

std::vector<HistoryIndex::Row> HistoryIndex::rowsBefore(Date date, std::int64_t after, std::size_t size)
{
    auto statement = m_database.statement(fmt::format(
        "SELECT {} FROM entries WHERE position >= ? AND position < ? ORDER BY position DESC LIMIT ?", kRowColumns));
    statement.bind(firstPositionBefore(date)).bind(after).bind(static_cast<std::int64_t>(size));
    return collect(statement);
}

std::vector<Uuid> HistoryIndex::identifiers(const std::string& prefix, std::size_t limit)
{
    // Filled up on either side to whole identifiers, the prefix bounds those that begin with it.
    constexpr std::string_view kForm = "00000000-0000-0000-0000-000000000000";
    const auto filled = [&](char digit) {
        std::string text = prefix.substr(0, kForm.size());
        for (std::size_t i = text.size(); i < kForm.size(); ++i)
            text += kForm[i] == '-' ? '-' : digit;
        return Uuid::parse(text);
    };
    const auto first = filled('0');
    const auto last = filled('F');
    std::vector<Uuid> found;
    if (!first || !last)
        return found;
    auto statement =
        m_database.statement("SELECT DISTINCT id FROM entries WHERE id >= ? AND id <= ? ORDER BY id LIMIT ?");
    statement.bind(blob(*first)).bind(blob(*last)).bind(static_cast<std::int64_t>(limit));
    while (statement.next())
        found.push_back(uuidFrom(statement.text(0)));
    return found;
}

std::vector<UnreadableEntry> HistoryIndex::unreadable()
{
    std::vector<UnreadableEntry> found;
    auto statement = m_database.statement("SELECT path, reason FROM unreadable ORDER BY path DESC");
    while (statement.next())
        found.push_back({std::filesystem::path(statement.text(0)), std::string(statement.text(1))});
    return found;
}

std::filesystem::path HistoryIndex::audioOf(const std::string& path)
{
    auto statement = m_database.statement("SELECT audio FROM entries WHERE path = ?");
    statement.bind(std::string_view(path));
    return statement.next() ? std::filesystem::path(statement.text(0)) : std::filesystem::path();
}

bool HistoryIndex::isAudioUsed(const std::filesystem::path& audio)
{
    return m_database.statement("SELECT 1 FROM entries WHERE audio = ? LIMIT 1").bind(textOf(audio)).next();
}

Date HistoryIndex::creationDate(std::int64_t position)
{
    const std::int64_t milliseconds = position >= 0 ? -(position / kTies) : (-position + kTies - 1) / kTies;
    return Date(std::chrono::milliseconds(milliseconds));
}

HistoryCursor HistoryIndex::cursorAt(Date date)
{
    return {date, firstPosition(date)};
}

std::int64_t HistoryIndex::freePosition(Date date)
{
    const std::int64_t first = firstPosition(date);
    for (const std::int64_t width : {kTies, kManyTies}) {
        auto taken = m_database.statement("SELECT max(position) FROM entries WHERE position >= ? AND position < ?");
        if (!taken.bind(first).bind(first + width).next() || taken.isNull(0))
            return first;
        if (taken.integer(0) + 1 < first + width)
            return taken.integer(0) + 1;
    }
    auto last = m_database.statement("SELECT max(position) FROM entries");
    return last.next() ? last.integer(0) + 1 : first;
}

std::vector<HistoryIndex::Row> HistoryIndex::collect(SqliteStatement& statement)
{
    std::vector<Row> found;
    while (statement.next())
        found.push_back({statement.integer(0), std::string(statement.text(1)), uuidFrom(statement.text(2)),
                         FileStamp{statement.integer(3), statement.integer(4)}});
    return found;
}

} // namespace vocalith
