// How objects that all writers share are found or made.
#include "objectstore/ContextState.h"
#include "objectstore/RowReader.h"

#include <fmt/format.h>

namespace objectstore {

namespace {

using platform::Value;

/// Whether the object has those values in the keys that name it.
bool isNamed(StoreObject& object, const Entity& entity, const std::vector<Value>& values)
{
    if (&object.entity() != &entity || object.isDeleted())
        return false;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!(object.primitiveValue(*entity.sharedBy()[i]) == values[i]))
            return false;
    return true;
}

RowRef findShared(StoreState& state, const Entity& entity, const std::vector<Value>& values)
{
    std::string sql = fmt::format("SELECT {} FROM {} WHERE \"_entity\" = {}", rowColumns(*entity.family()),
        entity.family()->table, state.numberOf(entity));
    for (const Slot* slot : entity.sharedBy())
        sql += fmt::format(" AND {} IS ?", slot->column);
    sqlite::Use find(state.connection->prepared(sql + " ORDER BY \"_key\" LIMIT 1"));
    for (std::size_t i = 0; i < values.size(); ++i)
        bindField(*find, static_cast<int>(i) + 1, fieldOf(values[i]));
    return find->step() ? readRow(state, *entity.family(), *find) : nullptr;
}

RowRef insertShared(StoreState& state, const Entity& entity, const std::vector<Value>& values)
{
    const std::int64_t version = state.commitNumber + 1;
    const std::int64_t key = state.connection->integer("SELECT sequence FROM store_state WHERE id = 1") + 1;
    std::string columns = "\"_key\", \"_version\", \"_entity\"", marks = "?, ?, ?";
    for (const Slot* slot : entity.sharedBy()) {
        columns += ", " + slot->column;
        marks += ", ?";
    }
    {
        sqlite::Use insert(state.connection->prepared(
            fmt::format("INSERT INTO {}({}) VALUES({})", entity.family()->table, columns, marks)));
        insert->bind(1, key).bind(2, version).bind(3, state.numberOf(entity));
        for (std::size_t i = 0; i < values.size(); ++i)
            bindField(*insert, static_cast<int>(i) + 4, fieldOf(values[i]));
        insert->run();
    }
    sqlite::Use note(
        state.connection->prepared("UPDATE store_state SET commitNumber = ?, sequence = ? WHERE id = 1"));
    note->bind(1, version).bind(2, key).run();
    return findRow(state, *entity.family(), key);
}

} // namespace

platform::Result<ObjectRef> StoreContext::sharedObject(
    const Entity& entity, const std::vector<Value>& values, PersistentStore* chosen)
{
    if (entity.isAbstract() || values.empty() || values.size() != entity.sharedBy().size())
        throw InvalidKey(fmt::format("{} is not named by {} values", entity.name(), values.size()));
    Operation operation(*this);
    return answering("shared object", [&] {
        PersistentStore& store = operation->requireStore(chosen);
        for (const auto& object : operation->sharedObjects)
            if (object->store() == &store && isNamed(*object, entity, values))
                return object;
        RowRef row;
        {
            Reading reading(*operation, store);
            row = findShared(*reading, entity, values);
        }
        if (!row) {
            platform::Lock lock(operation->coordinator->mutex());
            WriteTransaction transaction(store.state());
            row = findShared(store.state(), entity, values);
            if (!row)
                row = insertShared(store.state(), entity, values);
            transaction.commit();
        }
        return operation->objectForRow(store, std::move(row));
    });
}

} // namespace objectstore
