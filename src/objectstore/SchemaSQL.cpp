// How a model becomes CREATE statements.
#include "objectstore/SchemaSQL.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace objectstore {

const char kEngineTables[] =
    "CREATE TABLE store_state(id INTEGER PRIMARY KEY CHECK(id = 1), commitNumber INTEGER NOT NULL,"
    " sequence INTEGER NOT NULL, deletionsFrom INTEGER NOT NULL);"
    "INSERT INTO store_state VALUES(1, 0, 0, 0);"
    "CREATE TABLE store_meta(name TEXT PRIMARY KEY, value) WITHOUT ROWID;"
    "CREATE TABLE store_entity(number INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);"
    "CREATE TABLE store_deletion(key INTEGER PRIMARY KEY, entity INTEGER NOT NULL, version INTEGER NOT NULL);"
    "CREATE INDEX store_deletion_version ON store_deletion(version);";

namespace {

const char* columnType(const Family::Column& column)
{
    if (column.isReference)
        return "INTEGER";
    switch (column.type) {
    case AttributeType::string:
        return "TEXT";
    case AttributeType::integer:
    case AttributeType::boolean:
        return "INTEGER";
    case AttributeType::real:
    case AttributeType::date:
        return "REAL";
    default:
        return "BLOB";
    }
}

class SchemaWriter {
public:
    explicit SchemaWriter(const Model& model) : _model(model) { }

    std::vector<SchemaPart> write()
    {
        for (const Family* family : _model.families())
            addFamily(*family);
        for (const Entity* entity : _model.entities()) {
            if (entity->isAbstract())
                continue;
            _parts.push_back(
                {fmt::format("entity {} in {}", entity->name(), entity->family()->name), "", "", ""});
            for (const Slot* slot : entity->slots())
                addSlot(*slot);
            addGuards(*entity);
        }
        return std::move(_parts);
    }

private:
    void addFamily(const Family& family)
    {
        std::string sql = fmt::format("CREATE TABLE {}(\"_key\" INTEGER PRIMARY KEY, \"_version\" INTEGER NOT"
                                      " NULL, \"_entity\" INTEGER NOT NULL",
            family.table);
        for (const auto& column : family.columns)
            sql += fmt::format(", {} {}", quoted(column.name), columnType(column));
        _parts.push_back({fmt::format("table {}", family.name), sql + ")", "", ""});
        for (const auto& column : family.columns)
            _parts.push_back({fmt::format("column {}.{} {}", family.name, column.name, columnType(column)),
                fmt::format(
                    "ALTER TABLE {} ADD COLUMN {} {}", family.table, quoted(column.name), columnType(column)),
                family.name, ""});
        if (family.isRoot())
            addIndex("INDEX", family, "_version", "\"_version\"");
        for (const auto& column : family.columns) {
            if ((column.flags & kUnique) != 0)
                addIndex("UNIQUE INDEX", family, column.name, quoted(column.name));
            else if ((column.flags & kIndexed) != 0)
                addIndex("INDEX", family, column.name, quoted(column.name));
        }
    }

    void addIndex(
        std::string_view kind, const Family& family, std::string_view name, std::string_view columns)
    {
        const std::string sql = fmt::format("CREATE {} {} ON {}({})", kind,
            quoted(fmt::format("{}_{}", family.name, name)), family.table, columns);
        addOnce({sql, sql, "", ""});
    }

    void addSlot(const Slot& slot)
    {
        if (slot.kind == SlotKind::largeAttribute)
            addOnce({fmt::format("large {}", slot.table),
                fmt::format("CREATE TABLE {}(\"_key\" INTEGER PRIMARY KEY, value)", slot.table), "", ""});
        if (slot.kind != SlotKind::manyToMany)
            return;
        addOnce({fmt::format("join {}", slot.table),
            fmt::format("CREATE TABLE {0}(\"lead\" INTEGER NOT NULL, \"other\" INTEGER NOT NULL, PRIMARY"
                        " KEY(\"lead\", \"other\")) WITHOUT ROWID",
                slot.table),
            "", ""});
        const std::string back = fmt::format("CREATE INDEX {0}_back\" ON {0}\"(\"other\", \"lead\")",
            slot.table.substr(0, slot.table.size() - 1));
        addOnce({back, back, "", ""});
    }

    /// What finds an object's parts, and keeps their identifiers apart.
    void addGuards(const Entity& entity)
    {
        const Family& family = *entity.family();
        for (const Slot* slot : entity.fields()) {
            const bool isOwner = slot == entity.owner();
            if (slot->kind != SlotKind::toOne || (isOwner && entity.unit()))
                continue;
            if (isOwner && (entity.isSingle() || entity.textIndex()))
                addIndex("UNIQUE INDEX", family, slot->key, slot->column);
            else if (slot->isInverted || isOwner)
                addIndex("INDEX", family, slot->key, slot->column);
        }
        if (const UnitSlots& unit = entity.unit())
            addIndex("UNIQUE INDEX", family, "unit",
                fmt::format("{}, {}{}", entity.owner()->column,
                    unit.discriminator ? fmt::format("ifnull({}, 0), ", unit.discriminator->column) : "",
                    unit.identifier->column));
        if (const Slot* text = entity.textIndex()) {
            addMissing(entity, *text);
            addIdentities(*entity.owner()->destination->families().front());
            addOnce({fmt::format("text {} of {}", entity.textTable(), text->column),
                fmt::format(
                    "CREATE VIRTUAL TABLE {} USING fts5({}, content={}, content_rowid={}, tokenize='trigram"
                    " case_sensitive 1', detail=none, columnsize=0)",
                    entity.textTable(), text->column, family.table, entity.owner()->column),
                "",
                fmt::format("INSERT INTO {0}(rowid, {1}) SELECT {2}, replace({1}, char(0), char(1)) FROM {3} "
                            "WHERE {1} IS NOT NULL AND {2} IS"
                            " NOT NULL ORDER BY {2}",
                    entity.textTable(), text->column, entity.owner()->column, family.table)});
        }
    }

    /// The entries without a text, most times none: whoever relies on the text index asks for them.
    void addMissing(const Entity& entity, const Slot& text)
    {
        const Family& family = *entity.family();
        const std::string sql = fmt::format("CREATE INDEX {} ON {}({}) WHERE {} IS NULL",
            quoted(family.name + "_missing"), family.table, entity.owner()->column, text.column);
        addOnce({sql, sql, "", ""});
    }

    /// The ids of all rows in the order of their keys, for who looks at nothing else. The condition, true for
    /// every row, keeps the planner from walking it in place of the table: only who states it gets it.
    void addIdentities(const Family& family)
    {
        for (const auto& column : family.columns) {
            if ((column.flags & kUnique) == 0)
                continue;
            const std::string sql = fmt::format("CREATE INDEX {} ON {}(\"_key\", \"_entity\", {}) WHERE {}",
                quoted(family.name + "_identities"), family.table, quoted(column.name), kHasIdentity);
            addOnce({sql, sql, "", ""});
        }
    }

    void addOnce(SchemaPart part)
    {
        if (_lines.insert(part.line).second)
            _parts.push_back(std::move(part));
    }

    const Model& _model;
    std::vector<SchemaPart> _parts;
    std::set<std::string> _lines;
};

} // namespace

std::vector<SchemaPart> schemaParts(const Model& model) { return SchemaWriter(model).write(); }

std::string schemaText(const Model& model)
{
    std::vector<std::string> lines;
    for (auto& part : schemaParts(model))
        lines.push_back(std::move(part.line));
    std::ranges::sort(lines);
    std::string text;
    for (const auto& line : lines)
        text += line + "\n";
    return text;
}

std::string schemaHash(std::string_view schemaText)
{
    std::uint64_t hash = 0xcbf29ce484222325u;
    for (const char c : schemaText)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    return fmt::format("{:016x}", hash);
}

} // namespace objectstore
