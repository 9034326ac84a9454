// SQLite with nothing around it but an end of the program for failures.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// A prepared statement of a Database, which must outlive it.
///
/// Ownership: owns the statement. Threads: one. Errors: end the program with SQLite's message.
class Statement {
public:
    Statement(sqlite3* connection, const std::string& sql);
    ~Statement() { sqlite3_finalize(_statement); }
    Statement(Statement&& other) noexcept : _statement(other._statement) { other._statement = nullptr; }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// Parameters count from 1. Text is not copied: it must live until the statement has run.
    Statement& bind(int parameter, std::int64_t value);
    Statement& bind(int parameter, double value);
    Statement& bind(int parameter, std::string_view text);
    Statement& bindBytes(int parameter, std::string_view bytes);
    Statement& bindNull(int parameter);
    bool step();
    void reset() { sqlite3_reset(_statement); }
    /// Steps to the end and can be bound again.
    void run();

    int parameters() const { return sqlite3_bind_parameter_count(_statement); }
    int columns() const { return sqlite3_column_count(_statement); }
    int type(int column) const { return sqlite3_column_type(_statement, column); }
    std::int64_t integer(int column) const { return sqlite3_column_int64(_statement, column); }
    double real(int column) const { return sqlite3_column_double(_statement, column); }
    /// Alive until the next step.
    std::string_view bytes(int column) const;

private:
    sqlite3_stmt* _statement = nullptr;
};

/// A connection set up as the engine sets up its own: WAL, synchronous=FULL, the same cache.
///
/// Ownership: owns the connection. Threads: one. Errors: as Statement.
class Database {
public:
    /// Opens the file, or makes it.
    explicit Database(const std::string& path);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void execute(const std::string& sql);
    Statement prepare(const std::string& sql) { return Statement(_connection, sql); }
    /// The first column of each row.
    std::vector<std::string> texts(const std::string& sql);
    std::int64_t integer(const std::string& sql);

private:
    sqlite3* _connection = nullptr;
};

/// Removes a database file with its companions.
void removeDatabase(const std::string& path);
/// Copies a database into a file of its own, whatever its write-ahead log still holds.
void copyDatabase(const std::string& from, const std::string& to);

} // namespace bench
