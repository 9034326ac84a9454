// How a connection is opened, and which statements it keeps.
#include "objectstore/sqlite/Connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <vector>

namespace objectstore::sqlite {

namespace {

constexpr std::size_t kKeptStatements = 512;

} // namespace

Connection::Connection(const std::string& path, Access access, const std::string& vfs, double busyTimeout)
{
    const int flags =
        (access == Access::readWrite ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY)
        | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int code = sqlite3_open_v2(path.c_str(), &_connection, flags, vfs.empty() ? nullptr : vfs.c_str());
    if (code != SQLITE_OK) {
        const Failure failure(
            code, _connection ? sqlite3_system_errno(_connection) : 0, sqlite3_errstr(code));
        sqlite3_close_v2(_connection);
        throw failure;
    }
    sqlite3_busy_timeout(_connection, static_cast<int>(busyTimeout * 1000));
}

Connection::~Connection()
{
    _statements.clear();
    sqlite3_close_v2(_connection);
}

void Connection::keepLogWhenClosed()
{
    sqlite3_db_config(_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

void Connection::execute(const char* sql)
{
    const int code = sqlite3_exec(_connection, sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        raise(_connection, code, sql);
}

Statement& Connection::prepared(std::string_view sql)
{
    auto found = _statements.find(sql);
    if (found == _statements.end()) {
        if (_statements.size() >= kKeptStatements)
            dropLeastUsed();
        found = _statements.emplace(std::string(sql), Cached{Statement(_connection, sql, true)}).first;
    }
    found->second.lastUse = ++_uses;
    return found->second.statement;
}

void Connection::dropLeastUsed()
{
    std::vector<std::uint64_t> uses;
    for (const auto& entry : _statements)
        uses.push_back(entry.second.lastUse);
    const auto middle = uses.begin() + static_cast<std::ptrdiff_t>(uses.size() / 2);
    std::ranges::nth_element(uses, middle);
    // Statements of the operation under way are among the last used, and stay.
    std::erase_if(_statements, [&](const auto& entry) { return entry.second.lastUse < *middle; });
}

std::int64_t Connection::changes() const { return sqlite3_changes64(_connection); }

std::int64_t Connection::integer(std::string_view sql, std::int64_t otherwise)
{
    Use use(prepared(sql));
    return use->step() ? use->integer(0) : otherwise;
}

bool Connection::isInTransaction() const { return sqlite3_get_autocommit(_connection) == 0; }

} // namespace objectstore::sqlite
