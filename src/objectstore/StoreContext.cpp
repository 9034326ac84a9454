// What a context offers: each operation under its lock.
#include "objectstore/StoreContext.h"

#include "objectstore/CatchUp.h"
#include "objectstore/ContextFetch.h"
#include "objectstore/ContextSave.h"
#include "objectstore/ContextState.h"
#include "objectstore/Prefetch.h"
#include "objectstore/TextIndex.h"
#include "platform/notify/NotificationCenter.h"

#include <fmt/format.h>

#include <algorithm>

namespace objectstore {

using platform::Result;

StoreContext::StoreContext(platform::Ref<StoreCoordinator> chosen)
    : _state(std::make_unique<ContextState>(*this, std::move(chosen)))
{
}

StoreContext::~StoreContext()
{
    // From here on the last release of an object ends it on the spot.
    _state->anchor->context = nullptr;
    _state->forgetChanges();
    _state->sharedObjects.clear();
    _state->anchor->drain([](StoreObject&) {});
}

void StoreContext::lock() const
{
    _mutex.lock();
    if (_state->operationDepth == 0)
        _state->drain();
}

void StoreContext::unlock() const { _mutex.unlock(); }

bool StoreContext::tryLock() const { return _mutex.tryLock(); }

void StoreContext::setCoordinator(platform::Ref<StoreCoordinator> chosen)
{
    Operation operation(*this);
    if (!registeredObjects().empty())
        throw std::logic_error("a context with objects cannot change its coordinator");
    operation->stores.clear();
    operation->coordinator = std::move(chosen);
}

platform::Ref<StoreCoordinator> StoreContext::coordinator() const
{
    Operation operation(*this);
    return operation->coordinator;
}

void StoreContext::setUndoManager(UndoManager* manager)
{
    Operation operation(*this);
    operation->undoManager = manager;
}

UndoManager* StoreContext::undoManager() const
{
    Operation operation(*this);
    return operation->undoManager;
}

ObjectRef StoreContext::insertObjectOfEntity(const Entity& entity)
{
    if (entity.isAbstract())
        throw InvalidKey(fmt::format("no object can be of the abstract entity {}", entity.name()));
    Operation operation(*this);
    ObjectRef object = operation->makeObject(entity, nullptr, --operation->lastTemporaryKey, nullptr);
    operation->setPending(*object, ObjectAccess::kInserted);
    object->awakeFromInsert();
    return object;
}

ObjectRef StoreContext::insertObjectOfEntity(std::string_view name)
{
    Operation operation(*this);
    const Entity* entity = operation->coordinator ? operation->coordinator->model().entity(name) : nullptr;
    if (!entity)
        throw InvalidKey(fmt::format("the model has no entity {}", name));
    return insertObjectOfEntity(*entity);
}

void StoreContext::deleteObject(StoreObject& object)
{
    Operation operation(*this);
    if (object.context() == this)
        operation->markDeleted(object);
}

void StoreContext::assignObjectToStore(StoreObject& object, PersistentStore* store)
{
    Operation operation(*this);
    if (!object.isInserted() || object.context() != this)
        throw InvalidKey(fmt::format("{} is not new here", object.description()));
    ObjectAccess::store(object) = store;
}

Result<ObjectList> StoreContext::runFetch(const StoreFetch& fetch)
{
    Operation operation(*this);
    return answering("fetch", [&] { return fetchObjects(*operation, fetch); });
}

Result<std::vector<platform::Value>> StoreContext::fetchValues(const StoreFetch& fetch, std::string_view key)
{
    Operation operation(*this);
    return answering("fetch", [&] { return fetchAttribute(*operation, fetch, key); });
}

Result<void> fetchColumns(StoreContext& context, const StoreFetch& fetch,
    std::span<const std::string_view> keys, const ColumnVisitor& visit)
{
    Operation operation(context);
    return answering("fetch", [&] { visitColumns(*operation, fetch, keys, visit); });
}

Result<std::size_t> StoreContext::countFetch(const StoreFetch& fetch)
{
    Operation operation(*this);
    return answering("count", [&] { return countObjects(*operation, fetch); });
}

Result<std::vector<FetchPlan>> StoreContext::explainFetch(const StoreFetch& fetch)
{
    Operation operation(*this);
    return answering("explain", [&] { return explainObjects(*operation, fetch); });
}

void StoreContext::refreshObject(StoreObject& object, bool keepingChanges)
{
    Operation operation(*this);
    if (object.context() != this || object.isInserted())
        return;
    if (operation->undoManager)
        operation->undoManager->disableUndoRegistration();
    const auto caught = catchUp();
    if (!keepingChanges && !object.isDeleted()) {
        operation->clearPending(object);
        if (auto& overlay = ObjectAccess::overlay(object))
            overlay->removeAllStored(object.entity());
        ObjectAccess::row(object) = nullptr;
    } else if (auto& overlay = ObjectAccess::overlay(object)) {
        overlay->removeKept(object.entity());
    }
    if (auto& caches = ObjectAccess::caches(object))
        caches->unload();
    object.didTurnIntoFault();
    if (operation->undoManager)
        operation->undoManager->enableUndoRegistration();
}

ObjectRef StoreContext::objectForStoreId(const StoreId& id)
{
    Operation operation(*this);
    if (id.isTemporary() || !id || !id.entity)
        return operation->registered(nullptr, id.key);
    PersistentStore* store =
        operation->coordinator ? operation->coordinator->storeNumbered(id.store) : nullptr;
    if (!store)
        return nullptr;
    ObjectRef known = operation->registered(store, id.key);
    return known ? known : operation->makeObject(*id.entity, store, id.key, nullptr);
}

ObjectRef StoreContext::objectRegisteredForID(const StoreId& id) const
{
    Operation operation(*this);
    if (id.isTemporary())
        return operation->registered(nullptr, id.key);
    PersistentStore* store =
        operation->coordinator ? operation->coordinator->storeNumbered(id.store) : nullptr;
    return store ? operation->registered(store, id.key) : nullptr;
}

ObjectList StoreContext::registeredObjects() const
{
    return registeredObjects([](StoreObject&) { return true; });
}

ObjectList StoreContext::registeredObjects(const std::function<bool(StoreObject&)>& wanted) const
{
    Operation operation(*this);
    ObjectList objects;
    const auto add = [&](StoreObject& object) {
        if (!object.retainIfOwned())
            return;
        ObjectRef owned = ObjectRef::adopt(&object);
        if (wanted(*owned))
            objects.push_back(std::move(owned));
    };
    for (const auto& seen : operation->stores)
        seen->objects.forEach(add);
    operation->temporary.forEach(add);
    return objects;
}

bool StoreContext::hasChanges() const
{
    Operation operation(*this);
    operation->propagateDeletes();
    return operation->hasChanges();
}

void StoreContext::flushPendingChanges()
{
    Operation operation(*this);
    operation->propagateDeletes();
}

namespace {

template <class Wanted>
ObjectList pending(ContextState& state, Wanted wanted)
{
    state.propagateDeletes();
    ObjectList objects;
    for (const auto& object : state.changed)
        if (wanted(*object))
            objects.push_back(object);
    return objects;
}

void sortByKey(ObjectList& objects)
{
    std::ranges::sort(objects, {}, [](const ObjectRef& object) { return object->key(); });
}

bool isPendingDelete(const StoreObject& object) { return ObjectAccess::is(object, ObjectAccess::kDeleted); }

} // namespace

ObjectList StoreContext::insertedObjects()
{
    Operation operation(*this);
    return pending(*operation, [](const StoreObject& object) { return object.isInserted(); });
}

ObjectList StoreContext::updatedObjects()
{
    Operation operation(*this);
    ObjectList objects = pending(*operation, [](const StoreObject& object) { return object.isUpdated(); });
    sortByKey(objects);
    return objects;
}

ObjectList StoreContext::deletedObjects()
{
    Operation operation(*this);
    ObjectList objects = pending(*operation, isPendingDelete);
    sortByKey(objects);
    return objects;
}

Result<void> StoreContext::checkFiles()
{
    Operation operation(*this);
    if (!operation->coordinator)
        return {};
    const platform::Lock lock(operation->coordinator->mutex());
    auto checked = answering("files", [&] {
        for (PersistentStore* store : operation->coordinator->stores())
            refuseReplaced(store->state());
    });
    if (!checked)
        operation->noteLoss(checked.error());
    return checked;
}

Result<void> StoreContext::save(const BeforeCommit& beforeCommit)
{
    Operation operation(*this);
    return saveContext(*operation, beforeCommit);
}

void StoreContext::reset()
{
    Operation operation(*this);
    for (const auto& object : registeredObjects()) {
        ObjectAccess::overlay(*object).reset();
        ObjectAccess::caches(*object).reset();
        ObjectAccess::row(*object) = nullptr;
        operation->unregister(*object);
        ObjectAccess::add(*object, ObjectAccess::kGone);
        object->didTurnIntoFault();
    }
    operation->forgetChanges();
    operation->sharedObjects.clear();
    for (const auto& seen : operation->stores)
        seen->seen = -1;
    ++operation->linkEpoch;
}

Result<void> StoreContext::mergeTextIndex()
{
    Operation operation(*this);
    return answering("text index", [&] {
        PersistentStore& store = operation->requireStore(nullptr);
        const Entity* const entry = operation->coordinator->model().textEntry();
        if (!entry)
            return;
        platform::Lock lock(operation->coordinator->mutex());
        WriteTransaction transaction(store.state());
        TextIndex(store.state(), *entry).mergeAllSegments();
        transaction.commit();
    });
}

Result<void> StoreContext::catchUp()
{
    Operation operation(*this);
    return answering("catch-up", [&] {
        if (!operation->coordinator)
            return;
        for (PersistentStore* store : operation->coordinator->stores())
            Reading reading(*operation, *store);
    });
}

Result<void> StoreContext::mergeChangesFromContextDidSave(const platform::Value&) { return catchUp(); }

std::int64_t StoreContext::lastSeenCommit() const
{
    Operation operation(*this);
    PersistentStore* store = operation->coordinator ? operation->coordinator->firstStore() : nullptr;
    return store ? operation->seen(*store).seen : -1;
}

Result<void> StoreContext::prefetch(const ObjectList& objects, const std::vector<std::string>& keyPaths)
{
    Operation operation(*this);
    return answering("prefetch", [&] { prefetchPaths(*operation, objects, keyPaths); });
}

Result<ObjectList> StoreContext::relatedObjects(const ObjectList& objects, std::string_view key)
{
    Operation operation(*this);
    return answering("relationship", [&] { return relatedOf(*operation, objects, key); });
}

} // namespace objectstore
