// What translated predicates call from SQL.
#include "objectstore/PredicateSQL.h"
#include "objectstore/ValueComparison.h"

#include <new>
#include <sqlite3.h>

namespace objectstore {

namespace {

extern "C" void answerTextTest(sqlite3_context* call, int, sqlite3_value** arguments)
{
    const auto text = [&](int i) {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(arguments[i]));
        return std::string_view(
            bytes ? bytes : "", static_cast<std::size_t>(sqlite3_value_bytes(arguments[i])));
    };
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL)
        return sqlite3_result_int(call, 0);
    try {
        const auto comparator = static_cast<Comparator>(sqlite3_value_int(arguments[1]));
        const auto option = static_cast<TextOption>(sqlite3_value_int(arguments[2]));
        sqlite3_result_int(call, comparesText(text(0), comparator, text(3), option));
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(call);
    }
}

} // namespace

int registerPredicateFunctions(sqlite3* connection)
{
    return sqlite3_create_function_v2(connection, "store_text", 4,
        SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr, answerTextTest, nullptr, nullptr,
        nullptr);
}

} // namespace objectstore
