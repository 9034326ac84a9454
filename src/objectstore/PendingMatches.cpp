// How unsaved objects are told apart from what the store can answer for.
#include "objectstore/PendingMatches.h"

#include "objectstore/PredicateMatch.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/RowReader.h"

#include <algorithm>
#include <variant>

namespace objectstore {

PendingMatches::PendingMatches(ContextState& context, PersistentStore& store, const StoreFetch& fetch)
    : _context(context), _store(store), _fetch(fetch)
{
    if (context.changed.empty() && context.touched.empty() && context.touchedIds.empty())
        return;
    _unassigned = &context.requireStore(nullptr);
    if (considerPoint())
        return;
    std::vector<std::int64_t> keys;
    for (const auto& object : context.changed)
        if (object->hasChanges())
            consider(*object, keys);
    for (const auto& object : context.touched)
        if (!object->hasChanges())
            consider(*object, keys);
    considerTouchedIds(keys);
    if (!keys.empty())
        _keys = jsonOf(keys);
    if (const Slot* owner = fetch.entity->owner()) {
        std::vector<std::int64_t> owners;
        for (const auto& object : context.changed)
            if (object->isDeleted() && object->key() > 0 && object->store() == &store
                && object->entity().isKindOf(*owner->destination))
                owners.push_back(object->key());
        if (!owners.empty())
            _deletedOwners = jsonOf(owners);
    }
    _needsMemory = fetch.predicate && changesBehind();
}

namespace {

/// Below this, asking each is as fast.
constexpr std::size_t kFewChanges = 64;

/// The slot that a predicate compares with one whole text, and nothing else; or null.
const Slot* pointSlot(const StoreFetch& fetch, std::string_view& text)
{
    if (!fetch.predicate || fetch.entity->owner())
        return nullptr;
    const auto* test = std::get_if<StorePredicate::Comparison>(&fetch.predicate->form());
    if (!test || test->comparator != Comparator::equal || test->option != TextOption::exact || test->mask
        || !test->operand.variable.empty() || !test->operand.value.isString())
        return nullptr;
    const Slot* slot = fetch.entity->slot(test->keyPath);
    if (!slot || slot->kind != SlotKind::attribute || !slot->hasColumn() || slot->lazy
        || (slot->flags & (kIndexed | kUnique)) == 0)
        return nullptr;
    text = test->operand.value.asText();
    return slot;
}

} // namespace

/// One text of one indexed key: the few who have it are looked up, and nobody else is asked.
bool PendingMatches::considerPoint()
{
    std::string_view text;
    const Slot* slot = _context.changed.size() < kFewChanges ? nullptr : pointSlot(_fetch, text);
    if (!slot)
        return false;
    auto& indexes = _context.pendingIndexes;
    auto index = std::ranges::find(indexes, slot, [](const PendingIndex& one) { return &one.slot(); });
    if (index == indexes.end())
        index = indexes.emplace(indexes.end(), *slot);
    index->update(_context.changed);
    std::vector<std::int64_t> ignored;
    for (StoreObject* object : index->find(text))
        if (object->hasChanges())
            consider(*object, ignored);
    return _isPointQuery = true;
}

bool PendingMatches::isWanted(const StoreObject& object) const
{
    return _fetch.includesSubentities ? object.entity().isKindOf(*_fetch.entity)
                                      : &object.entity() == _fetch.entity;
}

void PendingMatches::consider(StoreObject& object, std::vector<std::int64_t>& keys)
{
    if (!isWanted(object) || ObjectAccess::is(object, ObjectAccess::kGone))
        return;
    const PersistentStore* store = object.store() ? object.store() : _unassigned;
    if (store != &_store)
        return;
    if (object.key() > 0)
        keys.push_back(object.key());
    if (!object.isDeleted())
        _candidates.push_back(ObjectRef(&object));
}

void PendingMatches::considerTouchedIds(std::vector<std::int64_t>& keys)
{
    for (const StoreId& id : _context.touchedIds) {
        if (id.store != _store.number()
            || !(id.entity->isKindOf(*_fetch.entity) || _fetch.entity->isKindOf(*id.entity)))
            continue;
        const ObjectRef object = _context.resolve(*id.entity, &_store, id.key);
        // Others may have deleted it since it was touched.
        if (object && object->isFault() && !findRow(_store.state(), *object->entity().family(), id.key))
            continue;
        if (object && !object->hasChanges() && !ObjectAccess::is(*object, ObjectAccess::kTouched))
            consider(*object, keys);
    }
}

bool PendingMatches::changesBehind() const
{
    const auto behind = entitiesBehind(*_fetch.predicate, *_fetch.entity);
    if (behind.empty())
        return false;
    for (const auto& object : _context.changed) {
        if (!object->hasChanges())
            continue;
        for (const Entity* entity : behind)
            if (object->entity().isKindOf(*entity))
                return true;
    }
    return false;
}

ObjectList PendingMatches::matches() const
{
    ObjectList found;
    for (const auto& object : _candidates)
        if (!_fetch.predicate || objectstore::matches(*_fetch.predicate, *object))
            found.push_back(object);
    return found;
}

} // namespace objectstore
