// How rows that others wrote reach the objects of a context.
#include "objectstore/CatchUp.h"

#include "objectstore/RowReader.h"
#include "platform/run/Log.h"

#include <fmt/format.h>

#include <unordered_set>

namespace objectstore {

namespace {

using Keys = std::unordered_set<std::int64_t>;

class CatchUpRun {
public:
    CatchUpRun(ContextState& context, PersistentStore& store, StoreState& state)
        : _context(context), _store(store), _state(state), _objects(context.seen(store).objects)
    {
    }

    void run(std::int64_t from)
    {
        collectWatched();
        if (from < _state.connection->integer("SELECT deletionsFrom FROM store_state WHERE id = 1"))
            examineAll();
        else
            readChanges(from);
        if (_changed.empty() && _deleted.empty())
            return;
        if (_context.mergeBase < 0 && _context.hasChanges())
            _context.mergeBase = from;
        if (_context.undoManager)
            _context.undoManager->disableUndoRegistration();
        exchangeRoots();
        exchangeParts();
        dropDeleted();
        if (_context.undoManager)
            _context.undoManager->enableUndoRegistration();
    }

private:
    /// Keys that matter here although no object may have them: owners of parts, ends of unsaved references.
    void collectWatched()
    {
        _objects.forEach([&](StoreObject& object) {
            if (const Slot* owner = object.entity().owner())
                _watched.insert(ObjectAccess::keyIfKnown(object, *owner));
        });
        for (const auto& object : _context.changed)
            if (const auto& overlay = ObjectAccess::overlay(*object))
                for (const Slot* slot : object->entity().fields())
                    if (slot->kind == SlotKind::toOne)
                        if (const platform::Value* value = overlay->find(*slot))
                            _watched.insert(value->asInteger());
        _context.links.forEach([&](const std::string&, std::int64_t lead, std::int64_t other, Links::Change) {
            _watched.insert(lead);
            _watched.insert(other);
        });
    }

    bool matters(std::int64_t key) const { return _objects.find(key) || _watched.contains(key); }

    void readChanges(std::int64_t from)
    {
        const auto read = [&](const std::string& sql, Keys& into) {
            sqlite::Use find(_state.connection->prepared(sql));
            find->bind(1, from);
            while (find->step())
                if (matters(find->integer(0)))
                    into.insert(find->integer(0));
        };
        for (const Family* family : _context.coordinator->model().families())
            if (family->isRoot())
                read(fmt::format("SELECT \"_key\" FROM {} WHERE \"_version\" > ?", family->table), _changed);
        read("SELECT key FROM store_deletion WHERE version > ?", _deleted);
    }

    /// The records of what was deleted meanwhile are gone: everything here is looked up.
    void examineAll()
    {
        Keys keys = _watched;
        _objects.forEach([&](StoreObject& object) {
            if (!object.entity().owner())
                keys.insert(object.key());
        });
        for (const std::int64_t key : keys)
            if (key > 0)
                (exists(key) ? _changed : _deleted).insert(key);
    }

    bool exists(std::int64_t key)
    {
        for (const Family* family : _context.coordinator->model().families())
            if (findRow(_state, *family, key))
                return true;
        return false;
    }

    void exchangeRoots()
    {
        for (const std::int64_t key : _changed) {
            const ObjectRef object = _context.registered(&_store, key);
            if (!object)
                continue;
            if (auto& caches = ObjectAccess::caches(*object))
                caches->unload();
            const bool hadRow = static_cast<bool>(ObjectAccess::row(*object));
            if (RowRef row = hadRow ? findRow(_state, *object->entity().family(), key) : nullptr)
                _context.exchangeRow(*object, std::move(row));
            noteUpdated(object);
        }
    }

    void exchangeParts()
    {
        ObjectList parts;
        _objects.forEach([&](StoreObject& object) {
            const Slot* owner = object.entity().owner();
            if (!owner)
                return;
            const std::int64_t key = ObjectAccess::keyIfKnown(object, *owner);
            const Row* row = ObjectAccess::row(object).get();
            const std::int64_t before = row ? row->integer(owner->field) : 0;
            const bool isConcerned =
                _changed.contains(key) || _deleted.contains(key) || _changed.contains(before);
            if (isConcerned && object.retainIfOwned())
                parts.push_back(ObjectRef::adopt(&object));
        });
        for (const auto& part : parts)
            exchangePart(*part);
    }

    void exchangePart(StoreObject& part)
    {
        const Row* before = ObjectAccess::row(part).get();
        if (!before)
            return;
        RowRef row = findRow(_state, *part.entity().family(), part.key());
        if (row) {
            if (row->version() != before->version())
                noteUpdated(ObjectRef(&part));
            _context.exchangeRow(part, std::move(row));
            return;
        }
        // An entry that others wrote anew still counts under its identifier, which the save's merge finds.
        const bool isMerged = part.hasChanges() && (part.entity().unit() || part.entity().isSingle());
        if (isMerged && !_deleted.contains(before->integer(part.entity().owner()->field)))
            return;
        lose(ObjectRef(&part));
    }

    void dropDeleted()
    {
        const ObjectList changed = _context.changed;
        for (const auto& object : changed) {
            const Slot* owner = object->entity().owner();
            if (object->hasChanges() && owner && _deleted.contains(ObjectAccess::keyIfKnown(*object, *owner)))
                lose(object);
            else if (object->hasChanges())
                clearReferences(*object);
        }
        for (const std::int64_t key : _deleted) {
            _context.links.forget(key);
            if (const ObjectRef object = _context.registered(&_store, key))
                lose(object);
        }
    }

    void clearReferences(StoreObject& object)
    {
        auto& overlay = ObjectAccess::overlay(object);
        if (!overlay)
            return;
        for (const Slot* slot : object.entity().fields()) {
            if (slot->kind != SlotKind::toOne)
                continue;
            const platform::Value* value = overlay->find(*slot);
            if (value && _deleted.contains(value->asInteger()))
                overlay->change(*slot, {});
        }
    }

    void lose(const ObjectRef& object)
    {
        if (object->isInserted() || object->isUpdated())
            platform::log(fmt::format(
                "{} was deleted elsewhere; its unsaved changes are dropped", object->description()));
        _context.abandon(*object);
        changes().deleted.push_back(object);
    }

    void noteUpdated(const ObjectRef& object) { changes().updated.push_back(object); }

    StoreChanges& changes()
    {
        if (!_context.caughtUp)
            _context.caughtUp = platform::makeRef<StoreChanges>();
        return *_context.caughtUp;
    }

    ContextState& _context;
    PersistentStore& _store;
    StoreState& _state;
    const ObjectTable& _objects;
    Keys _watched;
    Keys _changed;
    Keys _deleted;
};

} // namespace

void catchUp(ContextState& context, PersistentStore& store, StoreState& state)
{
    SeenStore& seen = context.seen(store);
    const std::int64_t from = seen.seen;
    if (from == state.commitNumber)
        return;
    seen.seen = state.commitNumber;
    ++context.linkEpoch;
    if (from < 0 || (seen.objects.count() == 0 && context.changed.empty()))
        return;
    CatchUpRun(context, store, state).run(from);
}

} // namespace objectstore
