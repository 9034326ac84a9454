// How a store is read whole, and written again.
#include "floor/StoreRows.h"

#include "support/Measure.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>

namespace bench {

namespace {

/// The word behind `key=` in the definition of a full-text table.
std::string option(const std::string& definition, std::string_view key)
{
    const std::size_t at = definition.find(fmt::format("{}=", key));
    if (at == definition.npos)
        fail(fmt::format("no {} in {}", key, definition));
    const std::size_t from = at + key.size() + 1;
    return definition.substr(from, definition.find_first_of(",)", from) - from);
}

std::string marks(std::size_t count)
{
    std::string text = "?";
    while (--count > 0)
        text += ", ?";
    return text;
}

constexpr char kOwnDefinitions[] =
    "SELECT sql FROM sqlite_schema AS own WHERE sql IS NOT NULL AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'"
    " AND NOT EXISTS (SELECT 1 FROM sqlite_schema AS full WHERE full.sql LIKE 'CREATE VIRTUAL TABLE%'"
    " AND own.name GLOB full.name || '_*' AND own.name IN (full.name || '_data', full.name || '_idx',"
    " full.name || '_config', full.name || '_docsize', full.name || '_content'))";

} // namespace

Cell StoreRows::cellOf(const Statement& row, int column)
{
    const int type = row.type(column);
    switch (type) {
    case SQLITE_INTEGER:
        return {row.integer(column), 0, type};
    case SQLITE_FLOAT:
        return {std::bit_cast<std::int64_t>(row.real(column)), 0, type};
    case SQLITE_NULL:
        return {};
    default:
        break;
    }
    const std::string_view bytes = row.bytes(column);
    const auto at = static_cast<std::int64_t>(_bytes.size());
    _bytes.append(bytes);
    return {at, static_cast<std::uint32_t>(bytes.size()), type};
}

void StoreRows::bindCell(Statement& statement, int parameter, const Cell& cell) const
{
    const auto bytes = [&] {
        return std::string_view(_bytes).substr(static_cast<std::size_t>(cell.value), cell.size);
    };
    switch (cell.type) {
    case SQLITE_INTEGER:
        statement.bind(parameter, cell.value);
        return;
    case SQLITE_FLOAT:
        statement.bind(parameter, std::bit_cast<double>(cell.value));
        return;
    case SQLITE_TEXT:
        statement.bind(parameter, bytes());
        return;
    case SQLITE_BLOB:
        statement.bindBytes(parameter, bytes());
        return;
    default:
        statement.bindNull(parameter);
    }
}

void StoreRows::readTable(Database& store, const std::string& name)
{
    Statement all = store.prepare(fmt::format("SELECT * FROM \"{}\" ORDER BY 1", name));
    Table& table = _tables.emplace_back();
    table.columns = static_cast<std::size_t>(all.columns());
    table.insert = fmt::format("INSERT OR REPLACE INTO \"{}\" VALUES({})", name, marks(table.columns));
    while (all.step())
        for (int column = 0; column < all.columns(); ++column)
            table.cells.push_back(cellOf(all, column));
    if (name == "contact")
        _contacts = table.cells.size() / table.columns;
}

void StoreRows::readTextTable(Database& store, const std::string& name)
{
    const auto definition =
        store.texts(fmt::format("SELECT sql FROM sqlite_schema WHERE name = '{}'", name)).front();
    const auto column = store.texts(fmt::format("SELECT name FROM pragma_table_info('{}')", name)).front();
    const std::string content = option(definition, "content"), key = option(definition, "content_rowid");
    TextTable& table = _textTables.emplace_back();
    table.insert = fmt::format("INSERT INTO \"{}\"(rowid, \"{}\") VALUES(?, ?)", name, column);
    table.options = store.texts(fmt::format("SELECT 'INSERT INTO \"{0}\"(\"{0}\", rank) VALUES(''' || k ||"
                                            " ''', ' || v || ')' FROM \"{0}_config\" WHERE k <> 'version'",
        name));
    Statement texts = store.prepare(
        fmt::format("SELECT {0}, \"{1}\" FROM {2} WHERE \"{1}\" <> '' ORDER BY {0}", key, column, content));
    while (texts.step())
        table.texts.emplace_back(texts.integer(0), texts.bytes(1));
}

StoreRows StoreRows::read(const std::string& path)
{
    Database store(path);
    StoreRows rows;
    rows._schema = store.texts(fmt::format("{} ORDER BY rowid", kOwnDefinitions));
    for (const auto& name :
        store.texts(fmt::format("SELECT name FROM sqlite_schema WHERE sql IN ({}) AND type ="
                                " 'table' AND sql NOT LIKE 'CREATE VIRTUAL%' ORDER BY rowid",
            kOwnDefinitions)))
        rows.readTable(store, name);
    for (const auto& name :
        store.texts("SELECT name FROM sqlite_schema WHERE sql LIKE 'CREATE VIRTUAL TABLE%'"))
        rows.readTextTable(store, name);
    return rows;
}

void StoreRows::write(const std::string& path) const
{
    Database store(path);
    store.execute("BEGIN IMMEDIATE");
    for (const auto& definition : _schema)
        store.execute(definition);
    for (const auto& table : _tables) {
        Statement insert = store.prepare(table.insert);
        for (auto cell = table.cells.begin(); cell != table.cells.end();) {
            for (std::size_t column = 1; column <= table.columns; ++column, ++cell)
                bindCell(insert, static_cast<int>(column), *cell);
            insert.run();
        }
    }
    for (const auto& table : _textTables) {
        for (const auto& statement : table.options)
            store.execute(statement);
        Statement insert = store.prepare(table.insert);
        for (const auto& [key, text] : table.texts)
            insert.bind(1, key).bind(2, std::string_view(text)).run();
    }
    store.execute("COMMIT");
}

double StoreRows::indexedBytesPerCard() const
{
    std::size_t bytes = 0;
    for (const auto& table : _textTables)
        for (const auto& [key, text] : table.texts)
            bytes += text.size();
    return static_cast<double>(bytes) / static_cast<double>(std::max<std::size_t>(1, _contacts));
}

} // namespace bench
