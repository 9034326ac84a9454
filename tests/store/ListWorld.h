// A roster with lists: people and groups by name, and what a list must hold.
#pragma once

#include "core/ZRGroup.h"
#include "store/RosterWorld.h"
#include "store/ZRDBCache.h"

#include <string>
#include <vector>

namespace test {

/// Makes kZRNameSorting that of the user for as long as it lives.
class NameSorting {
public:
    explicit NameSorting(std::int64_t sorting);
    ~NameSorting();
    NameSorting(const NameSorting&) = delete;
    NameSorting& operator=(const NameSorting&) = delete;
};

Ref<ZRPerson> named(const Ref<ZRRoster>& roster, std::string_view first, std::string_view last = {});
/// A card that came with the subscription to `location`.
Ref<ZRPerson> subscribedPerson(
    const Ref<ZRRoster>& roster, std::string_view first, std::string_view location);
Ref<ZRGroup> groupOf(const ZRRecordClass& kind, const Ref<ZRRoster>& roster, std::string_view name);
inline Ref<ZRGroup> group(const Ref<ZRRoster>& roster, std::string_view name)
{
    return groupOf(ZRGroup::recordClassDescription, roster, name);
}

/// The names of people and groups, in order.
std::vector<std::string> namesOf(const ZRRecordList& records);

/// What is wrong with a list that ought to hold `expected`, sorted from nothing; empty for nothing. Records
/// of equal names may stand in any order, and each must be found at its place.
std::string faultOf(const ZRRecordList& list, ZRRecordList expected, const ZRDBCache& cache);

} // namespace test
