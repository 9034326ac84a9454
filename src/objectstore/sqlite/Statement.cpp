// How a statement is prepared, bound and stepped.
#include "objectstore/sqlite/Statement.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <memory>

namespace objectstore::sqlite {

void raise(sqlite3* connection, int code, std::string_view during)
{
    const int extended = connection ? sqlite3_extended_errcode(connection) : code;
    const int chosen = (extended & 0xff) == (code & 0xff) ? extended : code;
    const char* reason = connection ? sqlite3_errmsg(connection) : sqlite3_errstr(code);
    throw Failure(chosen, connection ? sqlite3_system_errno(connection) : 0,
        fmt::format("{} (SQLite {}) in: {}", reason, chosen, during.substr(0, 200)));
}

Statement::Statement(sqlite3* connection, std::string_view sql, bool isPersistent) : _connection(connection)
{
    const unsigned flags = isPersistent ? SQLITE_PREPARE_PERSISTENT : 0;
    const int code =
        sqlite3_prepare_v3(connection, sql.data(), static_cast<int>(sql.size()), flags, &_statement, nullptr);
    if (code != SQLITE_OK)
        raise(connection, code, sql);
}

Statement::~Statement() { sqlite3_finalize(_statement); }

namespace {

void check(int code, sqlite3* connection, sqlite3_stmt* statement)
{
    if (code != SQLITE_OK)
        raise(connection, code, sqlite3_sql(statement));
}

/// SQLite takes a null pointer for NULL, even with length 0.
const char* present(std::string_view bytes) { return bytes.data() ? bytes.data() : ""; }

} // namespace

Statement& Statement::bind(int parameter, std::int64_t value)
{
    check(sqlite3_bind_int64(_statement, parameter, value), _connection, _statement);
    return *this;
}

Statement& Statement::bind(int parameter, double value)
{
    check(sqlite3_bind_double(_statement, parameter, value), _connection, _statement);
    return *this;
}

Statement& Statement::bindText(int parameter, std::string_view text)
{
    check(sqlite3_bind_text64(_statement, parameter, present(text), text.size(), SQLITE_STATIC, SQLITE_UTF8),
        _connection, _statement);
    return *this;
}

Statement& Statement::bindBytes(int parameter, std::string_view bytes)
{
    check(sqlite3_bind_blob64(_statement, parameter, present(bytes), bytes.size(), SQLITE_STATIC),
        _connection, _statement);
    return *this;
}

Statement& Statement::bindNull(int parameter)
{
    check(sqlite3_bind_null(_statement, parameter), _connection, _statement);
    return *this;
}

bool Statement::step()
{
    const int code = sqlite3_step(_statement);
    if (code == SQLITE_ROW)
        return true;
    if (code != SQLITE_DONE)
        raise(_connection, code, sqlite3_sql(_statement));
    return false;
}

void Statement::run()
{
    while (step()) { }
    reset();
}

void Statement::reset()
{
    sqlite3_reset(_statement);
    sqlite3_clear_bindings(_statement);
}

std::int64_t Statement::integer(int column) const { return sqlite3_column_int64(_statement, column); }
double Statement::real(int column) const { return sqlite3_column_double(_statement, column); }

std::string_view Statement::text(int column) const
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(_statement, column));
    return {text ? text : "", static_cast<std::size_t>(sqlite3_column_bytes(_statement, column))};
}

std::string_view Statement::bytes(int column) const
{
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(_statement, column));
    return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_column_bytes(_statement, column))};
}

int Statement::type(int column) const { return sqlite3_column_type(_statement, column); }
bool Statement::isNull(int column) const { return type(column) == SQLITE_NULL; }

std::string Statement::expandedText() const
{
    const std::unique_ptr<char, decltype(&sqlite3_free)> text(sqlite3_expanded_sql(_statement), sqlite3_free);
    return text ? text.get() : "";
}

} // namespace objectstore::sqlite
