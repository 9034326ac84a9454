// How the tests of lists make people and groups, and look at a list.
#include "store/ListWorld.h"

#include "core/ZRNameOrder.h"
#include "platform/files/ZRUserDefaults.h"

#include <fmt/format.h>

#include <algorithm>

namespace test {

NameSorting::NameSorting(std::int64_t sorting)
{
    ZRUserDefaults::rosterPreferences()->setObject(Value(sorting), kZRNameSorting);
}

NameSorting::~NameSorting() { ZRUserDefaults::rosterPreferences()->setObject(Value(), kZRNameSorting); }

Ref<ZRPerson> named(const Ref<ZRRoster>& roster, std::string_view first, std::string_view last)
{
    std::vector<std::pair<std::string_view, Value>> properties;
    if (!first.empty())
        properties.emplace_back(kZRFirstNameProperty, Value(first));
    if (!last.empty())
        properties.emplace_back(kZRLastNameProperty, Value(last));
    return person(roster, properties);
}

Ref<ZRPerson> subscribedPerson(const Ref<ZRRoster>& roster, std::string_view first, std::string_view location)
{
    auto made = ZRRecord::initWithUniqueId(ZRSubscribedPerson::recordClassDescription, std::nullopt, roster);
    made->setValue(Value(first), kZRFirstNameProperty);
    made->setValue(multiValue({{Value(location), kZRSubscribeLabel}}), kZRRemoteLocationProperty);
    return platform::refCast<ZRPerson>(made);
}

Ref<ZRGroup> groupOf(const ZRRecordClass& kind, const Ref<ZRRoster>& roster, std::string_view name)
{
    auto made = ZRRecord::initWithUniqueId(kind, std::nullopt, roster);
    made->setValue(Value(name), kZRGroupNameProperty);
    return platform::refCast<ZRGroup>(made);
}

namespace {

// Not the name of the temporary cache, which does not follow an edit.
std::string nameOf(const ZRRecord& record)
{
    const auto* card = dynamic_cast<const ZRPerson*>(&record);
    return card ? card->_realCompositeNameIncludingAuxiliaryElements(false)
                : static_cast<const ZRGroup&>(record).name();
}

} // namespace

std::vector<std::string> namesOf(const ZRRecordList& records)
{
    std::vector<std::string> names;
    for (const auto& record : records)
        names.push_back(nameOf(*record));
    return names;
}

// The names are compared one pair at a time, not by the keys that a list is sorted by.
std::string faultOf(const ZRRecordList& list, ZRRecordList expected, const ZRDBCache& cache)
{
    const ZRNameComparison comparison = _createCompartorContext();
    for (std::size_t i = 1; i < list.size(); ++i)
        if (ZRComparePeopleName(*list[i - 1], *list[i], comparison) > 0)
            return fmt::format("{} at {} stands before {}", nameOf(*list[i - 1]), i - 1, nameOf(*list[i]));
    for (std::size_t i = 0; i < list.size(); ++i)
        if (cache.indexOfMember(list[i].get(), list) != static_cast<ZRIndex>(i))
            return fmt::format("{} at {} is not found there", nameOf(*list[i]), i);
    ZRRecordList all = list;
    std::ranges::sort(all, {}, &Ref<ZRRecord>::get);
    std::ranges::sort(expected, {}, &Ref<ZRRecord>::get);
    return all == expected ? "" : fmt::format("{} records, not the {} expected", all.size(), expected.size());
}

} // namespace test
