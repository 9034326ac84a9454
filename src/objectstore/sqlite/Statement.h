// One prepared statement: bind, step, read columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

namespace objectstore::sqlite {

/// SQLite refused. It stays inside the engine; whoever faces callers makes an Error of it.
class Failure : public std::runtime_error {
public:
    Failure(int code, int systemError, const std::string& text)
        : std::runtime_error(text), _code(code), _systemError(systemError)
    {
    }
    /// The extended result code.
    int code() const { return _code; }
    int primaryCode() const { return _code & 0xff; }
    /// errno of the failing system call, or 0.
    int systemError() const { return _systemError; }

private:
    int _code;
    int _systemError;
};

/// Throws the connection's last failure.
[[noreturn]] void raise(sqlite3* connection, int code, std::string_view during);

/// A prepared statement.
///
/// Text and bytes are bound without a copy and must live until `reset`.
///
/// Ownership: owned by its Connection's cache, or by whoever prepared it.
/// Threads:   one at a time.
/// Errors:    everything but columns throws Failure.
class Statement {
public:
    Statement() = default;
    Statement(sqlite3* connection, std::string_view sql, bool isPersistent);
    Statement(Statement&& other) noexcept
        : _connection(other._connection), _statement(std::exchange(other._statement, nullptr))
    {
    }
    Statement& operator=(Statement&& other) noexcept
    {
        std::swap(_connection, other._connection);
        std::swap(_statement, other._statement);
        return *this;
    }
    ~Statement();

    explicit operator bool() const { return _statement != nullptr; }

    /// Parameters count from 1.
    Statement& bind(int parameter, std::int64_t value);
    Statement& bind(int parameter, double value);
    Statement& bindText(int parameter, std::string_view text);
    Statement& bindBytes(int parameter, std::string_view bytes);
    Statement& bindNull(int parameter);

    /// True while there is a row.
    bool step();
    /// Steps to the end and resets.
    void run();
    /// Ends the use of its rows and forgets what was bound.
    void reset();

    /// Columns count from 0.
    std::int64_t integer(int column) const;
    double real(int column) const;
    /// Alive until the next step or reset.
    std::string_view text(int column) const;
    std::string_view bytes(int column) const;
    /// SQLITE_INTEGER, SQLITE_FLOAT, SQLITE_TEXT, SQLITE_BLOB or SQLITE_NULL.
    int type(int column) const;
    bool isNull(int column) const;

    /// The statement with what is bound in the places of its parameters.
    std::string expandedText() const;

private:
    sqlite3* _connection = nullptr;
    sqlite3_stmt* _statement = nullptr;
};

/// Resets a statement at the end of a scope, however it is left.
class Use {
public:
    explicit Use(Statement& statement) : _statement(statement) { }
    ~Use() { _statement.reset(); }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    Statement* operator->() { return &_statement; }
    Statement& operator*() { return _statement; }

private:
    Statement& _statement;
};

} // namespace objectstore::sqlite
