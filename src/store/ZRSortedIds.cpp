// How the ids of the people are read in order.
#include "store/ZRSortedIds.h"

#include "core/ZRNameOrder.h"
#include "objectstore/StoreContext.h"
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

std::vector<std::string> nts_sortedIds(ZRManagedObjectContext& context, ZRNameOrder order) ZR_NTS
{
    const bool byLastName = order == ZRNameOrder::preferred ? _createCompartorContext().byLastName
                                                            : order == ZRNameOrder::lastName;
    StoreFetch fetch(contactSlots().entity);
    fetch.includesSubentities = false;
    fetch.sortKeys = {{byLastName ? "sortingLastKey" : "sortingFirstKey"}};
    const auto found = context.fetchValues(fetch, "uniqueId");
    std::vector<std::string> ids;
    if (!found)
        platform::log(fmt::format("Cannot list the people: {}", found.error().text));
    else
        for (const auto& id : *found)
            ids.emplace_back(id.asText());
    return ids;
}

} // namespace

std::vector<std::string> ZRSortedIdsOfPeople(ZRRoster& roster, ZRNameOrder order)
{
    return locked(roster, ZRAccess::read, [&]() ZR_NTS {
        const auto context = roster.managedObjectContext();
        return context->hasCollationKeys() ? nts_sortedIds(*context, order)
                                           : idsOfSortedRecords(roster, order);
    });
}
