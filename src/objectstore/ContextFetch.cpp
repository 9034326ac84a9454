// How a fetch is answered: by SQL for what is as the store has it, in memory for what is not.
#include "objectstore/ContextFetch.h"

#include "objectstore/FieldOrder.h"
#include "objectstore/ObjectAccess.h"
#include "objectstore/PageCache.h"
#include "objectstore/PendingMatches.h"
#include "objectstore/PredicateMatch.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/PredicateText.h"
#include "objectstore/Prefetch.h"
#include "objectstore/RowReader.h"
#include "objectstore/SchemaSQL.h"
#include "objectstore/TextIndex.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>

namespace objectstore {

namespace {

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
/// Keys with as many others between them belong to few of the rows: an object and its parts have about nine.
constexpr std::int64_t kSparseKeys = 64;

void bindValue(sqlite::Statement& statement, int parameter, const platform::Value& value)
{
    bindField(statement, parameter, fieldOf(value));
}

/// One fetch of one store.
class StoreQuery {
public:
    StoreQuery(
        ContextState& context, PersistentStore& store, const StoreFetch& fetch, const FieldOrder& order)
        : _context(context)
        , _store(store)
        , _fetch(fetch)
        , _order(order)
        , _reading(context, store)
        , _pending(context, store, fetch)
    {
        if (!fetch.predicate || _pending.needsMemory())
            return;
        SQLScope scope{.store = store.number()};
        std::optional<bool> known;
        scope.hasEveryEntry = [&] {
            if (!known)
                known = hasEveryEntry(*_reading, *fetch.entity->model().textEntry());
            return *known;
        };
        const auto driver =
            isStreamed() ? textDriver(*fetch.predicate, *fetch.entity, scope.hasEveryEntry) : std::nullopt;
        if (driver)
            _driver = driverQuery(*driver);
        scope.driver = driver ? &*driver : nullptr;
        _condition = translate(*fetch.predicate, *fetch.entity, scope);
    }

    /// In order; at least as many as offset and limit can use.
    ObjectList objects()
    {
        ObjectList found;
        for (const Family* family : _fetch.entity->families()) {
            const auto middle = static_cast<std::ptrdiff_t>(found.size());
            readFamily(*family, found);
            std::inplace_merge(found.begin(), found.begin() + middle, found.end(), _order);
        }
        ObjectList unsaved = _pending.matches();
        std::ranges::sort(unsaved, _order);
        const auto middle = static_cast<std::ptrdiff_t>(found.size());
        found.insert(found.end(), unsaved.begin(), unsaved.end());
        std::inplace_merge(found.begin(), found.begin() + middle, found.end(), _order);
        return found;
    }

    /// Visits the columns of each, when SQL alone can answer in order.
    bool visit(const std::vector<const Slot*>& slots, const ColumnVisitor& visitor)
    {
        const auto& families = _fetch.entity->families();
        if (isByMemory() || !_pending.isEmpty() || families.size() != 1)
            return false;
        const Family& family = *families.front();
        if (const auto driver = soleTest()) {
            // What a transaction has written stays where it is.
            std::optional<PageCache> little;
            if (!_reading->isWriting)
                little.emplace(*_reading, kKilobytesOfAWalk);
            visitHits(hitsOf(*driver), family, slots, visitor);
        } else {
            visitAll(family, slots, visitor);
        }
        return true;
    }

    std::size_t count()
    {
        if (isByMemory() || _pending.isPointQuery())
            return objects().size();
        std::size_t total = _pending.matches().size();
        for (const Family* family : _fetch.entity->families()) {
            sqlite::Use query(_reading->connection->prepared(
                fmt::format("SELECT count(*) FROM {}{}", family->table, conditions(*family))));
            bind(*query);
            if (query->step())
                total += static_cast<std::size_t>(query->integer(0));
        }
        return total;
    }

    std::vector<FetchPlan> plans()
    {
        std::vector<FetchPlan> plans;
        for (const Family* family : _fetch.entity->families())
            plans.push_back(isByMemory() ? FetchPlan() : planOf(select(*family)));
        return plans;
    }

private:
    void visitAll(const Family& family, const std::vector<const Slot*>& slots, const ColumnVisitor& visitor)
    {
        const auto limits =
            _fetch.predicate ? conditions(family) : where({fromIdentities(slots), ofEntities(family)});
        sqlite::Use query(_reading->connection->prepared(
            fmt::format("SELECT {} FROM {}{}{}", columnsOf(slots), source(family), limits, orderAndLimit())));
        bind(*query);
        std::vector<FieldValue> fields(slots.size());
        while (query->step())
            visitRow(*query, fields, visitor);
    }

    static std::string columnsOf(const std::vector<const Slot*>& slots)
    {
        std::string columns = "\"_key\"";
        for (const Slot* slot : slots)
            columns += ", " + slot->column;
        return columns;
    }

    /// The condition for the index of ids, where nothing else is asked of the rows.
    std::string_view fromIdentities(const std::vector<const Slot*>& slots) const
    {
        const bool areIds =
            std::ranges::all_of(slots, [](const Slot* slot) { return (slot->flags & kUnique) != 0; });
        return areIds && _fetch.entity->textEntry() ? kHasIdentity : "";
    }

    static void visitRow(
        const sqlite::Statement& query, std::vector<FieldValue>& fields, const ColumnVisitor& visitor)
    {
        for (std::size_t i = 0; i < fields.size(); ++i)
            fields[i] = readField(query, static_cast<int>(i) + 1);
        visitor(query.integer(0), fields);
    }

    /// The driver whose one test is all that is asked, of all objects: those that pass it are found without
    /// looking at a row of theirs.
    std::optional<TextDriver> soleTest() const
    {
        const auto* test =
            _fetch.predicate ? std::get_if<StorePredicate::Comparison>(&_fetch.predicate->form()) : nullptr;
        if (!test || isStreamed() || !_order.keys().empty())
            return std::nullopt;
        auto driver = textDriver(*_fetch.predicate, *_fetch.entity, [] { return false; });
        return driver && driver->walked == test ? std::move(driver) : std::nullopt;
    }

    std::vector<std::int64_t> hitsOf(const TextDriver& driver)
    {
        const auto asked = walkQuery(driver);
        sqlite::Use query(_reading->connection->prepared(asked.sql));
        for (int parameter = 0; const auto& argument : asked.arguments)
            bindValue(*query, ++parameter, argument);
        std::vector<std::int64_t> hits;
        while (query->step())
            if (const auto key = query->integer(0); key > 0)
                hits.push_back(key);
        if (!std::ranges::is_sorted(hits))
            std::ranges::sort(hits);
        return hits;
    }

    /// Rows of many keys are read faster by a walk past all rows than by a search for each.
    void visitHits(const std::vector<std::int64_t>& hits, const Family& family,
        const std::vector<const Slot*>& slots, const ColumnVisitor& visitor)
    {
        if (hits.empty())
            return;
        const bool isWalk = (hits.back() - hits.front()) / std::ssize(hits) < kSparseKeys;
        const std::string_view rows =
            isWalk ? fromIdentities(slots) : "\"_key\" IN (SELECT value FROM json_each(?))";
        sqlite::Use query(_reading->connection->prepared(fmt::format("SELECT {} FROM {}{} ORDER BY \"_key\"",
            columnsOf(slots), family.table, where({rows, ofEntities(family)}))));
        if (!isWalk)
            query->bindText(1, fmt::format("[{}]", fmt::join(hits, ",")));
        std::vector<FieldValue> fields(slots.size());
        for (auto hit = hits.begin(); hit != hits.end() && query->step();) {
            hit = std::find_if(hit, hits.end(), [&](std::int64_t key) { return key >= query->integer(0); });
            if (hit != hits.end() && *hit == query->integer(0))
                visitRow(*query, fields, visitor);
        }
    }

    /// No SQL form, or unsaved changes elsewhere decide: then each row is asked.
    bool isByMemory() const { return _fetch.predicate && !_condition; }
    bool isDriven() const { return _driver && _condition; }

    /// Whether only the first few are wanted, in the order in which candidates can be had one by one.
    bool isStreamed() const { return _fetch.limit != kNoLimit && _order.keys().empty(); }

    bool wantsRows() const
    {
        const bool asFaults = _fetch.returnsObjectsAsFaults || !_fetch.includesPropertyValues;
        return !asFaults || isByMemory() || _order.needsRows();
    }

    std::string select(const Family& family) const
    {
        const std::string columns = wantsRows() ? rowColumns(family) : "\"_key\", \"_version\", \"_entity\"";
        return fmt::format(
            "SELECT {} FROM {}{}{}", columns, source(family), conditions(family), orderAndLimit());
    }

    FetchPlan planOf(const std::string& sql)
    {
        FetchPlan plan;
        sqlite::Use query(_reading->connection->prepared(sql));
        bind(*query);
        plan.sql = query->expandedText();
        sqlite::Use steps(_reading->connection->prepared("EXPLAIN QUERY PLAN " + sql));
        bind(*steps);
        constexpr int detail = 3;
        while (steps->step())
            plan.steps.emplace_back(steps->text(detail));
        return plan;
    }

    void readFamily(const Family& family, ObjectList& found)
    {
        const bool withRows = wantsRows();
        sqlite::Use query(_reading->connection->prepared(select(family)));
        bind(*query);
        const std::size_t first = found.size();
        while (query->step())
            if (ObjectRef object = withRows ? objectWithRow(family, *query) : objectAsFault(*query))
                if (!_pending.skips(*object))
                    found.push_back(std::move(object));
        query->reset();
        if (!isByMemory())
            return;
        // Asked only now: asking may read, and the statement must be done.
        const auto start = found.begin() + static_cast<std::ptrdiff_t>(first);
        found.erase(std::remove_if(start, found.end(),
                        [&](const ObjectRef& object) { return !matches(*_fetch.predicate, *object); }),
            found.end());
    }

    ObjectRef objectWithRow(const Family& family, const sqlite::Statement& query)
    {
        RowRef row = readRow(*_reading, family, query);
        return row ? _context.objectForRow(_store, std::move(row)) : nullptr;
    }

    ObjectRef objectAsFault(const sqlite::Statement& query)
    {
        const std::int64_t key = query.integer(0);
        if (ObjectRef known = _context.registered(&_store, key))
            return known;
        const Entity* entity = _reading->entityNumbered(query.integer(2));
        return entity
            ? _context.makeObject(*entity, &_store, key, _reading->rows->find(key, query.integer(1)))
            : nullptr;
    }

    std::string source(const Family& family) const
    {
        return isDriven() ? fmt::format(
                   "({}) CROSS JOIN {} ON {}.\"_key\" = \"_hit\"", _driver->sql, family.table, family.table)
                          : family.table;
    }

    std::string conditions(const Family& family) const
    {
        return where({ofEntities(family), _condition ? fmt::format("({})", _condition->sql) : "",
            _pending.hasKeys() ? "\"_key\" NOT IN (SELECT value FROM json_each(?))" : "",
            _pending.hasDeletedOwners()
                ? fmt::format("ifnull({}, 0) NOT IN (SELECT value FROM json_each(?))", family.owner->column)
                : ""});
    }

    static std::string where(std::initializer_list<std::string_view> conditions)
    {
        std::string sql;
        for (const auto condition : conditions)
            if (!condition.empty())
                sql.append(sql.empty() ? " WHERE " : " AND ").append(condition);
        return sql;
    }

    /// Empty where all rows of the table are of entities that are wanted.
    std::string ofEntities(const Family& family) const
    {
        std::vector<std::int64_t> numbers;
        for (const Entity* entity : family.entities)
            if (_fetch.includesSubentities ? entity->isKindOf(*_fetch.entity) : entity == _fetch.entity)
                numbers.push_back(_reading->numberOf(*entity));
        return numbers.size() < family.entities.size()
            ? fmt::format("\"_entity\" IN ({})", fmt::join(numbers, ","))
            : "";
    }

    void bind(sqlite::Statement& query)
    {
        int parameter = 0;
        if (isDriven())
            for (const auto& argument : _driver->arguments)
                bindValue(query, ++parameter, argument);
        if (_condition)
            for (const auto& argument : _condition->arguments)
                bindValue(query, ++parameter, argument);
        if (_pending.hasKeys())
            query.bindText(++parameter, _pending.keys());
        if (_pending.hasDeletedOwners())
            query.bindText(++parameter, _pending.deletedOwners());
    }

    std::string orderAndLimit() const
    {
        std::string sql = " ORDER BY ";
        for (const auto& [slot, ascending] : _order.keys())
            sql += fmt::format("{}{}, ", slot->column, ascending ? "" : " DESC");
        sql += isDriven() ? "\"_hit\"" : "\"_key\"";
        if (_fetch.limit == kNoLimit || isByMemory() || _pending.isPointQuery())
            return sql;
        // The number is ours, and preparing each limit once would cost more than its text.
        const std::size_t needed = _fetch.limit + std::min(_fetch.offset, kNoLimit - _fetch.limit);
        return sql
            + fmt::format(" LIMIT {}", std::min<std::size_t>(needed, std::numeric_limits<long>::max()));
    }

    ContextState& _context;
    PersistentStore& _store;
    const StoreFetch& _fetch;
    const FieldOrder& _order;
    Reading _reading;
    PendingMatches _pending;
    std::optional<SQLCondition> _condition;
    std::optional<SQLCondition> _driver;
};

std::vector<PersistentStore*> storesOf(ContextState& context, const StoreFetch& fetch)
{
    if (!fetch.entity)
        throw InvalidKey("a fetch without an entity");
    context.propagateDeletes();
    if (!context.coordinator)
        throw StoreFailure(storeError(StoreFault::noStore, "the context has no coordinator"));
    if (fetch.affectedStores.empty())
        return context.coordinator->stores();
    for (PersistentStore* store : fetch.affectedStores)
        context.requireStore(store);
    return fetch.affectedStores;
}

template <class List>
void cut(List& found, const StoreFetch& fetch)
{
    const std::size_t from = std::min(fetch.offset, found.size());
    found.erase(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(from));
    if (found.size() > fetch.limit)
        found.resize(fetch.limit);
}

/// The slot of a key whose column says what the object says.
const Slot& columnSlot(const Entity& entity, std::string_view key)
{
    const Slot* slot = entity.slot(key);
    if (!slot || slot->kind != SlotKind::attribute || !slot->hasColumn() || slot->lazy)
        throw InvalidKey(fmt::format("{} has no attribute {} that is always stored", entity.name(), key));
    return *slot;
}

/// The same, or the slot of a to-one.
const Slot& columnOrReferenceSlot(const Entity& entity, std::string_view key)
{
    const Slot* slot = entity.slot(key);
    return slot && slot->kind == SlotKind::toOne ? *slot : columnSlot(entity, key);
}

/// Offset and limit, which the SQL of a part of the answer does not know.
ColumnVisitor within(const StoreFetch& fetch, const ColumnVisitor& visit)
{
    return
        [&fetch, &visit, at = std::size_t(0)](std::int64_t key, std::span<const FieldValue> fields) mutable {
            const std::size_t place = at++;
            if (place >= fetch.offset && place - fetch.offset < fetch.limit)
                visit(key, fields);
        };
}

} // namespace

ObjectList fetchObjects(ContextState& context, const StoreFetch& fetch)
{
    const auto stores = storesOf(context, fetch);
    const FieldOrder order(fetch);
    ObjectList found;
    for (PersistentStore* store : stores) {
        const auto middle = static_cast<std::ptrdiff_t>(found.size());
        ObjectList some = StoreQuery(context, *store, fetch, order).objects();
        if (found.empty()) {
            found = std::move(some);
            continue;
        }
        found.insert(found.end(), some.begin(), some.end());
        std::inplace_merge(found.begin(), found.begin() + middle, found.end(), order);
    }
    cut(found, fetch);
    prefetchPaths(context, found, fetch.prefetchKeyPaths);
    return found;
}

void visitColumns(ContextState& context, const StoreFetch& fetch, std::span<const std::string_view> keys,
    const ColumnVisitor& visit)
{
    const auto stores = storesOf(context, fetch);
    std::vector<const Slot*> slots;
    for (const auto key : keys)
        slots.push_back(&columnOrReferenceSlot(*fetch.entity, key));
    const FieldOrder order(fetch);
    if (stores.size() == 1
        && StoreQuery(context, *stores.front(), fetch, order).visit(slots, within(fetch, visit)))
        return;
    std::vector<FieldValue> fields(slots.size());
    for (const auto& object : fetchObjects(context, fetch)) {
        for (std::size_t i = 0; i < slots.size(); ++i)
            fields[i] = ObjectAccess::field(*object, *slots[i]);
        visit(object->key(), fields);
    }
}

std::vector<platform::Value> fetchAttribute(
    ContextState& context, const StoreFetch& fetch, std::string_view key)
{
    if (!fetch.entity)
        throw InvalidKey("a fetch without an entity");
    const Slot& slot = columnSlot(*fetch.entity, key);
    std::vector<platform::Value> found;
    visitColumns(context, fetch, {&key, 1},
        [&](std::int64_t, std::span<const FieldValue> fields) { found.push_back(valueOf(slot, fields[0])); });
    return found;
}

std::size_t countObjects(ContextState& context, const StoreFetch& fetch)
{
    const auto stores = storesOf(context, fetch);
    const FieldOrder order(fetch);
    std::size_t total = 0;
    for (PersistentStore* store : stores) {
        StoreFetch unlimited = fetch;
        unlimited.limit = kNoLimit;
        unlimited.offset = 0;
        total += StoreQuery(context, *store, unlimited, order).count();
    }
    return std::min(total - std::min(fetch.offset, total), fetch.limit);
}

std::vector<FetchPlan> explainObjects(ContextState& context, const StoreFetch& fetch)
{
    const auto stores = storesOf(context, fetch);
    const FieldOrder order(fetch);
    std::vector<FetchPlan> plans;
    for (PersistentStore* store : stores)
        std::ranges::move(StoreQuery(context, *store, fetch, order).plans(), std::back_inserter(plans));
    return plans;
}

} // namespace objectstore
