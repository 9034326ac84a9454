// How a save runs: hooks, transactions, and what the context is afterwards.
#include "objectstore/ContextSave.h"

#include "objectstore/CatchUp.h"
#include "objectstore/StoreWrite.h"
#include "objectstore/UnitMerge.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/Log.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <unordered_set>
#include <vector>

namespace objectstore {

namespace {

/// Wipes the marks of who was asked, however the asking ends.
class AskedMarks {
public:
    explicit AskedMarks(const ContextState& context) : _context(context) { }
    ~AskedMarks()
    {
        for (const ObjectList* list : {&_context.changed, &_context.touched})
            for (const auto& object : *list)
                ObjectAccess::drop(*object, ObjectAccess::kAsked);
    }
    AskedMarks(const AskedMarks&) = delete;
    AskedMarks& operator=(const AskedMarks&) = delete;

private:
    const ContextState& _context;
};

/// One save of one context.
class Save {
public:
    explicit Save(ContextState& context) : _context(context) { }

    void prepare()
    {
        _context.propagateDeletes();
        postWillSave();
        askObjects();
    }

    void write()
    {
        for (PersistentStore* store : storesWithChanges()) {
            _parts.push_back(std::make_unique<Part>(*store));
            Part& part = *_parts.back();
            takeInOthers(part);
            part.write = std::make_unique<StoreWrite>(_context, *store);
            writeObserved(part);
        }
    }

    void commit()
    {
        for (auto& part : _parts)
            commit(*part);
    }

    /// What was not committed is undone while the coordinator is still locked.
    void rollBack() { _parts.clear(); }

    platform::Ref<StoreChanges> finish()
    {
        auto changes = platform::makeRef<StoreChanges>();
        for (auto& part : _parts)
            takeOver(*part, *changes);
        settleRelationships();
        unloadMerged();
        _context.forgetChanges();
        _context.savedTemporaryKey = _context.lastTemporaryKey;
        ++_context.linkEpoch;
        for (const ObjectList* list : {&changes->inserted, &changes->updated, &changes->deleted})
            for (const auto& object : *list)
                object->didSave();
        return changes;
    }

private:
    struct Part {
        explicit Part(PersistentStore& chosen) : store(chosen), transaction(chosen.state()) { }
        PersistentStore& store;
        WriteTransaction transaction;
        std::unique_ptr<StoreWrite> draft;
        std::unique_ptr<UnitMerge> merge;
        std::unique_ptr<StoreWrite> write;
    };

    void writeObserved(Part& part)
    {
        SaveObserver* const observer = part.store.state().saveObserver;
        const auto roots = observer ? part.write->touchedRoots(*observer) : std::vector<SavedRoot>();
        if (observer)
            observer->willWrite(part.store.state(), roots);
        part.write->run();
        if (part.merge)
            part.merge->finishWriting();
        if (!observer)
            return;
        const auto inserted = part.merge ? std::optional<std::vector<RowRef>>() : part.write->insertedRows();
        observer->didWrite(part.store.state(), roots, inserted ? &*inserted : nullptr);
    }

    static void commit(Part& part)
    {
        part.transaction.commit();
        if (SaveObserver* const observer = part.store.state().saveObserver)
            observer->didCommit();
    }

    /// What others saved is taken in before anything is written over it; what was derived of both is made
    /// anew.
    void takeInOthers(Part& part)
    {
        PersistentStore& store = part.store;
        if (_context.seen(store).seen != store.state().commitNumber)
            catchUp(_context, store, store.state());
        if (_context.mergeBase < 0)
            return;
        part.draft = std::make_unique<StoreWrite>(_context, store);
        part.merge = std::make_unique<UnitMerge>(_context, *part.draft);
        part.merge->plan();
        askObjects();
    }

    void postWillSave()
    {
        auto changes = platform::makeRef<StoreChanges>();
        changes->inserted = _context.context.insertedObjects();
        changes->updated = _context.context.updatedObjects();
        changes->deleted = _context.context.deletedObjects();
        platform::NotificationCenter::shared().post(
            {kStoreContextWillSave, platform::Ref<const StoreContext>(&_context.context), changes});
    }

    /// All have settled what others saved before anything is derived from it.
    void askObjects()
    {
        if (_context.mergeBase >= 0)
            askEach([](StoreObject& object) { object.willMerge(); });
        askEach([](StoreObject& object) { object.willSave(); });
    }

    /// Each changed object, and each whose parts changed, is asked once; what they change joins the list.
    template <class Ask>
    void askEach(Ask ask)
    {
        const AskedMarks marks(_context);
        std::size_t changed = 0, touched = 0;
        while (changed < _context.changed.size() || touched < _context.touched.size()) {
            const ObjectRef object =
                changed < _context.changed.size() ? _context.changed[changed++] : _context.touched[touched++];
            const bool isAsked =
                object->context() && !object->isDeleted() && !(changed == 0 && object->hasChanges());
            if (isAsked && !ObjectAccess::is(*object, ObjectAccess::kAsked)) {
                ObjectAccess::add(*object, ObjectAccess::kAsked);
                ask(*object);
            }
            _context.propagateDeletes();
        }
    }

    std::vector<PersistentStore*> storesWithChanges()
    {
        std::vector<PersistentStore*> stores;
        for (const auto& object : _context.changed) {
            if (!object->hasChanges())
                continue;
            PersistentStore* store = &_context.requireStore(object->store());
            ObjectAccess::store(*object) = store;
            if (std::ranges::find(stores, store) == stores.end())
                stores.push_back(store);
        }
        return stores;
    }

    void takeOver(Part& part, StoreChanges& changes)
    {
        StoreWrite& write = *part.write;
        _context.seen(part.store).seen = write.version();
        changes.inserted.reserve(changes.inserted.size() + write.inserted().size());
        for (auto& written : write.inserted())
            becomePermanent(written, changes);
        for (auto& written : write.updated()) {
            if (written.isLost) {
                platform::log(fmt::format(
                    "{} was deleted elsewhere; its changes are lost", written.object->description()));
                _context.abandon(*written.object);
                continue;
            }
            replaceRow(written);
            changes.updated.push_back(written.object);
        }
        for (auto& written : write.bumped())
            ObjectAccess::row(*written.object) = std::move(written.row);
        takeOverDeletes(write, changes);
        if (part.merge)
            _mergedOwners.insert(part.merge->owners().begin(), part.merge->owners().end());
    }

    void becomePermanent(Written& written, StoreChanges& changes)
    {
        StoreObject& object = *written.object;
        _context.unregister(object);
        ObjectAccess::key(object) = written.key;
        // A shared object that was here already keeps its place in the table; this one stands beside it.
        if (!_context.registered(object.store(), written.key))
            _context.tableOf(object).put(object);
        _context.clearPending(object);
        replaceRow(written);
        ObjectAccess::add(object, ObjectAccess::kCreated);
        changes.inserted.push_back(written.object);
    }

    static void replaceRow(Written& written)
    {
        StoreObject& object = *written.object;
        ObjectAccess::row(object) = std::move(written.row);
        if (auto& overlay = ObjectAccess::overlay(object)) {
            overlay->removeAllStored(object.entity());
            if (overlay->isEmpty())
                overlay.reset();
        }
    }

    /// The row stays, so that observers can still ask who it was.
    void takeOverDeletes(StoreWrite& write, StoreChanges& changes)
    {
        std::unordered_set<std::int64_t> owners;
        for (const auto& object : write.deleted()) {
            _context.clearPending(*object);
            _context.unregister(*object);
            ObjectAccess::add(*object, ObjectAccess::kGone);
            changes.deleted.push_back(object);
            if (!object->entity().owner())
                owners.insert(object->key());
        }
        if (!owners.empty())
            abandonParts(write.store(), owners);
    }

    /// Parts that nobody marked because they were not known through their owner.
    void abandonParts(PersistentStore& store, const std::unordered_set<std::int64_t>& owners)
    {
        ObjectList orphans;
        _context.seen(store).objects.forEach([&](StoreObject& object) {
            const Slot* owner = object.entity().owner();
            if (owner && owners.contains(ObjectAccess::keyIfKnown(object, *owner)) && object.retainIfOwned())
                orphans.push_back(ObjectRef::adopt(&object));
        });
        for (const auto& object : orphans)
            _context.abandon(*object);
    }

    void settleRelationships()
    {
        for (const auto& object : _context.changed) {
            if (auto& caches = ObjectAccess::caches(*object))
                settle(*object, *caches, ObjectAccess::is(*object, ObjectAccess::kCreated));
            ObjectAccess::drop(*object, ObjectAccess::kCreated);
        }
    }

    /// What a merge made of the parts of these is read again when it is asked for.
    void unloadMerged()
    {
        if (_mergedOwners.empty())
            return;
        for (const auto& seen : _context.stores)
            seen->objects.forEach([&](StoreObject& object) {
                const Slot* owner = object.entity().owner();
                auto& caches = ObjectAccess::caches(object);
                if (caches && _mergedOwners.contains(object.key()))
                    caches->unload();
                if (!owner || !_mergedOwners.contains(ObjectAccess::keyIfKnown(object, *owner)))
                    return;
                ObjectAccess::row(object) = nullptr;
                object.didTurnIntoFault();
            });
    }

    static void settle(StoreObject& object, RelationshipCaches& caches, bool wasInserted)
    {
        for (auto& cache : caches.list) {
            const Slot& slot = *object.entity().slots()[cache.slot];
            ObjectList added = std::exchange(cache.addedParts, {});
            cache.addedKeys.clear();
            if (!slot.holdsParts || !(cache.isLoaded || wasInserted)) {
                cache.isLoaded = false;
                cache.parts.clear();
                cache.keys.clear();
                continue;
            }
            cache.isLoaded = true;
            cache.parts.insert(cache.parts.end(), added.begin(), added.end());
            std::erase_if(cache.parts, [&](const ObjectRef& part) {
                return part->isDeleted() || ObjectAccess::keyIfKnown(*part, *slot.inverse) != object.key();
            });
        }
    }

    ContextState& _context;
    std::vector<std::unique_ptr<Part>> _parts;
    std::unordered_set<std::int64_t> _mergedOwners;
};

} // namespace

platform::Result<void> saveContext(ContextState& context, const StoreContext::BeforeCommit& beforeCommit)
{
    if (auto flushed = answering("save", [&] { context.propagateDeletes(); }); !flushed)
        return flushed;
    if (!context.hasChanges())
        return {};
    if (!context.coordinator)
        return storeError(StoreFault::noStore, "the context has no coordinator");
    Save save(context);
    if (auto prepared = answering("save", [&] { save.prepare(); }); !prepared)
        return prepared;
    platform::Lock lock(context.coordinator->mutex());
    auto written = answering("save", [&] { save.write(); });
    if (written && beforeCommit)
        written = beforeCommit();
    if (written)
        written = answering("save", [&] { save.commit(); });
    if (written) {
        context.saved = save.finish();
    } else {
        save.rollBack();
        context.noteLoss(written.error());
    }
    return written;
}

} // namespace objectstore
