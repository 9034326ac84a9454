// What a database says to a program that is not ours.
#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>

namespace test {

/// Runs statements on a connection of its own, and answers the first column of their rows, a line each.
/// Throws SQLite's reason when it refuses.
inline std::string runSQL(const std::string& path, const std::string& sql)
{
    sqlite3* connection = nullptr;
    std::string rows;
    const auto note = [](void* text, int, char** columns, char**) {
        auto& lines = *static_cast<std::string*>(text);
        lines.append(lines.empty() ? "" : "\n").append(columns[0] ? columns[0] : "");
        return 0;
    };
    const bool isDone = sqlite3_open(path.c_str(), &connection) == SQLITE_OK
        && sqlite3_exec(connection, sql.c_str(), note, &rows, nullptr) == SQLITE_OK;
    const std::string reason = sqlite3_errmsg(connection);
    sqlite3_close(connection);
    if (!isDone)
        throw std::runtime_error(reason);
    return rows;
}

} // namespace test
