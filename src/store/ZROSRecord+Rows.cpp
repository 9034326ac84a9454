// The rows that hold the values of a record's keys: those that are here, and those in the store.
#include "core/ZRConstants.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>

#include <algorithm>

using objectstore::Comparator;
using objectstore::ObjectList;
using objectstore::ObjectRef;
using objectstore::Slot;
using objectstore::StoreFetch;
using objectstore::StoreObject;
using objectstore::StorePredicate;
using platform::Value;

namespace {

/// The custom values of `owner` that meet the condition, read anew.
ObjectList fetchCustomValues(StoreObject& owner, const objectstore::PredicateRef& condition)
{
    if (!owner.context())
        return {};
    StoreFetch fetch(customValueSlots().entity,
        StorePredicate::all(
            {StorePredicate::compare("owner", Comparator::equal, Value(ObjectRef(&owner))), condition}));
    fetch.includesSubentities = false;
    auto found = owner.context()->runFetch(fetch);
    if (found)
        return std::move(*found);
    platform::log(
        fmt::format("Exception unwrapping property values (customProperties): {}", found.error().text));
    return {};
}

} // namespace

ObjectList ZROSRecord::propertyValuesWithKey(const Slot& key) { return objects(key); }

ObjectList ZROSRecord::sortedPropertyValuesWithKey(const Slot& key)
{
    ObjectList rows = propertyValuesWithKey(key);
    if (rows.size() < 2)
        return rows;
    const Slot& order = *key.destination->slot("orderingIndex");
    const auto orderOf = [&](const ObjectRef& row) { return row->integer(order); };
    if (!std::ranges::is_sorted(rows, {}, orderOf))
        std::ranges::stable_sort(rows, {}, orderOf);
    return rows;
}

ObjectRef ZROSRecord::propertyValueWithKey(const Slot& key, std::string_view uniqueId, ZRFetching fetching)
{
    const Slot& identifier = *key.destination->slot("uniqueId");
    const auto isWanted = [&](StoreObject& row) {
        return &row.entity() == key.destination && !row.isFault() && !row.isDeleted()
            && row.relatedKey(*key.inverse) == this->key() && row.text(identifier) == uniqueId;
    };
    if (fetching == ZRFetching::prevented) {
        const ObjectList held = context() ? context()->registeredObjects(isWanted) : ObjectList();
        return held.empty() ? nullptr : held.front();
    }
    for (const auto& row : propertyValuesWithKey(key))
        if (row->text(identifier) == uniqueId)
            return row;
    return nullptr;
}

ObjectList ZROSRecord::fetchPropertyValuesWithKey(const Slot& key, std::optional<std::string_view> uniqueId)
{
    if (key.destination == &customValueSlots().entity)
        return fetchCustomValues(*this,
            uniqueId ? StorePredicate::compare("uniqueId", Comparator::equal, Value(*uniqueId))
                     : StorePredicate::always());
    ObjectList rows = objects(key);
    const Slot& identifier = *key.destination->slot("uniqueId");
    std::erase_if(rows, [&](const ObjectRef& row) { return uniqueId && row->text(identifier) != *uniqueId; });
    return rows;
}

ObjectList ZROSRecord::allCustomPropertyValuesWithCustomProperty(StoreObject& definition)
{
    ObjectList rows = sortedPropertyValuesWithKey(slot("customProperties"));
    std::erase_if(rows, [&](const ObjectRef& row) {
        return row->relatedKey(customValueSlots().customProperty) != definition.key();
    });
    return rows;
}

ObjectList ZROSRecord::fetchCustomPropertyValuesWithCustomProperty(StoreObject& definition)
{
    return fetchCustomValues(
        *this, StorePredicate::compare("customProperty", Comparator::equal, Value(ObjectRef(&definition))));
}
