// How the schema of a store is made and completed.
#include "objectstore/Migration.h"

#include "objectstore/SchemaSQL.h"
#include "objectstore/StoreErrors.h"
#include "objectstore/TextIndex.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string>

namespace objectstore {

namespace {

using Lines = std::set<std::string, std::less<>>;

Lines linesOf(std::string_view text)
{
    Lines lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (end > 0)
            lines.emplace(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

} // namespace

bool isEarlierSchema(std::string_view stored, std::string_view wanted)
{
    const Lines have = linesOf(stored), want = linesOf(wanted);
    return std::ranges::includes(want, have);
}

void createSchema(sqlite::Connection& connection, const Model& model)
{
    connection.execute(kEngineTables);
    for (const auto& part : schemaParts(model))
        if (!part.sql.empty() && part.columnOf.empty())
            connection.execute(part.sql.c_str());
    for (const Entity* entity : model.entities())
        if (entity->textIndex() && !entity->isAbstract())
            configureTextIndex(connection, *entity);
}

void addMissingSchema(StoreState& store, const Model& model, std::string_view stored)
{
    const Lines have = linesOf(stored);
    std::set<std::string> newTables;
    try {
        for (const auto& part : schemaParts(model)) {
            if (have.contains(part.line) || (!part.columnOf.empty() && newTables.contains(part.columnOf)))
                continue;
            if (part.line.starts_with("table "))
                newTables.insert(part.line.substr(6));
            if (!part.sql.empty())
                store.connection->execute(part.sql.c_str());
            if (!part.fill.empty())
                store.connection->execute(part.fill.c_str());
        }
        for (const Entity* entity : model.entities())
            if (entity->textIndex() && !entity->isAbstract())
                configureTextIndex(*store.connection, *entity);
    } catch (const sqlite::Failure& failure) {
        // Only what the data itself refuses is a failed migration; a full disk stays a full disk.
        const bool isRefusal = failure.primaryCode() == 1 || failure.primaryCode() == 19;
        if (!isRefusal)
            throw;
        throw StoreFailure(storeError(StoreFault::migrationFailed,
            fmt::format("{}: the older store cannot be completed: {}", store.path, failure.what())));
    }
}

} // namespace objectstore
