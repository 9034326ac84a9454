// How inserts, updates and links reach the tables.
#include "objectstore/StoreWrite.h"

#include <fmt/format.h>

#include <algorithm>

namespace objectstore {

StoreWrite::StoreWrite(ContextState& context, PersistentStore& store)
    : _context(context), _store(store), _state(store.state()), _version(_state.commitNumber + 1), _fields(128)
{
    collect();
    assignKeys();
}

void StoreWrite::collect()
{
    for (const auto& object : _context.changed) {
        if (!object->hasChanges() || ObjectAccess::is(*object, ObjectAccess::kGone))
            continue;
        if (&_context.requireStore(object->store()) != &_store)
            continue;
        if (object->isDeleted())
            _deleted.push_back(object);
        else if (object->isInserted())
            _inserted.push_back({object, 0, nullptr});
        else
            _updated.push_back({object, object->key(), nullptr});
    }
    // By table, in the order of insertion: neighbours in a table are written as neighbours.
    std::ranges::stable_sort(
        _inserted, {}, [](const Written& written) { return written.object->entity().family()->index; });
}

/// Keys follow the order of insertion, not that of writing, so that new objects keep their order.
void StoreWrite::assignKeys()
{
    _sequence = _state.connection->integer("SELECT sequence FROM store_state WHERE id = 1");
    _permanent.assign(static_cast<std::size_t>(_context.savedTemporaryKey - _context.lastTemporaryKey), 0);
    const auto place = [&](const StoreObject& object) {
        return static_cast<std::size_t>(_context.savedTemporaryKey - object.key() - 1);
    };
    for (const auto& written : _inserted)
        _permanent[place(*written.object)] = -1;
    for (auto& key : _permanent)
        if (key < 0)
            key = ++_sequence;
    for (auto& written : _inserted) {
        written.key = _permanent[place(*written.object)];
        if (!written.object->entity().sharedBy().empty() && adoptShared(written))
            _permanent[place(*written.object)] = written.key;
    }
}

/// Another writer's object of the same name takes the place of this one.
bool StoreWrite::adoptShared(Written& written)
{
    StoreObject& object = *written.object;
    const Entity& entity = object.entity();
    std::string sql = fmt::format("SELECT {} FROM {} WHERE \"_entity\" = {}", rowColumns(*entity.family()),
        entity.family()->table, _state.numberOf(entity));
    for (const Slot* slot : entity.sharedBy())
        sql += fmt::format(" AND {} IS ?", slot->column);
    sqlite::Use find(prepared(sql));
    int parameter = 0;
    for (const Slot* slot : entity.sharedBy())
        bindField(*find, ++parameter, ObjectAccess::field(object, *slot));
    if (!find->step())
        return false;
    written.row = readRow(_state, *entity.family(), *find);
    written.key = written.row->key();
    return true;
}

std::int64_t StoreWrite::permanentKey(std::int64_t key) const
{
    if (key >= 0)
        return key;
    const std::int64_t place = _context.savedTemporaryKey - key - 1;
    return place >= 0 && place < static_cast<std::int64_t>(_permanent.size())
        ? _permanent[static_cast<std::size_t>(place)]
        : 0;
}

void StoreWrite::run()
{
    writeDeletes();
    for (auto& written : _updated)
        writeUpdate(written);
    writeInserts();
    writeLinks();
    bumpOwners();
    for (auto& [entity, index] : _textIndexes)
        index.mergeSegments();
    writeState();
}

FieldValue StoreWrite::resolved(StoreObject& object, const Slot& slot) const
{
    FieldValue field = ObjectAccess::field(object, slot);
    if (slot.kind == SlotKind::toOne && field.integer < 0) {
        field.integer = permanentKey(field.integer);
        if (field.integer == 0)
            field.kind = FieldKind::absent;
    }
    return field;
}

std::span<const FieldValue> StoreWrite::collectFields(StoreObject& object)
{
    std::size_t count = 0;
    for (const Slot* slot : object.entity().fields())
        _fields[count++] = resolved(object, *slot);
    return {_fields.data(), count};
}

TextIndex& StoreWrite::textIndex(const Entity& entity)
{
    return _textIndexes.try_emplace(&entity, _state, entity).first->second;
}

void StoreWrite::noteOwner(std::int64_t key, const Slot& owner)
{
    if (key > 0)
        _owners.emplace(key, &owner);
}

/// Only what changed here is written: what others changed beside it stays.
void StoreWrite::writeUpdate(Written& written)
{
    StoreObject& object = *written.object;
    const Entity& entity = object.entity();
    Overlay& overlay = ObjectAccess::makeOverlay(object);
    std::string sql = fmt::format("UPDATE {} SET \"_version\" = ?", entity.family()->table);
    for (const Slot* slot : entity.fields())
        if (overlay.find(*slot))
            sql += fmt::format(", {} = ?", slot->column);
    sql += " WHERE \"_key\" = ?";
    const Row* before = ObjectAccess::row(object).get();
    const Slot* owner = entity.owner();
    const Slot* text = entity.textIndex();
    const bool isIndexed = text && (overlay.find(*text) || overlay.find(*owner));
    const std::int64_t ownerBefore = owner && before ? before->integer(owner->field) : 0;
    if (isIndexed && ownerBefore)
        textIndex(entity).remove(ownerBefore);
    {
        sqlite::Use update(prepared(sql));
        int parameter = 0;
        update->bind(++parameter, _version);
        for (const Slot* slot : entity.fields())
            if (overlay.find(*slot))
                bindField(*update, ++parameter, resolved(object, *slot));
        update->bind(++parameter, written.key);
        update->run();
    }
    if (_state.connection->changes() == 0) {
        written.isLost = true;
        return;
    }
    const auto fields = collectFields(object);
    if (isIndexed)
        textIndex(entity).add(fields[owner->field].integer, fields[text->field].bytes);
    if (owner) {
        noteOwner(ownerBefore, *owner);
        noteOwner(fields[owner->field].integer, *owner);
    }
    writeLarge(object, written.key);
    if (before && written.key == object.key())
        written.row = RowBuilder::build(entity, object.key(), _version, fields, _state.rows);
}

void StoreWrite::writeInserts()
{
    const Slot* owner = nullptr;
    const auto ownerKey = [&](const Written& written) { return resolved(*written.object, *owner).integer; };
    for (auto from = _inserted.begin(); from != _inserted.end();) {
        const Family* family = from->object->entity().family();
        const auto to = std::find_if(from, _inserted.end(),
            [&](const Written& written) { return written.object->entity().family() != family; });
        // A full-text table takes its rows in ascending order, or pays for each step back.
        owner = family->owner;
        if (from->object->entity().textIndex())
            std::ranges::stable_sort(from, to, {}, ownerKey);
        for (; from != to; ++from)
            if (!from->row)
                writeInsert(*from);
    }
}

const std::string& insertSQL(StoreState& store, const Entity& entity)
{
    std::string& sql = store.insertSQL[entity.index()];
    if (!sql.empty())
        return sql;
    std::string columns = "\"_key\", \"_version\", \"_entity\"", marks = "?, ?, ?";
    for (const Slot* slot : entity.fields()) {
        columns += ", " + slot->column;
        marks += ", ?";
    }
    return sql = fmt::format("INSERT INTO {}({}) VALUES({})", entity.family()->table, columns, marks);
}

void StoreWrite::writeInsert(Written& written)
{
    StoreObject& object = *written.object;
    const Entity& entity = object.entity();
    const auto fields = collectFields(object);
    {
        sqlite::Use insert(prepared(insertSQL(_state, entity)));
        insert->bind(1, written.key).bind(2, _version).bind(3, _state.numberOf(entity));
        for (std::size_t i = 0; i < fields.size(); ++i)
            bindField(*insert, static_cast<int>(i) + 4, fields[i]);
        insert->run();
    }
    if (const Slot* owner = entity.owner()) {
        const std::int64_t ownerKey = fields[owner->field].integer;
        noteOwner(ownerKey, *owner);
        if (const Slot* text = entity.textIndex())
            textIndex(entity).add(ownerKey, fields[text->field].bytes);
    }
    writeLarge(object, written.key);
    written.row = RowBuilder::build(entity, written.key, _version, fields, _state.rows);
}

void StoreWrite::writeLarge(StoreObject& object, std::int64_t key)
{
    if (!object.entity().hasLarge())
        return;
    const Overlay& overlay = ObjectAccess::makeOverlay(object);
    for (const Slot* slot : object.entity().slots()) {
        const platform::Value* value = slot->kind == SlotKind::largeAttribute ? overlay.find(*slot) : nullptr;
        if (!value)
            continue;
        const FieldValue field = fieldOf(*value);
        if (field.kind == FieldKind::absent) {
            sqlite::Use clear(prepared(fmt::format("DELETE FROM {} WHERE \"_key\" = ?", slot->table)));
            clear->bind(1, key).run();
            continue;
        }
        sqlite::Use write(prepared(fmt::format("INSERT OR REPLACE INTO {} VALUES(?, ?)", slot->table)));
        write->bind(1, key);
        bindField(*write, 2, field);
        write->run();
    }
}

void StoreWrite::writeLinks()
{
    _context.links.forEach(
        [&](const std::string& table, std::int64_t lead, std::int64_t other, Links::Change change) {
            const std::int64_t a = permanentKey(lead), b = permanentKey(other);
            if (a == 0 || b == 0)
                return;
            sqlite::Use write(prepared(change == Links::Change::made
                    ? fmt::format("INSERT OR IGNORE INTO {} VALUES(?, ?)", table)
                    : fmt::format("DELETE FROM {} WHERE \"lead\" = ? AND \"other\" = ?", table)));
            write->bind(1, a).bind(2, b).run();
        });
}

/// A changed part makes its root newer, so that others who ask for newer roots see it.
void StoreWrite::bumpOwners()
{
    if (_owners.empty())
        return;
    std::vector<std::int64_t> written;
    written.reserve(_inserted.size() + _updated.size() + _deleted.size());
    for (const auto* list : {&_inserted, &_updated})
        for (const auto& one : *list)
            written.push_back(one.key);
    for (const auto& object : _deleted)
        written.push_back(object->key());
    std::ranges::sort(written);
    for (const auto& [key, owner] : _owners) {
        if (std::ranges::binary_search(written, key))
            continue;
        for (const Family* family : owner->destination->families()) {
            sqlite::Use bump(
                prepared(fmt::format("UPDATE {} SET \"_version\" = ? WHERE \"_key\" = ?", family->table)));
            bump->bind(1, _version).bind(2, key).run();
            if (_state.connection->changes() > 0)
                break;
        }
        if (const ObjectRef object = _context.registered(&_store, key))
            if (const RowRef& row = ObjectAccess::row(*object))
                _bumped.push_back({object, key, RowBuilder::withVersion(*row, _version)});
    }
}

void StoreWrite::writeState()
{
    sqlite::Use write(prepared("UPDATE store_state SET commitNumber = ?, sequence = ? WHERE id = 1"));
    write->bind(1, _version).bind(2, _sequence).run();
}

} // namespace objectstore
