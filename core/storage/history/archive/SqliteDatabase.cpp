#include "core/storage/history/archive/SqliteDatabase.h"

#include <sqlite3.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace vocalith {
namespace {

constexpr int kPatience = 10000; // milliseconds that another process's write is waited for

SqliteDatabase::Failure::Kind kindOf(int code)
{
    using Kind = SqliteDatabase::Failure::Kind;
    const int primary = code & 0xFF;
    // A constraint is broken only where the index contradicts itself.
    if (primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB || primary == SQLITE_CONSTRAINT ||
        primary == SQLITE_ERROR || code == SQLITE_IOERR_SHORT_READ)
        return Kind::damaged;
    return primary == SQLITE_BUSY || primary == SQLITE_LOCKED ? Kind::busy : Kind::unusable;
}

} // namespace

SqliteStatement::~SqliteStatement()
{
    if (!m_statement)
        return;
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

void SqliteStatement::check(int code)
{
    if (code != SQLITE_OK)
        m_database.fail(code);
}

SqliteStatement& SqliteStatement::bind(std::int64_t value)
{
    if (m_statement)
        check(sqlite3_bind_int64(m_statement, ++m_bound, value));
    return *this;
}

SqliteStatement& SqliteStatement::bind(std::string_view text)
{
    if (m_statement)
        check(sqlite3_bind_text64(m_statement, ++m_bound, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

SqliteStatement& SqliteStatement::bind(Blob bytes)
{
    if (m_statement)
        check(sqlite3_bind_blob64(m_statement, ++m_bound, bytes.data(), bytes.size(), SQLITE_TRANSIENT));
    return *this;
}

SqliteStatement& SqliteStatement::bindNull()
{
    ++m_bound;
    return *this;
}

bool SqliteStatement::next()
{
    if (!m_statement || m_database.hasFailed())
        return false;
    const int code = sqlite3_step(m_statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        m_database.fail(code);
    return code == SQLITE_ROW;
}

std::int64_t SqliteStatement::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

std::string_view SqliteStatement::text(int column) const
{
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(m_statement, column));
    return bytes ? std::string_view(bytes, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column)))
                 : std::string_view();
}

bool SqliteStatement::isNull(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

SqliteDatabase::SqliteDatabase(const std::filesystem::path& file)
{
    if (!file.empty()) { // SQLite would let others read it; the files that it makes beside it follow this one
        const int made = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (made >= 0)
            ::close(made);
    }
    const int code = sqlite3_open_v2(file.c_str(), &m_connection,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (code != SQLITE_OK) {
        fail(code);
        return;
    }
    sqlite3_extended_result_codes(m_connection, 1);
    sqlite3_busy_timeout(m_connection, kPatience);
}

SqliteDatabase::~SqliteDatabase()
{
    for (const auto& [sql, statement] : m_statements)
        sqlite3_finalize(statement);
    sqlite3_close(m_connection);
}

void SqliteDatabase::execute(const char* sql)
{
    if (hasFailed())
        return;
    if (const int code = sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr); code != SQLITE_OK)
        fail(code);
}

SqliteStatement SqliteDatabase::statement(std::string_view sql)
{
    if (hasFailed())
        return {*this, nullptr};
    if (const auto prepared = m_statements.find(sql); prepared != m_statements.end())
        return {*this, prepared->second};
    sqlite3_stmt* made = nullptr;
    if (const int code = sqlite3_prepare_v2(m_connection, sql.data(), static_cast<int>(sql.size()), &made, nullptr);
        code != SQLITE_OK) {
        fail(code);
        return {*this, nullptr};
    }
    m_statements.emplace(std::string(sql), made);
    return {*this, made};
}

std::optional<SqliteDatabase::Failure> SqliteDatabase::takeFailure()
{
    return std::exchange(m_failure, std::nullopt);
}

void SqliteDatabase::fail(int code)
{
    fail(Failure{kindOf(code), m_connection ? sqlite3_errmsg(m_connection) : sqlite3_errstr(code)});
}

void SqliteDatabase::fail(Failure failure)
{
    if (!m_failure)
        m_failure = std::move(failure);
}

SqliteTransaction::SqliteTransaction(SqliteDatabase& database) : m_database(database)
{
    // Taken for writing at once: a read that becomes a write in the middle could not wait for another process.
    m_database.execute("BEGIN IMMEDIATE");
    m_isOpen = !m_database.hasFailed();
}

SqliteTransaction::~SqliteTransaction()
{
    if (!m_isOpen)
        return;
    // What had failed is still to be told to whoever asks; the undoing itself must run.
    auto failure = m_database.takeFailure();
    m_database.execute("ROLLBACK");
    static_cast<void>(m_database.takeFailure());
    m_database.m_failure = std::move(failure);
}

void SqliteTransaction::commit()
{
    m_database.execute("COMMIT");
    if (!m_database.hasFailed())
        m_isOpen = false;
}

} // namespace vocalith
