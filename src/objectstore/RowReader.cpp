// How rows come out of the store's tables.
#include "objectstore/RowReader.h"

#include <fmt/compile.h>
#include <fmt/format.h>
#include <sqlite3.h>

#include <iterator>

namespace objectstore {

namespace {

constexpr int kFirstColumn = 3;

} // namespace

FieldValue readField(const sqlite::Statement& statement, int column)
{
    FieldValue value;
    switch (statement.type(column)) {
    case SQLITE_INTEGER:
        value.kind = FieldKind::integer;
        value.integer = statement.integer(column);
        break;
    case SQLITE_FLOAT:
        value.kind = FieldKind::real;
        value.real = statement.real(column);
        break;
    case SQLITE_TEXT:
        value.kind = FieldKind::text;
        value.bytes = statement.text(column);
        break;
    case SQLITE_BLOB:
        value.kind = FieldKind::bytes;
        value.bytes = statement.bytes(column);
        break;
    default:
        break;
    }
    return value;
}

std::string rowColumns(const Family& family)
{
    std::string columns = "\"_key\", \"_version\", \"_entity\"";
    for (const auto& column : family.columns)
        columns += ", " + quoted(column.name);
    return columns;
}

int countOfRowColumns(const Family& family) { return kFirstColumn + static_cast<int>(family.columns.size()); }

RowRef readRow(StoreState& store, const Family&, const sqlite::Statement& statement)
{
    const std::int64_t key = statement.integer(0), version = statement.integer(1);
    if (RowRef known = store.rows->find(key, version))
        return known;
    const Entity* entity = store.entityNumbered(statement.integer(2));
    if (!entity)
        return nullptr;
    auto& fields = store.scratch;
    const auto& columns = entity->familyColumns();
    for (std::size_t i = 0; i < columns.size(); ++i)
        fields[i] = readField(statement, kFirstColumn + columns[i]);
    return RowBuilder::build(*entity, key, version, std::span(fields.data(), columns.size()), store.rows);
}

RowRef findRow(StoreState& store, const Family& family, std::int64_t key)
{
    auto& sql = store.findSQL[family.index];
    if (sql.empty())
        sql = fmt::format("SELECT {} FROM {} WHERE \"_key\" = ?", rowColumns(family), family.table);
    sqlite::Use find(store.connection->prepared(sql));
    find->bind(1, key);
    return find->step() ? readRow(store, family, *find) : nullptr;
}

std::string jsonOf(std::span<const std::int64_t> keys)
{
    std::string text = "[";
    for (const std::int64_t key : keys) {
        if (text.size() > 1)
            text += ',';
        fmt::format_to(std::back_inserter(text), FMT_COMPILE("{}"), key);
    }
    return text += ']';
}

void bindField(sqlite::Statement& statement, int parameter, const FieldValue& value)
{
    switch (value.kind) {
    case FieldKind::integer:
        statement.bind(parameter, value.integer);
        return;
    case FieldKind::real:
        statement.bind(parameter, value.real);
        return;
    case FieldKind::text:
        statement.bindText(parameter, value.bytes);
        return;
    case FieldKind::bytes:
        statement.bindBytes(parameter, value.bytes);
        return;
    case FieldKind::absent:
        statement.bindNull(parameter);
        return;
    }
}

} // namespace objectstore
