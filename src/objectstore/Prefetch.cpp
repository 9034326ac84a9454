// How the relationships of many objects are read with one query each.
#include "objectstore/Prefetch.h"

#include "objectstore/RowReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <unordered_set>

namespace objectstore {

namespace {

/// The rows whose column has one of many keys. Keys that lie close together, as those of cards that came in
/// one import, are read in one walk along the column's index; what stands between them is passed over.
class KeyCondition {
public:
    explicit KeyCondition(std::vector<std::int64_t> keys) : _keys(std::move(keys))
    {
        constexpr std::size_t fewest = 50;
        constexpr std::int64_t widest = 32;
        std::ranges::sort(_keys);
        _isWalk = _keys.size() >= fewest
            && _keys.back() - _keys.front() < widest * static_cast<std::int64_t>(_keys.size());
        if (!_isWalk)
            _json = jsonOf(_keys);
    }

    std::string sql(std::string_view column) const
    {
        return fmt::format(
            fmt::runtime(_isWalk ? "{} BETWEEN ? AND ?" : "{} IN (SELECT value FROM json_each(?))"), column);
    }

    void bind(sqlite::Statement& query) const
    {
        if (_isWalk)
            query.bind(1, _keys.front()).bind(2, _keys.back());
        else
            query.bindText(1, _json);
    }

    bool holds(std::int64_t key) const { return !_isWalk || std::ranges::binary_search(_keys, key); }

private:
    std::vector<std::int64_t> _keys;
    bool _isWalk = false;
    std::string _json;
};

/// Reads one relationship for objects of one store.
class SlotPrefetch {
public:
    SlotPrefetch(ContextState& context, PersistentStore& store, const Slot& slot)
        : _context(context), _store(store), _slot(slot), _reading(context, store)
    {
    }

    ObjectList run(const ObjectList& objects)
    {
        if (_slot.kind == SlotKind::toOne)
            readTargets(objects);
        else
            readInverse(objects);
        return std::move(_found);
    }

private:
    using ObjectsByKey = std::vector<std::pair<std::int64_t, StoreObject*>>;

    /// The objects that to-ones lead to, with their rows.
    void readTargets(const ObjectList& objects)
    {
        std::vector<std::int64_t> missing;
        for (const auto& object : objects) {
            const std::int64_t key = object->relatedKey(_slot);
            ObjectRef known = _context.registered(&_store, key);
            if (known && !known->isFault())
                _found.push_back(std::move(known));
            else if (key > 0)
                missing.push_back(key);
        }
        std::ranges::sort(missing);
        missing.erase(std::unique(missing.begin(), missing.end()), missing.end());
        if (!missing.empty())
            readRows("\"_key\"", missing, [](ObjectRef) {});
    }

    void readInverse(const ObjectList& objects)
    {
        std::vector<std::int64_t> keys;
        ObjectsByKey byKey;
        for (const auto& object : objects) {
            RelationshipCache& cache = ObjectAccess::makeCaches(*object).of(_slot);
            if (object->key() < 0
                || (cache.isLoaded && (_slot.holdsParts || cache.epoch == _context.linkEpoch)))
                continue;
            cache.parts.clear();
            cache.keys.clear();
            keys.push_back(object->key());
            byKey.emplace_back(object->key(), object.get());
        }
        if (keys.empty())
            return;
        std::ranges::sort(byKey);
        if (_slot.kind == SlotKind::manyToMany)
            readLinks(keys, byKey);
        else
            readRows(_slot.inverse->column, keys, [&](ObjectRef found) { addTo(byKey, std::move(found)); });
        for (const auto& [key, object] : byKey) {
            RelationshipCache& cache = ObjectAccess::makeCaches(*object).of(_slot);
            cache.isLoaded = true;
            cache.epoch = _context.linkEpoch;
        }
    }

    static StoreObject* find(const ObjectsByKey& objects, std::int64_t key)
    {
        const auto at = std::ranges::lower_bound(objects, key, {}, &ObjectsByKey::value_type::first);
        return at != objects.end() && at->first == key ? at->second : nullptr;
    }

    void addTo(const ObjectsByKey& byKey, ObjectRef found)
    {
        const Row* row = ObjectAccess::row(*found).get();
        StoreObject* const owner = find(byKey, row->integer(_slot.inverse->field));
        if (!owner || !found->entity().isKindOf(*_slot.destination))
            return;
        RelationshipCache& cache = ObjectAccess::makeCaches(*owner).of(_slot);
        if (_slot.holdsParts)
            cache.parts.push_back(std::move(found));
        else
            cache.keys.push_back(found->key());
    }

    template <class Visitor>
    void readRows(const std::string& column, const std::vector<std::int64_t>& keys, Visitor visit)
    {
        const KeyCondition condition(keys);
        for (const Family* family : _slot.destination->families()) {
            sqlite::Use find(_reading->connection->prepared(fmt::format("SELECT {}, {} FROM {} WHERE {}",
                rowColumns(*family), column, family->table, condition.sql(column))));
            condition.bind(*find);
            const int last = countOfRowColumns(*family);
            while (find->step()) {
                if (!condition.holds(find->integer(last)))
                    continue;
                RowRef row = readRow(*_reading, *family, *find);
                if (!row)
                    continue;
                ObjectRef object = _context.objectForRow(_store, std::move(row));
                _found.push_back(object);
                visit(std::move(object));
            }
        }
    }

    void readLinks(const std::vector<std::int64_t>& keys, const ObjectsByKey& byKey)
    {
        const KeyCondition condition(keys);
        std::vector<std::int64_t> far;
        {
            sqlite::Use links(_reading->connection->prepared(fmt::format("SELECT {0}, {1} FROM {2} WHERE {3}",
                _slot.column, _slot.farColumn, _slot.table, condition.sql(_slot.column))));
            condition.bind(*links);
            while (links->step()) {
                StoreObject* const object = find(byKey, links->integer(0));
                if (!object)
                    continue;
                ObjectAccess::makeCaches(*object).of(_slot).keys.push_back(links->integer(1));
                far.push_back(links->integer(1));
            }
        }
        readRows("\"_key\"", far, [](ObjectRef) {});
    }

    ContextState& _context;
    PersistentStore& _store;
    const Slot& _slot;
    Reading _reading;
    ObjectList _found;
};

} // namespace

ObjectList prefetchSlot(ContextState& context, const ObjectList& objects, const Slot& slot)
{
    std::map<PersistentStore*, ObjectList> byStore;
    for (const auto& object : objects)
        if (object->store() && !ObjectAccess::is(*object, ObjectAccess::kGone))
            byStore[object->store()].push_back(object);
    ObjectList found;
    for (const auto& [store, some] : byStore) {
        context.requireStore(store);
        ObjectList more = SlotPrefetch(context, *store, slot).run(some);
        found.insert(found.end(), more.begin(), more.end());
    }
    return found;
}

void prefetchPaths(ContextState& context, const ObjectList& objects, const std::vector<std::string>& paths)
{
    if (objects.empty())
        return;
    for (const auto& object : objects)
        ObjectAccess::makeCaches(*object).list.reserve(paths.size());
    for (const auto& path : paths) {
        ObjectList level = objects;
        for (std::size_t from = 0; from <= path.size() && !level.empty();) {
            const std::size_t dot = std::min(path.find('.', from), path.size());
            const Slot& slot = level.front()->slot(std::string_view(path).substr(from, dot - from));
            level = prefetchSlot(context, level, slot);
            from = dot + 1;
        }
    }
}

ObjectList relatedOf(ContextState& context, const ObjectList& objects, std::string_view key)
{
    if (objects.empty())
        return {};
    // Held until the relationships were followed, so that each end is read once.
    const Slot& first = objects.front()->slot(key);
    const ObjectList read = prefetchSlot(context, objects, first);
    std::unordered_set<ObjectRef> related;
    if (first.kind == SlotKind::toOne)
        related.insert(read.begin(), read.end());
    else
        for (const auto& object : objects)
            for (auto& far : context.far(*object, object->slot(key)))
                related.insert(std::move(far));
    return {related.begin(), related.end()};
}

} // namespace objectstore
