// How an object's relationships are read and changed, each change together with its inverse.
#include "objectstore/ContextState.h"

#include <fmt/format.h>

#include <algorithm>

namespace objectstore {

std::int64_t StoreObject::relatedKey(const Slot& slot)
{
    if (slot.kind != SlotKind::toOne)
        throw InvalidKey(fmt::format("{}.{} is no stored to-one", slot.entity->name(), slot.key));
    return field(slot).integer;
}

ObjectRef StoreObject::related(const Slot& slot)
{
    StoreContext* owner = context();
    if (!owner)
        return nullptr;
    Operation operation(*owner);
    if (slot.kind == SlotKind::toOne)
        return operation->resolve(*slot.destination, _store, relatedKey(slot));
    if (!slot.isRelationship())
        throw InvalidKey(fmt::format("{}.{} leads nowhere", slot.entity->name(), slot.key));
    return operation->firstFar(*this, slot);
}

ObjectList StoreObject::objects(const Slot& slot)
{
    if (!slot.isRelationship() || slot.kind == SlotKind::toOne)
        throw InvalidKey(fmt::format("{}.{} leads to no list", slot.entity->name(), slot.key));
    StoreContext* owner = context();
    if (!owner)
        return {};
    Operation operation(*owner);
    return operation->far(*this, slot);
}

namespace {

void require(const StoreObject& object, const Slot& slot, const StoreObject* other)
{
    if (!other)
        return;
    if (!other->context() || !object.context())
        throw InaccessibleObject(fmt::format("{}.{}: one end is gone", slot.entity->name(), slot.key));
    if (other->context() != object.context())
        throw InvalidKey(
            fmt::format("{}.{} cannot lead into another context", slot.entity->name(), slot.key));
    if (!other->entity().isKindOf(*slot.destination))
        throw InvalidKey(
            fmt::format("{}.{} cannot lead to {}", slot.entity->name(), slot.key, other->description()));
}

void noteRelationship(ContextState& context, StoreObject& object, const Slot& slot)
{
    ObjectAccess::makeOverlay(object).noteChange(slot);
    context.markChanged(object);
}

/// Unassigned new objects follow what they are related to into its store.
void shareStore(StoreObject& a, StoreObject& b)
{
    if (!a.store() && a.isInserted())
        ObjectAccess::store(a) = b.store();
    else if (!b.store() && b.isInserted())
        ObjectAccess::store(b) = a.store();
}

void leaveInverse(ContextState& context, StoreObject& part, const Slot& slot, StoreObject& target)
{
    forEachInverse(target.entity(), slot, part.entity(), [&](const Slot& inverse) {
        noteRelationship(context, target, inverse);
        target.didChange(inverse);
    });
}

void enterInverse(ContextState& context, StoreObject& part, const Slot& slot, StoreObject& target)
{
    forEachInverse(target.entity(), slot, part.entity(), [&](const Slot& inverse) {
        if (inverse.kind == SlotKind::toOneInverse)
            for (const auto& before : context.far(target, inverse))
                if (before.get() != &part)
                    before->setRelated(slot, nullptr);
        RelationshipCache& cache = ObjectAccess::makeCaches(target).of(inverse);
        if (inverse.holdsParts)
            cache.addedParts.push_back(ObjectRef(&part));
        else
            cache.addedKeys.push_back(part.key());
        noteRelationship(context, target, inverse);
        target.didChange(inverse);
    });
}

} // namespace

void StoreObject::setRelated(const Slot& slot, StoreObject* object)
{
    Operation operation(requireContext());
    require(*this, slot, object);
    if (slot.kind == SlotKind::toOneInverse) {
        setInverse(slot, object);
        return;
    }
    const std::int64_t before = relatedKey(slot), after = object ? object->key() : 0;
    if (before == after) {
        if (slot.didSet)
            slot.didSet(*this);
        return;
    }
    const ObjectRef left = slot.isInverted ? operation->resolve(*slot.destination, _store, before) : nullptr;
    if (object)
        shareStore(*this, *object);
    Overlay& overlay = ObjectAccess::makeOverlay(*this);
    if (!isInserted() && _row && _row->integer(slot.field) == after)
        overlay.remove(slot);
    else
        overlay.change(slot, after ? platform::Value(after) : platform::Value());
    if (left)
        leaveInverse(*operation, *this, slot, *left);
    if (object)
        enterInverse(*operation, *this, slot, *object);
    operation->markChanged(*this);
    finishSet(slot);
}

void StoreObject::setInverse(const Slot& slot, StoreObject* object)
{
    const ObjectRef before = related(slot);
    if (before.get() == object)
        return;
    if (before)
        before->setRelated(*slot.inverse, nullptr);
    if (object)
        object->setRelated(*slot.inverse, this);
    if (slot.didSet)
        slot.didSet(*this);
}

namespace {

void changeLink(
    ContextState& context, StoreObject& from, const Slot& slot, StoreObject& to, Links::Change change)
{
    shareStore(from, to);
    context.links.note(slot, from.key(), to.key(), change);
    ObjectAccess::makeOverlay(from).noteChange(slot);
    context.markChanged(from);
    if (slot.inverse)
        ObjectAccess::makeOverlay(to).noteChange(*slot.inverse);
    context.markChanged(to);
    if (slot.inverse)
        to.didChange(*slot.inverse);
}

} // namespace

void StoreObject::addObject(const Slot& slot, StoreObject& object)
{
    Operation operation(requireContext());
    require(*this, slot, &object);
    if (slot.kind == SlotKind::manyToMany) {
        changeLink(*operation, *this, slot, object, Links::Change::made);
        finishSet(slot);
    } else if (slot.isThroughInverse()) {
        object.setRelated(*slot.inverse, this);
        if (slot.didSet)
            slot.didSet(*this);
    } else {
        throw InvalidKey(fmt::format("{}.{} leads to no list", slot.entity->name(), slot.key));
    }
}

void StoreObject::removeObject(const Slot& slot, StoreObject& object)
{
    Operation operation(requireContext());
    require(*this, slot, &object);
    if (slot.kind == SlotKind::manyToMany) {
        changeLink(*operation, *this, slot, object, Links::Change::cut);
        finishSet(slot);
    } else if (slot.isThroughInverse()) {
        if (!object.isDeleted() && object.relatedKey(*slot.inverse) == _key)
            object.setRelated(*slot.inverse, nullptr);
        if (slot.didSet)
            slot.didSet(*this);
    } else {
        throw InvalidKey(fmt::format("{}.{} leads to no list", slot.entity->name(), slot.key));
    }
}

void StoreObject::setObjects(const Slot& slot, const ObjectList& wanted)
{
    Operation operation(requireContext());
    ObjectList before = objects(slot), after = wanted;
    const auto byAddress = [](const ObjectRef& a, const ObjectRef& b) { return a.get() < b.get(); };
    std::ranges::sort(before, byAddress);
    std::ranges::sort(after, byAddress);
    for (const auto& object : before)
        if (!std::ranges::binary_search(after, object, byAddress))
            removeObject(slot, *object);
    for (const auto& object : wanted)
        if (!std::ranges::binary_search(before, object, byAddress))
            addObject(slot, *object);
}

} // namespace objectstore
