// How the ids of the people are read.
#include "store/ZRIdsOfPeople.h"

#include "core/ZRNameOrder.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

using objectstore::StoreFetch;

namespace {

/// Where the rows have no sort columns for this locale, records must say how they sort.
std::vector<std::string> idsOfSortedRecords(ZRRoster& roster, ZRNameOrder order)
{
    std::vector<std::string> ids;
    for (const auto& person : roster.sortedPeople(order, 0))
        ids.push_back(person->uniqueId());
    return ids;
}

} // namespace

std::vector<std::string> ZRIdsOfPeople(ZRRoster& roster, std::optional<ZRNameOrder> order)
{
    return locked(roster, ZRAccess::read, [&]() ZR_NTS {
        const auto context = roster.managedObjectContext();
        if (order && !context->hasCollationKeys())
            return idsOfSortedRecords(roster, *order);
        StoreFetch fetch(contactSlots().entity);
        fetch.includesSubentities = false;
        if (order)
            fetch.sortKeys = {
                {zrComparisonInOrder(*order).byLastName ? "sortingLastKey" : "sortingFirstKey"}};
        const auto found = context->fetchValues(fetch, "uniqueId");
        std::vector<std::string> ids;
        if (!found)
            platform::log(fmt::format("Cannot list the people: {}", found.error().text));
        else
            for (const auto& id : *found)
                ids.emplace_back(id.asText());
        return ids;
    });
}
