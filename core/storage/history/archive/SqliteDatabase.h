#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace vocalith {

class SqliteDatabase;

/// A prepared statement of a database, for one run. Lent by the database, which takes it back when this ends.
class SqliteStatement {
public:
    using Blob = std::span<const std::uint8_t>;

    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;
    ~SqliteStatement();

    /// Gives the next parameter its value; one that is left out is NULL.
    SqliteStatement& bind(std::int64_t value);
    SqliteStatement& bind(std::string_view text);
    SqliteStatement& bind(Blob bytes);
    SqliteStatement& bindNull();

    /// Moves to the next row. False when there is none, and when anything has failed.
    bool next();

    std::int64_t integer(int column) const;
    /// Text or bytes; valid until the next row.
    std::string_view text(int column) const;
    bool isNull(int column) const;

private:
    friend class SqliteDatabase;
    SqliteStatement(SqliteDatabase& database, sqlite3_stmt* statement) : m_database(database), m_statement(statement) {}
    void check(int code);

    SqliteDatabase& m_database;
    sqlite3_stmt* m_statement; // nullptr after a failed preparation
    int m_bound = 0;
};

/// One connection to an SQLite 3 database, for one thread at a time. Failures are kept, as a stream keeps them: after
/// the first one every statement yields no rows and does nothing, until the failure is taken away. So a piece of work
/// is written straight down and asked once at its end whether it went well.
class SqliteDatabase {
public:
    struct Failure {
        enum class Kind {
            damaged, ///< the file is no database, or not a whole one
            busy,    ///< another process did not let go of it
            unusable ///< it cannot be made, read or written here
        };
        Kind kind = Kind::unusable;
        std::string detail;
    };

    /// Opens the file, or makes it for its owner only (0600). An empty name is a database of this connection's own, in
    /// a temporary file.
    explicit SqliteDatabase(const std::filesystem::path& file);
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;
    ~SqliteDatabase();

    /// Runs statements that take no parameters and yield no rows.
    void execute(const char* sql);
    /// Prepares the statement the first time. One statement is lent out once at a time.
    SqliteStatement statement(std::string_view sql);

    bool hasFailed() const { return m_failure.has_value(); }
    /// Makes what follows fail, for what SQLite itself cannot know.
    void fail(Failure failure);
    std::optional<Failure> takeFailure();

private:
    friend class SqliteStatement;
    friend class SqliteTransaction;
    void fail(int code);

    sqlite3* m_connection = nullptr;
    std::map<std::string, sqlite3_stmt*, std::less<>> m_statements;
    std::optional<Failure> m_failure;
};

/// Writes that take effect together, at `commit`, or not at all.
class SqliteTransaction {
public:
    explicit SqliteTransaction(SqliteDatabase& database);
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;
    ~SqliteTransaction();

    void commit();

private:
    SqliteDatabase& m_database;
    bool m_isOpen;
};

} // namespace vocalith
