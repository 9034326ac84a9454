// How units are merged.
#include "objectstore/UnitMerge.h"

#include "objectstore/RowReader.h"

#include <fmt/format.h>

#include <algorithm>

namespace objectstore {

namespace {

/// Something that tells values apart, whatever their kind.
std::string textOf(const FieldValue& value)
{
    switch (value.kind) {
    case FieldKind::integer:
        return fmt::format("i{}", value.integer);
    case FieldKind::real:
        return fmt::format("r{}", value.real);
    case FieldKind::text:
        return fmt::format("t{}", value.bytes);
    case FieldKind::bytes:
        return fmt::format("b{}", value.bytes);
    default:
        return {};
    }
}

bool isMerged(const Entity& entity) { return entity.owner() && (entity.unit() || entity.isSingle()); }

FieldValue fieldOrAbsent(const Row& row, const Slot* slot)
{
    return slot ? row.value(slot->field) : FieldValue();
}

} // namespace

void UnitMerge::plan()
{
    collect();
    for (auto& [key, unit] : _units) {
        readTheirs(unit);
        if (!unit.isConflicted)
            continue;
        _owners.insert(unit.owner);
        choosePrimary(unit);
        decide(unit);
        forgetParts(unit.owner);
    }
}

void UnitMerge::collect()
{
    for (const auto& object : _write._deleted)
        if (isMerged(object->entity()))
            if (const RowRef row = _write.rowOf(*object))
                if (Entry* entry = entryOf(*object, row)) {
                    entry->deleted = object.get();
                    entry->base = row;
                }
    for (auto& written : _write._updated)
        if (isMerged(written.object->entity()))
            if (const RowRef row = ObjectAccess::row(*written.object))
                if (Entry* entry = entryOf(*written.object, row)) {
                    entry->updated = &written;
                    entry->base = row;
                }
    for (auto& written : _write._inserted)
        if (isMerged(written.object->entity()))
            if (Entry* entry = entryOfInserted(*written.object))
                entry->inserted = &written;
}

UnitMerge::Unit& UnitMerge::unitOf(const Entity& entity, std::int64_t owner, const FieldValue& discriminator)
{
    Unit& unit = _units[{entity.family()->index, owner, textOf(discriminator)}];
    unit.entity = &entity;
    unit.owner = owner;
    unit.discriminator = discriminator;
    return unit;
}

UnitMerge::Entry* UnitMerge::entryOf(StoreObject& object, const RowRef& row)
{
    const Entity& entity = object.entity();
    const UnitSlots& slots = entity.unit();
    const std::int64_t owner = row->integer(entity.owner()->field);
    if (owner <= 0 || (slots && row->isAbsent(slots.identifier->field)))
        return nullptr;
    Unit& unit = unitOf(entity, owner, fieldOrAbsent(*row, slots.discriminator));
    return &unit.entries[std::string(fieldOrAbsent(*row, slots.identifier).bytes)];
}

UnitMerge::Entry* UnitMerge::entryOfInserted(StoreObject& object)
{
    const Entity& entity = object.entity();
    const UnitSlots& slots = entity.unit();
    // A new owner's parts are known to nobody else.
    const std::int64_t owner = ObjectAccess::field(object, *entity.owner()).integer;
    if (owner <= 0 || (slots && ObjectAccess::field(object, *slots.identifier).kind == FieldKind::absent))
        return nullptr;
    const FieldValue discriminator =
        slots.discriminator ? _write.resolved(object, *slots.discriminator) : FieldValue();
    Unit& unit = unitOf(entity, owner, discriminator);
    return &unit.entries[slots ? std::string(object.text(*slots.identifier)) : std::string()];
}

std::string UnitMerge::selection(const Unit& unit, std::string_view columns) const
{
    const Entity& entity = *unit.entity;
    std::string sql = fmt::format(
        "SELECT {} FROM {} WHERE {} = ?", columns, entity.family()->table, entity.owner()->column);
    if (const Slot* discriminator = entity.unit().discriminator)
        sql += fmt::format(" AND {} IS ?", discriminator->column);
    if (const Slot* ordering = entity.unit().ordering)
        sql += fmt::format(" ORDER BY {}, \"_key\"", ordering->column);
    return sql;
}

void UnitMerge::bindSelection(sqlite::Statement& statement, const Unit& unit, int first) const
{
    statement.bind(first, unit.owner);
    if (unit.entity->unit().discriminator)
        bindField(statement, first + 1, unit.discriminator);
}

void UnitMerge::readTheirs(Unit& unit)
{
    const Family& family = *unit.entity->family();
    const UnitSlots& slots = unit.entity->unit();
    sqlite::Use find(_write.prepared(selection(unit, rowColumns(family))));
    bindSelection(*find, unit, 1);
    while (find->step()) {
        RowRef row = readRow(_write._state, family, *find);
        if (!row)
            continue;
        unit.isConflicted = unit.isConflicted || row->version() > _context.mergeBase;
        const std::string identifier(fieldOrAbsent(*row, slots.identifier).bytes);
        unit.theirOrder.push_back(identifier);
        if (slots.primary && row->integer(slots.primary->field) && unit.theirPrimary.empty())
            unit.theirPrimary = identifier;
        if (const auto known = unit.entries.find(identifier); known != unit.entries.end())
            known->second.theirs = std::move(row);
    }
    for (const auto& [identifier, entry] : unit.entries)
        unit.isConflicted = unit.isConflicted || (entry.base && !entry.theirs);
}

/// The primary that was chosen here; empty when here nobody chose.
void UnitMerge::choosePrimary(Unit& unit)
{
    const Slot* primary = unit.entity->unit().primary;
    if (!primary)
        return;
    std::string before;
    for (const auto& [identifier, entry] : unit.entries) {
        if (entry.base && entry.base->integer(primary->field))
            before = identifier;
        const Written* mine = entry.inserted ? entry.inserted : entry.updated;
        if (mine && ObjectAccess::field(*mine->object, *primary).integer)
            unit.myPrimary = identifier;
    }
    if (unit.myPrimary == before)
        unit.myPrimary.clear();
}

void UnitMerge::decide(Unit& unit)
{
    for (auto& [identifier, entry] : unit.entries) {
        const bool isMine = !(entry.deleted && entry.inserted) || !yieldsRewritten(entry);
        const bool isTakenOut = entry.deleted && unit.entity->unit();
        if (isMine && entry.theirs && (entry.inserted || isTakenOut))
            // Theirs may be a row that nobody here knows: it goes now, so that what is derived of the entries
            // is not derived of it too.
            _write.deleteEntry(*unit.entity, *entry.theirs);
        else if (entry.updated && entry.theirs && entry.theirs->key() != entry.updated->key)
            becomeTheirs(*entry.updated->object, entry.theirs);
    }
}

bool UnitMerge::yieldsRewritten(Entry& entry)
{
    const bool isRemoved = !entry.theirs;
    if (!isRemoved && !isUnchanged(*entry.inserted->object, *entry.base))
        return false;
    _context.abandon(*entry.inserted->object);
    if (!isRemoved)
        _context.abandon(*entry.deleted);
    return true;
}

/// Another writer gave the entry a new row: the object is that row from now on.
void UnitMerge::becomeTheirs(StoreObject& object, const RowRef& theirs)
{
    _context.unregister(object);
    ObjectAccess::key(object) = theirs->key();
    _context.tableOf(object).put(object);
    _context.exchangeRow(object, theirs);
}

/// The parts of the owner are read again when somebody asks for them.
void UnitMerge::forgetParts(std::int64_t owner)
{
    const ObjectRef object = _context.registered(&_write.store(), owner);
    if (!object)
        return;
    if (auto& caches = ObjectAccess::caches(*object))
        caches->unload();
    object->didTurnIntoFault();
}

/// Whether an entry says what it said before; its place in the unit is not what it says.
bool UnitMerge::isUnchanged(StoreObject& object, const Row& base) const
{
    const UnitSlots& slots = object.entity().unit();
    if (&object.entity() != &base.entity())
        return false;
    for (const Slot* slot : object.entity().fields()) {
        if (slot == object.entity().owner() || slot == slots.ordering || slot == slots.primary)
            continue;
        if (textOf(_write.resolved(object, *slot)) != textOf(base.value(slot->field)))
            return false;
    }
    return true;
}

void UnitMerge::finishWriting()
{
    for (const auto& [key, unit] : _units)
        if (unit.isConflicted && unit.entity->unit().ordering)
            arrange(unit);
}

void UnitMerge::arrange(const Unit& unit)
{
    struct Place {
        std::int64_t key;
        std::string identifier;
        std::int64_t ordering;
        bool isPrimary;
        std::size_t rank;
    };
    const UnitSlots& slots = unit.entity->unit();
    std::vector<Place> places;
    {
        const std::string primary = slots.primary ? slots.primary->column : "0";
        sqlite::Use find(_write.prepared(selection(unit,
            fmt::format("\"_key\", {}, {}, {}", slots.identifier->column, slots.ordering->column, primary))));
        bindSelection(*find, unit, 1);
        while (find->step()) {
            std::string identifier(find->text(1));
            const auto theirs = std::ranges::find(unit.theirOrder, identifier);
            const auto rank = static_cast<std::size_t>(theirs - unit.theirOrder.begin());
            places.push_back(
                {find->integer(0), std::move(identifier), find->integer(2), find->integer(3) != 0, rank});
        }
    }
    std::ranges::stable_sort(places, {}, &Place::rank);
    const auto isHere = [&](const std::string& identifier) {
        return !identifier.empty()
            && std::ranges::find(places, identifier, &Place::identifier) != places.end();
    };
    std::string primary = isHere(unit.myPrimary) ? unit.myPrimary
        : isHere(unit.theirPrimary)              ? unit.theirPrimary
                                                 : "";
    if (primary.empty() && !places.empty())
        primary = places.front().identifier;
    std::string sql = fmt::format(
        "UPDATE {} SET \"_version\" = ?, {} = ?", unit.entity->family()->table, slots.ordering->column);
    if (slots.primary)
        sql += fmt::format(", {} = ?", slots.primary->column);
    sql += " WHERE \"_key\" = ?";
    for (std::size_t i = 0; i < places.size(); ++i) {
        const bool isPrimary = places[i].identifier == primary;
        const auto ordering = static_cast<std::int64_t>(i);
        if (places[i].ordering == ordering && (!slots.primary || places[i].isPrimary == isPrimary))
            continue;
        sqlite::Use update(_write.prepared(sql));
        update->bind(1, _write._version).bind(2, ordering);
        int parameter = 2;
        if (slots.primary)
            update->bind(++parameter, static_cast<std::int64_t>(isPrimary));
        update->bind(++parameter, places[i].key).run();
    }
}

} // namespace objectstore
