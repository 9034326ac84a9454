// The few calls of SQLite that the floors need.
#include "floor/Database.h"

#include "support/Measure.h"

#include <fmt/format.h>

#include <filesystem>

namespace bench {

namespace {

void check(int code, sqlite3* connection, std::string_view what)
{
    if (code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE)
        fail(fmt::format("{}: {}", what, sqlite3_errmsg(connection)));
}

} // namespace

Statement::Statement(sqlite3* connection, const std::string& sql)
{
    check(sqlite3_prepare_v3(connection, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &_statement, nullptr),
        connection, sql);
}

Statement& Statement::bind(int parameter, std::int64_t value)
{
    sqlite3_bind_int64(_statement, parameter, value);
    return *this;
}

Statement& Statement::bind(int parameter, double value)
{
    sqlite3_bind_double(_statement, parameter, value);
    return *this;
}

Statement& Statement::bind(int parameter, std::string_view text)
{
    sqlite3_bind_text(_statement, parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    return *this;
}

Statement& Statement::bindBytes(int parameter, std::string_view bytes)
{
    sqlite3_bind_blob(_statement, parameter, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
    return *this;
}

Statement& Statement::bindNull(int parameter)
{
    sqlite3_bind_null(_statement, parameter);
    return *this;
}

bool Statement::step()
{
    const int code = sqlite3_step(_statement);
    check(code, sqlite3_db_handle(_statement), sqlite3_sql(_statement));
    return code == SQLITE_ROW;
}

void Statement::run()
{
    while (step()) { }
    reset();
}

std::string_view Statement::bytes(int column) const
{
    const auto* data = static_cast<const char*>(sqlite3_column_blob(_statement, column));
    return {data, data ? static_cast<std::size_t>(sqlite3_column_bytes(_statement, column)) : 0};
}

Database::Database(const std::string& path)
{
    check(sqlite3_open(path.c_str(), &_connection), _connection, path);
    for (const char* setting : {"journal_mode = WAL", "synchronous = FULL", "temp_store = MEMORY",
             "cache_size = -16000", "foreign_keys = OFF"})
        execute(fmt::format("PRAGMA {}", setting));
}

Database::~Database() { sqlite3_close_v2(_connection); }

void Database::execute(const std::string& sql)
{
    check(sqlite3_exec(_connection, sql.c_str(), nullptr, nullptr, nullptr), _connection, sql);
}

std::vector<std::string> Database::texts(const std::string& sql)
{
    std::vector<std::string> found;
    for (Statement rows = prepare(sql); rows.step();)
        found.emplace_back(rows.bytes(0));
    return found;
}

std::int64_t Database::integer(const std::string& sql)
{
    Statement rows = prepare(sql);
    return rows.step() ? rows.integer(0) : 0;
}

void removeDatabase(const std::string& path)
{
    for (const char* companion : {"", "-wal", "-shm"})
        std::filesystem::remove(path + companion);
}

void copyDatabase(const std::string& from, const std::string& to)
{
    removeDatabase(to);
    Database source(from);
    Statement copy = source.prepare("VACUUM INTO ?");
    copy.bind(1, std::string_view(to)).run();
}

} // namespace bench
