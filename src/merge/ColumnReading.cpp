// How columns and records are read, a hold of the lock at a time.
#include "merge/ColumnReading.h"

#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

using platform::Ref;

namespace merge {

namespace {

/// Few enough for little memory, and enough for few fetches.
constexpr std::size_t kAtATime = 500;

} // namespace

void readColumns(ZRRoster& roster, const objectstore::Entity& entity,
    const std::vector<std::string_view>& keys, const objectstore::ColumnVisitor& visit)
{
    locked(roster, ZRAccess::read, [&]() ZR_NTS {
        const auto context = roster.managedObjectContext();
        if (!context)
            return;
        objectstore::StoreFetch fetch(entity);
        fetch.includesSubentities = false;
        if (const auto done = objectstore::fetchColumns(*context, fetch, keys, visit); !done)
            platform::log(fmt::format("Cannot look for duplicates: {}", done.error().text));
    });
}

ZRRecordList readPeople(ZRRoster& roster, const std::vector<std::string>& uniqueIds,
    const std::vector<std::string_view>& properties)
{
    const ZRRecordList people = roster.recordsForUniqueIds(uniqueIds);
    if (properties.empty())
        roster.prefetchDataForRecords(people);
    else
        roster.prefetchDataForRecords(people, properties);
    return people;
}

void forEachPerson(ZRRoster& roster, const std::vector<std::string>& uniqueIds,
    const std::vector<std::string_view>& properties, const std::function<bool(const Ref<ZRPerson>&)>& visit)
{
    for (std::size_t from = 0; from < uniqueIds.size(); from += kAtATime) {
        const auto first = uniqueIds.begin() + static_cast<std::ptrdiff_t>(from);
        const auto count = std::min(kAtATime, uniqueIds.size() - from);
        const std::vector<std::string> some(first, first + static_cast<std::ptrdiff_t>(count));
        for (const auto& record : readPeople(roster, some, properties))
            if (const auto person = platform::refCast<ZRPerson>(record); person && !visit(person))
                return;
    }
}

} // namespace merge
