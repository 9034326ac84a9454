// One connection to an SQLite database, with the statements it has prepared.
#pragma once

#include "objectstore/sqlite/Statement.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace objectstore::sqlite {

/// An open database.
///
/// Ownership: owns the connection and its statements.
/// Threads:   one at a time.
/// Errors:    everything throws Failure.
class Connection {
public:
    enum class Access { readWrite, readOnly };

    /// Creates nothing but what SQLite creates when the database is first written.
    Connection(const std::string& path, Access access, const std::string& vfs, double busyTimeout);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Runs statements that have no parameters and whose rows do not matter.
    void execute(const char* sql);
    /// The statement of that text, prepared once and kept. It is not to be in use already. The least used
    /// half is dropped when there are many.
    Statement& prepared(std::string_view sql);
    /// Of the last statement.
    std::int64_t changes() const;
    /// The first column of the first row, or `otherwise`.
    std::int64_t integer(std::string_view sql, std::int64_t otherwise = 0);
    bool isInTransaction() const;
    /// Closing then neither writes the log into the database nor removes it.
    void keepLogWhenClosed();
    sqlite3* native() const { return _connection; }

private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    struct Cached {
        Statement statement;
        std::uint64_t lastUse = 0;
    };
    void dropLeastUsed();

    sqlite3* _connection = nullptr;
    std::unordered_map<std::string, Cached, TextHash, std::equal_to<>> _statements;
    std::uint64_t _uses = 0;
};

} // namespace objectstore::sqlite
