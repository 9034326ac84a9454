// Where a relationship leads: what the store says, less and plus what is not saved.
#include "objectstore/ContextState.h"
#include "objectstore/RowReader.h"

#include <fmt/format.h>

#include <algorithm>

namespace objectstore {

namespace {

/// Whether an object found before still leads to `key` by its to-one.
bool leadsTo(StoreObject& object, const Slot& inverse, std::int64_t key)
{
    if (object.isDeleted())
        return false;
    try {
        return object.relatedKey(inverse) == key;
    } catch (const InaccessibleObject&) {
        return false;
    }
}

bool isBefore(const ObjectRef& a, const ObjectRef& b)
{
    const std::int64_t left = a->key(), right = b->key();
    if ((left < 0) != (right < 0))
        return right < 0;
    return left < 0 ? left > right : left < right;
}

/// By key, new objects last in the order of their insertion; each once.
void order(ObjectList& objects)
{
    if (!std::ranges::is_sorted(objects, isBefore))
        std::ranges::sort(objects, isBefore);
    objects.erase(std::unique(objects.begin(), objects.end()), objects.end());
}

void loadParts(ContextState& context, StoreObject& object, const Slot& slot, RelationshipCache& cache)
{
    Reading reading(context, *object.store());
    for (const Family* family : slot.destination->families()) {
        sqlite::Use find(reading->connection->prepared(fmt::format(
            "SELECT {} FROM {} WHERE {} = ?", rowColumns(*family), family->table, slot.inverse->column)));
        find->bind(1, object.key());
        while (find->step())
            if (RowRef row = readRow(*reading, *family, *find))
                if (row->entity().isKindOf(*slot.destination))
                    cache.parts.push_back(context.objectForRow(*object.store(), std::move(row)));
    }
}

void loadKeys(ContextState& context, StoreObject& object, const Slot& slot, RelationshipCache& cache)
{
    Reading reading(context, *object.store());
    const auto read = [&](const std::string& sql) {
        sqlite::Use find(reading->connection->prepared(sql));
        find->bind(1, object.key());
        while (find->step())
            cache.keys.push_back(find->integer(0));
    };
    if (slot.kind == SlotKind::manyToMany) {
        read(fmt::format("SELECT {} FROM {} WHERE {} = ?", slot.farColumn, slot.table, slot.column));
        return;
    }
    for (const Family* family : slot.destination->families())
        read(fmt::format("SELECT \"_key\" FROM {} WHERE {} = ?", family->table, slot.inverse->column));
}

// Reading on the way may catch up with others and unload a cache, so no iterator is held across it.

ObjectList farParts(StoreObject& object, const Slot& slot, const RelationshipCache& cache)
{
    ObjectList found;
    found.reserve(cache.parts.size() + cache.addedParts.size());
    for (const ObjectList* list : {&cache.parts, &cache.addedParts})
        for (std::size_t i = 0; i < list->size(); ++i) {
            ObjectRef part = (*list)[i];
            if (leadsTo(*part, *slot.inverse, object.key()))
                found.push_back(std::move(part));
        }
    return found;
}

/// The objects of those keys that are not here, by one query a table.
void readMissing(ContextState& context, PersistentStore& store, const Entity& destination,
    const std::vector<std::int64_t>& keys, ObjectList& found)
{
    Reading reading(context, store);
    const std::string json = jsonOf(keys);
    for (const Family* family : destination.families()) {
        sqlite::Use find(reading->connection->prepared(
            fmt::format("SELECT {} FROM {} WHERE \"_key\" IN (SELECT value FROM json_each(?))",
                rowColumns(*family), family->table)));
        find->bindText(1, json);
        while (find->step())
            if (RowRef row = readRow(*reading, *family, *find))
                found.push_back(context.objectForRow(store, std::move(row)));
    }
}

/// The objects of those keys; a key without a row is left out where that must be looked up.
ObjectList resolveAll(
    ContextState& context, StoreObject& object, const Slot& slot, const std::vector<std::int64_t>& keys)
{
    const bool needsRows = slot.destination->concreteEntities().size() > 1;
    ObjectList found;
    found.reserve(keys.size());
    std::vector<std::int64_t> missing;
    for (const std::int64_t key : keys) {
        ObjectRef known = needsRows ? context.registered(object.store(), key)
                                    : context.resolve(*slot.destination, object.store(), key);
        if (known)
            found.push_back(std::move(known));
        else if (needsRows && key > 0)
            missing.push_back(key);
    }
    if (missing.empty())
        return found;
    PersistentStore& store = context.requireStore(object.store());
    readForObject(store, [&] { readMissing(context, store, *slot.destination, missing, found); });
    return found;
}

/// By keys: who is not here cannot have changed, so the store's word counts.
ObjectList farByInverse(
    ContextState& context, StoreObject& object, const Slot& slot, const RelationshipCache& cache)
{
    std::vector<std::int64_t> keys = cache.keys;
    keys.insert(keys.end(), cache.addedKeys.begin(), cache.addedKeys.end());
    ObjectList found = resolveAll(context, object, slot, keys);
    std::erase_if(found, [&](const ObjectRef& far) {
        return !far->entity().isKindOf(*slot.destination)
            || (far->hasChanges() && !leadsTo(*far, *slot.inverse, object.key()));
    });
    return found;
}

ObjectList farByLinks(
    ContextState& context, StoreObject& object, const Slot& slot, const RelationshipCache& cache)
{
    std::vector<std::int64_t> keys;
    const Links::Ends* changes = context.links.changes(slot, object.key());
    for (const std::int64_t key : cache.keys)
        if (!changes || !changes->contains(key))
            keys.push_back(key);
    if (changes)
        for (const auto& [key, change] : *changes)
            if (change == Links::Change::made)
                keys.push_back(key);
    ObjectList found = resolveAll(context, object, slot, keys);
    std::erase_if(found, [](const ObjectRef& far) { return far->isDeleted(); });
    return found;
}

} // namespace

void ContextState::load(StoreObject& object, const Slot& slot, RelationshipCache& cache)
{
    cache.parts.clear();
    cache.keys.clear();
    cache.isLoaded = true;
    try {
        if (object.key() > 0)
            readForObject(requireStore(object.store()), [&] {
                slot.holdsParts ? loadParts(*this, object, slot, cache)
                                : loadKeys(*this, object, slot, cache);
            });
    } catch (...) {
        cache.isLoaded = false;
        throw;
    }
    cache.isLoaded = true;
    cache.epoch = linkEpoch;
}

/// A part that stands alone, as most do, is answered without a list.
ObjectRef ContextState::firstFar(StoreObject& object, const Slot& slot)
{
    if (slot.holdsParts) {
        const RelationshipCache& cache = ObjectAccess::makeCaches(object).of(slot);
        if (cache.isLoaded && cache.parts.size() + cache.addedParts.size() == 1) {
            ObjectRef part = cache.parts.empty() ? cache.addedParts.front() : cache.parts.front();
            return leadsTo(*part, *slot.inverse, object.key()) ? std::move(part) : nullptr;
        }
    }
    const ObjectList found = far(object, slot);
    return found.empty() ? nullptr : found.front();
}

ObjectList ContextState::far(StoreObject& object, const Slot& slot)
{
    RelationshipCache& cache = ObjectAccess::makeCaches(object).of(slot);
    if (!cache.isLoaded || (!slot.holdsParts && cache.epoch != linkEpoch))
        load(object, slot, cache);
    if (slot.holdsParts && cache.parts.empty() && cache.addedParts.empty())
        return {};
    ObjectList found = slot.holdsParts ? farParts(object, slot, cache)
        : slot.isThroughInverse()      ? farByInverse(*this, object, slot, cache)
                                       : farByLinks(*this, object, slot, cache);
    order(found);
    return found;
}

} // namespace objectstore
