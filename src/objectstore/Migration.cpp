// How the schema of a store is made and completed.
#include "objectstore/Migration.h"

#include "objectstore/SchemaSQL.h"
#include "objectstore/StoreErrors.h"
#include "objectstore/TextIndex.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

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

/// The quoted name of an index, or nothing for a line that makes none.
std::string_view indexName(std::string_view line)
{
    const bool isIndex = line.starts_with("CREATE INDEX ") || line.starts_with("CREATE UNIQUE INDEX ");
    const std::size_t end = line.find(" ON ");
    if (!isIndex || end == line.npos)
        return {};
    line = line.substr(0, end);
    return line.substr(line.find('"'));
}

/// The indexes of `have` that `want` defines in another way.
std::vector<std::string> changedIndexes(const Lines& have, const Lines& want)
{
    std::vector<std::string> changed;
    for (const auto& old : have) {
        const std::string_view name = want.contains(old) ? std::string_view() : indexName(old);
        const bool isWanted = !name.empty()
            && std::ranges::any_of(want, [&](const std::string& line) { return indexName(line) == name; });
        if (isWanted)
            changed.push_back(old);
    }
    return changed;
}

} // namespace

bool isEarlierSchema(std::string_view stored, std::string_view wanted)
{
    Lines have = linesOf(stored);
    const Lines want = linesOf(wanted);
    for (const auto& line : changedIndexes(have, want))
        have.erase(line);
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
        for (const auto& line : changedIndexes(have, linesOf(model.schemaText())))
            store.connection->execute(fmt::format("DROP INDEX {}", indexName(line)).c_str());
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
