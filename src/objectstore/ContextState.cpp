// Which objects a context has, and how they come and go.
#include "objectstore/ContextState.h"

#include "objectstore/CatchUp.h"
#include "objectstore/RowReader.h"
#include "platform/notify/NotificationCenter.h"

#include <fmt/format.h>

#include <algorithm>

namespace objectstore {

void ContextAnchor::push(StoreObject& object) noexcept
{
    StoreObject* first = gone.load(std::memory_order_relaxed);
    do
        ObjectAccess::nextGone(object) = first;
    while (!gone.compare_exchange_weak(first, &object));
}

ContextState::ContextState(StoreContext& owner, platform::Ref<StoreCoordinator> chosen)
    : context(owner), coordinator(std::move(chosen))
{
    anchor->context = &owner;
}

ContextState::~ContextState() { anchor->release(); }

SeenStore& ContextState::seen(PersistentStore& store)
{
    for (const auto& known : stores)
        if (known->store == &store)
            return *known;
    stores.push_back(std::make_unique<SeenStore>());
    stores.back()->store = &store;
    return *stores.back();
}

ObjectTable& ContextState::tableOf(StoreObject& object)
{
    return object.key() < 0 ? temporary : seen(*object.store()).objects;
}

void ContextState::drain()
{
    if (anchor->gone.load(std::memory_order_relaxed))
        anchor->drain([this](StoreObject& object) { unregister(object); });
}

ObjectRef ContextState::registered(PersistentStore* store, std::int64_t key)
{
    if (key == 0 || (key > 0 && !store))
        return nullptr;
    StoreObject* object = key < 0 ? temporary.find(key) : seen(*store).objects.find(key);
    if (!object || !object->retainIfOwned())
        return nullptr;
    return ObjectRef::adopt(object);
}

ObjectRef ContextState::makeObject(const Entity& entity, PersistentStore* store, std::int64_t key, RowRef row)
{
    ObjectRef object = entity.makeObject();
    ObjectAccess::key(*object) = key;
    ObjectAccess::store(*object) = store;
    ObjectAccess::row(*object) = std::move(row);
    ObjectAccess::anchor(*object) = anchor;
    anchor->retain();
    tableOf(*object).put(*object);
    if (!entity.sharedBy().empty() && key > 0)
        sharedObjects.push_back(object);
    return object;
}

ObjectRef ContextState::objectForRow(PersistentStore& store, RowRef row)
{
    ObjectRef object = registered(&store, row->key());
    if (!object) {
        const Entity& entity = row->entity();
        const std::int64_t key = row->key();
        return makeObject(entity, &store, key, std::move(row));
    }
    exchangeRow(*object, std::move(row));
    return object;
}

ObjectRef ContextState::resolve(const Entity& destination, PersistentStore* store, std::int64_t key)
{
    if (ObjectRef known = registered(store, key); known || key <= 0 || !store)
        return known;
    if (destination.concreteEntities().size() == 1)
        return makeObject(*destination.concreteEntities().front(), store, key, nullptr);
    requireStore(store);
    return readForObject(*store, [&]() -> ObjectRef {
        Reading reading(*this, *store);
        for (const Family* family : destination.families())
            if (RowRef row = findRow(*reading, *family, key))
                return objectForRow(*store, std::move(row));
        return nullptr;
    });
}

void ContextState::exchangeRow(StoreObject& object, RowRef row)
{
    RowRef& held = ObjectAccess::row(object);
    // What is deleted here keeps the row that it was deleted as: the base of a merge.
    if (held.get() == row.get() || (held && ObjectAccess::is(object, ObjectAccess::kDeleted)))
        return;
    const bool isFirst = !held;
    held = std::move(row);
    if (isFirst)
        return;
    if (auto& overlay = ObjectAccess::overlay(object))
        overlay->removeKept(object.entity());
    object.didTurnIntoFault();
}

void ContextState::fill(StoreObject& object)
{
    PersistentStore& store = requireStore(object.store());
    RowRef row = readForObject(store, [&]() -> RowRef {
        Reading reading(*this, store);
        // Catching up may have found that it is gone, or filled it already.
        return object.isFault() && !ObjectAccess::is(object, ObjectAccess::kGone)
            ? findRow(*reading, *object.entity().family(), object.key())
            : nullptr;
    });
    if (row)
        exchangeRow(object, std::move(row));
    if (object.isFault())
        throw InaccessibleObject(fmt::format("{}: its row is gone", object.description()));
}

void ContextState::unregister(StoreObject& object)
{
    if (object.key() < 0 || object.store())
        tableOf(object).remove(object);
}

void ContextState::abandon(StoreObject& object)
{
    clearPending(object);
    unregister(object);
    links.forget(object.key());
    ObjectAccess::overlay(object).reset();
    ObjectAccess::add(object, ObjectAccess::kGone);
    object.didTurnIntoFault();
}

void ContextState::noteLoss(const platform::Error& error)
{
    hasLostStore = hasLostStore || isFault(error, StoreFault::replaced);
}

PersistentStore& ContextState::requireStore(PersistentStore* store)
{
    if (!store && coordinator)
        store = coordinator->firstStore();
    if (!store || !store->isOpen())
        throw StoreFailure(storeError(StoreFault::noStore, "the context has no open store"));
    return *store;
}

void ContextState::list(StoreObject& object)
{
    if (ObjectAccess::is(object, ObjectAccess::kListed))
        return;
    ObjectAccess::add(object, ObjectAccess::kListed);
    changed.push_back(ObjectRef(&object));
}

void ContextState::setPending(StoreObject& object, std::uint32_t bit)
{
    if (ObjectAccess::is(object, bit))
        return;
    ObjectAccess::add(object, bit);
    if (bit == ObjectAccess::kInserted)
        ++insertedCount;
    else if (bit == ObjectAccess::kUpdated)
        ++updatedCount;
    else
        ++deletedCount;
    list(object);
}

void ContextState::clearPending(StoreObject& object)
{
    if (ObjectAccess::is(object, ObjectAccess::kInserted))
        --insertedCount;
    if (ObjectAccess::is(object, ObjectAccess::kUpdated))
        --updatedCount;
    if (ObjectAccess::is(object, ObjectAccess::kDeleted))
        --deletedCount;
    ObjectAccess::drop(object, ObjectAccess::kPending);
}

void ContextState::markChanged(StoreObject& object)
{
    if (ObjectAccess::is(object, ObjectAccess::kPending))
        return;
    setPending(object, ObjectAccess::kUpdated);
    touchOwner(object);
}

void ContextState::touch(StoreObject& object)
{
    if (ObjectAccess::is(object, ObjectAccess::kTouched | ObjectAccess::kInserted))
        return;
    ObjectAccess::add(object, ObjectAccess::kTouched);
    touched.push_back(ObjectRef(&object));
}

void ContextState::touchOwner(StoreObject& object)
{
    const Slot* owner = object.entity().owner();
    if (!owner)
        return;
    if (const ObjectRef found = resolve(*owner->destination, object.store(), object.relatedKey(*owner)))
        touch(*found);
}

void ContextState::noteText(StoreObject& object, const Slot& slot)
{
    for (auto& index : pendingIndexes)
        if (&index.slot() == &slot)
            if (const FieldValue field = ObjectAccess::fieldIfKnown(object, slot);
                field.kind == FieldKind::text)
                index.add(object, field.bytes);
}

void ContextState::forgetChanges()
{
    pendingIndexes.clear();
    for (const auto& object : changed) {
        clearPending(*object);
        ObjectAccess::drop(*object, ObjectAccess::kListed);
    }
    for (const auto& object : touched)
        ObjectAccess::drop(*object, ObjectAccess::kTouched);
    const ObjectList letGo = std::exchange(changed, {});
    const ObjectList untouched = std::exchange(touched, {});
    touchedIds.clear();
    links.clear();
    toPropagate.clear();
    mergeBase = -1;
}

Operation::Operation(const StoreContext& context) : _context(context), _state(ObjectAccess::state(context))
{
    _context.mutex().lock();
    if (_state.operationDepth++ == 0)
        _state.drain();
}

Operation::~Operation()
{
    platform::Ref<StoreChanges> saved, caughtUp;
    bool hasLostStore = false;
    if (--_state.operationDepth == 0) {
        saved = std::exchange(_state.saved, nullptr);
        caughtUp = std::exchange(_state.caughtUp, nullptr);
        hasLostStore = std::exchange(_state.hasLostStore, false);
    }
    if (!saved && !caughtUp && !hasLostStore) {
        _context.mutex().unlock();
        return;
    }
    const platform::Ref<const StoreContext> about(&_context);
    _context.mutex().unlock();
    auto& center = platform::NotificationCenter::shared();
    if (caughtUp)
        center.post({kStoreContextDidCatchUp, about, caughtUp});
    if (saved)
        center.post({kStoreContextDidSave, about, saved});
    if (hasLostStore)
        center.post({kStoreContextDidLoseStore, about, {}});
}

Reading::Reading(ContextState& context, PersistentStore& store)
try : _lock(context.coordinator->mutex()), _state(store.state()), _transaction(_state) {
    catchUp(context, store, _state);
} catch (const StoreFailure& failure) {
    context.noteLoss(failure.error());
}

} // namespace objectstore
