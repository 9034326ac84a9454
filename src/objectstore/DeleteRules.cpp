// What a delete does to those that the deleted object's relationships lead to.
#include "objectstore/ContextState.h"
#include "objectstore/Prefetch.h"

#include <algorithm>
#include <map>

namespace objectstore {

namespace {

/// Whether deleting a part of that entity concerns nobody else: then its rows go by their owner's key, and
/// those that are not here need not be read.
bool isSimplePart(const Entity& entity)
{
    for (const Entity* concrete : entity.concreteEntities())
        for (const Slot* slot : concrete->slots())
            if (slot->isRelationship() && slot->kind != SlotKind::toOne)
                return false;
    return true;
}

void deletePartsHere(ContextState& context, StoreObject& object, const Slot& slot)
{
    RelationshipCaches* caches = ObjectAccess::caches(object).get();
    RelationshipCache* cache = caches ? caches->find(slot) : nullptr;
    if (!cache)
        return;
    ObjectList parts = cache->parts;
    parts.insert(parts.end(), cache->addedParts.begin(), cache->addedParts.end());
    for (const auto& part : parts)
        if (!part->isDeleted() && ObjectAccess::keyIfKnown(*part, *slot.inverse) == object.key())
            context.markDeleted(*part);
}

void applyRule(ContextState& context, const ObjectList& deleted, const Slot& slot)
{
    if (slot.holdsParts && isSimplePart(*slot.destination)) {
        for (const auto& object : deleted)
            deletePartsHere(context, *object, slot);
        return;
    }
    prefetchSlot(context, deleted, slot);
    for (const auto& object : deleted)
        for (const auto& far : context.far(*object, slot)) {
            if (slot.deleteRule == DeleteRule::cascade)
                context.markDeleted(*far);
            else
                far->setRelated(*slot.inverse, nullptr);
        }
}

/// The links of deleted objects go with them; whoever stood at the other end is not what it was.
void cutLinks(ContextState& context, const ObjectList& deleted, const Slot& slot)
{
    for (const auto& object : deleted) {
        RelationshipCache& cache = ObjectAccess::makeCaches(*object).of(slot);
        if (!cache.isLoaded || cache.epoch != context.linkEpoch)
            context.load(*object, slot, cache);
        for (const std::int64_t key : cache.keys)
            context.touchedIds.insert({object->store()->number(), key, slot.destination});
        if (const Links::Ends* ends = context.links.changes(slot, object->key()))
            for (const auto& [key, change] : *ends)
                if (const ObjectRef far = context.registered(object->store(), key); far && slot.inverse)
                    far->didChange(*slot.inverse);
    }
}

/// What the rules do to others. Doing it twice does no harm.
void applyRules(ContextState& context, const ObjectList& batch)
{
    std::map<std::size_t, ObjectList> byEntity;
    for (const auto& object : batch)
        byEntity[object->entity().index()].push_back(object);
    for (const auto& [index, deleted] : byEntity)
        for (const Slot* slot : deleted.front()->entity().slots()) {
            if (slot->kind == SlotKind::manyToMany)
                cutLinks(context, deleted, *slot);
            else if (slot->isThroughInverse() && slot->deleteRule != DeleteRule::none)
                applyRule(context, deleted, *slot);
        }
}

} // namespace

void ContextState::markDeleted(StoreObject& object)
{
    if (ObjectAccess::is(object, ObjectAccess::kDeleted | ObjectAccess::kGone))
        return;
    // Its owner is asked for while the object can still be read.
    const Slot* owner = object.entity().owner();
    const ObjectRef root =
        owner ? resolve(*owner->destination, object.store(), object.relatedKey(*owner)) : nullptr;
    setPending(object, ObjectAccess::kDeleted);
    toPropagate.push_back(ObjectRef(&object));
    if (!root || root->isDeleted())
        return;
    touch(*root);
    forEachInverse(root->entity(), *owner, object.entity(), [&](const Slot& inverse) {
        ObjectAccess::makeOverlay(*root).noteChange(inverse);
        markChanged(*root);
        root->didChange(inverse);
    });
}

void ContextState::propagateDeletes()
{
    while (!toPropagate.empty()) {
        const ObjectList batch = std::exchange(toPropagate, {});
        try {
            applyRules(*this, batch);
        } catch (...) {
            // The store could not be read: the next save asks again.
            toPropagate.insert(toPropagate.begin(), batch.begin(), batch.end());
            throw;
        }
        ++linkEpoch;
        for (const auto& object : batch) {
            links.forget(object->key());
            if (object->isInserted())
                abandon(*object);
        }
    }
}

} // namespace objectstore
