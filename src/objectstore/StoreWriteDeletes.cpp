// How deletes reach the tables.
#include "objectstore/StoreWrite.h"

#include "objectstore/RowReader.h"

#include <fmt/format.h>

#include <map>

namespace objectstore {

namespace {

/// Deletion records beyond this are thrown away; who has not seen them looks at everything it has.
constexpr std::int64_t kKeptDeletions = 50'000;
constexpr std::int64_t kCommitsBetweenPrunings = 1'024;

std::string jsonOfKeys(const ObjectList& objects)
{
    std::vector<std::int64_t> keys;
    for (const auto& object : objects)
        keys.push_back(object->key());
    return jsonOf(keys);
}

} // namespace

void StoreWrite::writeDeletes()
{
    std::map<std::size_t, ObjectList> byEntity;
    for (const auto& object : _deleted)
        if (object->key() > 0)
            byEntity[object->entity().index()].push_back(object);
    for (const auto& [index, objects] : byEntity)
        deleteRows(objects.front()->entity(), objects);
    if (_version % kCommitsBetweenPrunings == 0)
        pruneDeletions();
}

void StoreWrite::deleteRows(const Entity& entity, const ObjectList& objects)
{
    const std::string keys = jsonOfKeys(objects);
    for (const Slot* slot : entity.slots()) {
        if (slot->holdsParts)
            deleteParts(*slot, keys);
        if (slot->kind == SlotKind::manyToMany) {
            sqlite::Use cut(prepared(fmt::format(
                "DELETE FROM {} WHERE {} IN (SELECT value FROM json_each(?))", slot->table, slot->column)));
            cut->bindText(1, keys).run();
        }
    }
    deleteLarge(entity, keys);
    if (entity.owner()) {
        for (const auto& object : objects)
            if (const RowRef row = rowOf(*object))
                deleteEntry(entity, *row);
        return;
    }
    sqlite::Use remove(prepared(fmt::format(
        "DELETE FROM {} WHERE \"_key\" IN (SELECT value FROM json_each(?))", entity.family()->table)));
    remove->bindText(1, keys).run();
    recordDeletions(objects);
}

/// The row that the object was deleted or changed as; read where the object never had it.
RowRef StoreWrite::rowOf(StoreObject& object)
{
    RowRef row = ObjectAccess::row(object);
    return row ? row : findRow(_state, *object.entity().family(), object.key());
}

/// Parts go by what names them for every writer: another may have written the same entry anew under another
/// key.
void StoreWrite::deleteEntry(const Entity& entity, const Row& row)
{
    const std::string& table = entity.family()->table;
    const Slot& owner = *entity.owner();
    const std::int64_t ownerKey = row.integer(owner.field);
    noteOwner(ownerKey, owner);
    if (entity.textIndex() && ownerKey)
        textIndex(entity).remove(ownerKey);
    const UnitSlots& unit = entity.unit();
    if (ownerKey && unit && !row.isAbsent(unit.identifier->field)) {
        std::string sql = fmt::format(
            "DELETE FROM {} WHERE {} = ? AND {} = ?", table, owner.column, unit.identifier->column);
        if (unit.discriminator)
            sql += fmt::format(" AND {} IS ?", unit.discriminator->column);
        sqlite::Use remove(prepared(sql));
        remove->bind(1, ownerKey);
        bindField(*remove, 2, row.value(unit.identifier->field));
        if (unit.discriminator)
            bindField(*remove, 3, row.value(unit.discriminator->field));
        remove->run();
        return;
    }
    sqlite::Use remove(prepared(fmt::format("DELETE FROM {} WHERE \"_key\" = ?", table)));
    remove->bind(1, row.key()).run();
}

/// All parts of the owners, those that are not here and those that others added included.
void StoreWrite::deleteParts(const Slot& slot, std::string_view owners)
{
    for (const Entity* entity : slot.destination->concreteEntities()) {
        const std::string which = fmt::format("{} IN (SELECT value FROM json_each(?)) AND \"_entity\" = {}",
            slot.inverse->column, _state.numberOf(*entity));
        if (entity->textIndex())
            textIndex(*entity).removeAll(owners);
        for (const Slot* large : entity->slots())
            if (large->kind == SlotKind::largeAttribute) {
                sqlite::Use remove(prepared(
                    fmt::format("DELETE FROM {} WHERE \"_key\" IN (SELECT \"_key\" FROM {} WHERE {})",
                        large->table, entity->family()->table, which)));
                remove->bindText(1, owners).run();
            }
        sqlite::Use remove(prepared(fmt::format("DELETE FROM {} WHERE {}", entity->family()->table, which)));
        remove->bindText(1, owners).run();
    }
}

void StoreWrite::deleteLarge(const Entity& entity, std::string_view keys)
{
    for (const Slot* slot : entity.slots()) {
        if (slot->kind != SlotKind::largeAttribute)
            continue;
        sqlite::Use remove(prepared(
            fmt::format("DELETE FROM {} WHERE \"_key\" IN (SELECT value FROM json_each(?))", slot->table)));
        remove->bindText(1, keys).run();
    }
}

void StoreWrite::recordDeletions(const ObjectList& objects)
{
    for (const auto& object : objects) {
        sqlite::Use record(
            prepared("INSERT OR REPLACE INTO store_deletion(key, entity, version) VALUES(?, ?, ?)"));
        record->bind(1, object->key()).bind(2, _state.numberOf(object->entity())).bind(3, _version).run();
    }
}

void StoreWrite::pruneDeletions()
{
    sqlite::Use find(prepared("SELECT version FROM store_deletion ORDER BY version DESC LIMIT 1 OFFSET ?"));
    find->bind(1, kKeptDeletions);
    if (!find->step())
        return;
    const std::int64_t last = find->integer(0);
    find->reset();
    sqlite::Use prune(prepared("DELETE FROM store_deletion WHERE version <= ?"));
    prune->bind(1, last).run();
    sqlite::Use note(prepared("UPDATE store_state SET deletionsFrom = ? WHERE id = 1"));
    note->bind(1, last).run();
}

} // namespace objectstore
