// How ids and names of the people that a search finds are read.
#include "search/ZRPeopleMatching.h"

#include "core/NamedColumns.h"
#include "core/ZRFailure.h"
#include "core/ZRPerson.h"
#include "objectstore/ColumnFetch.h"
#include "platform/run/Log.h"
#include "search/ZRSearchElement.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>

using objectstore::FieldValue;
using platform::Ref;

namespace {

/// Reads those columns of the people that match; false when the store cannot be asked.
bool nts_readColumns(ZRRoster& roster, const ZRSearchElement& search, std::span<const std::string_view> keys,
    const objectstore::ColumnVisitor& visit) ZR_NTS
{
    const auto classes = search.searchRecordClasses();
    if (std::ranges::none_of(classes,
            [](const auto* recordClass) { return recordClass == &ZRPerson::recordClassDescription; }))
        return true;
    objectstore::StoreFetch fetch(contactSlots().entity);
    fetch.predicate = search._predicateForImplClass(*fetch.entity, roster);
    if (!fetch.predicate)
        return false;
    fetch.includesSubentities = false;
    const auto context = roster.managedObjectContext();
    if (const auto read = objectstore::fetchColumns(*context, fetch, keys, visit); !read)
        platform::log(fmt::format("Cannot search the people: {}", read.error().text));
    return true;
}

ZRRecordList peopleMatching(ZRRoster& roster, const Ref<ZRSearchElement>& search)
{
    ZRRecordList records = roster.recordsMatchingSearchElement(search);
    std::erase_if(records, [](const auto& record) { return !dynamic_cast<const ZRPerson*>(record.get()); });
    return records;
}

ZRFoundPerson nameOf(const ZRPerson& person)
{
    return {person.uniqueId(), person.compositeName(),
        std::string(person.valueForProperty(kZRNicknameProperty).asText())};
}

/// Names the cards whose rows do not: by an address of theirs, or as nobody.
void nameTheRest(ZRRoster& roster, std::vector<ZRFoundPerson>& found)
{
    for (auto& person : found)
        if (person.name.empty())
            if (const auto record = platform::refCast<ZRPerson>(roster.recordForUniqueId(person.uniqueId)))
                person.name = record->compositeName();
}

} // namespace

std::vector<ZRFoundPerson> ZRNamesOfPeopleMatching(ZRRoster& roster, const Ref<ZRSearchElement>& search)
{
    zrRequire(bool(search), "search is nil");
    std::vector<ZRFoundPerson> found;
    const bool isAnswered = locked(roster, ZRAccess::read, [&]() ZR_NTS {
        std::vector<std::string_view> keys(NamedColumns::keys.begin(), NamedColumns::keys.end());
        keys.push_back("uniqueId");
        NamedColumns card(roster.defaultNameOrdering());
        return nts_readColumns(
            roster, *search, keys, [&](std::int64_t, std::span<const FieldValue> fields) ZR_NTS {
                card.set(fields);
                found.push_back({std::string(fields.back().bytes),
                    card.isUnnamed() ? std::string() : nameParts::realCompositeName(card, true),
                    card.text(zr::kZRNicknameProperty)});
            });
    });
    if (isAnswered)
        nameTheRest(roster, found);
    else
        for (const auto& person : peopleMatching(roster, search))
            found.push_back(nameOf(static_cast<const ZRPerson&>(*person)));
    return found;
}

std::vector<std::string> ZRIdsOfPeopleMatching(ZRRoster& roster, const Ref<ZRSearchElement>& search)
{
    zrRequire(bool(search), "search is nil");
    std::vector<std::string> ids;
    const bool isAnswered = locked(roster, ZRAccess::read, [&]() ZR_NTS {
        const std::string_view key = "uniqueId";
        return nts_readColumns(
            roster, *search, {&key, 1}, [&](std::int64_t, std::span<const FieldValue> fields) {
                ids.emplace_back(fields.front().bytes);
            });
    });
    if (!isAnswered)
        for (const auto& person : peopleMatching(roster, search))
            ids.push_back(person->uniqueId());
    return ids;
}
