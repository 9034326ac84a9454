// What translated predicates call from SQL.
#include "objectstore/PredicateSQL.h"
#include "objectstore/TextSearch.h"
#include "objectstore/ValueComparison.h"

#include <new>
#include <sqlite3.h>

namespace objectstore {

namespace {

std::string_view textOf(sqlite3_value* value)
{
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return {bytes ? bytes : "", static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

/// Exact, and asked of every row in a scan: what `comparesText` says of "contains", as fast as memory is
/// read.
extern "C" void answerHolds(sqlite3_context* call, int, sqlite3_value** arguments)
{
    const bool isPresent = sqlite3_value_type(arguments[0]) != SQLITE_NULL;
    sqlite3_result_int(call, isPresent && holds(textOf(arguments[0]), textOf(arguments[1])));
}

extern "C" void answerTextTest(sqlite3_context* call, int, sqlite3_value** arguments)
{
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL)
        return sqlite3_result_int(call, 0);
    try {
        const auto comparator = static_cast<Comparator>(sqlite3_value_int(arguments[1]));
        const auto option = static_cast<TextOption>(sqlite3_value_int(arguments[2]));
        sqlite3_result_int(
            call, comparesText(textOf(arguments[0]), comparator, textOf(arguments[3]), option));
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(call);
    }
}

} // namespace

int registerPredicateFunctions(sqlite3* connection)
{
    constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    const int code = sqlite3_create_function_v2(
        connection, "store_holds", 2, flags, nullptr, answerHolds, nullptr, nullptr, nullptr);
    return code != SQLITE_OK ? code
                             : sqlite3_create_function_v2(connection, "store_text", 4, flags, nullptr,
                                 answerTextTest, nullptr, nullptr, nullptr);
}

} // namespace objectstore
