// Groups for tests: made in one line, and told by the names of what is in them.
#pragma once

#include "core/ZRGroup.h"
#include "objectstore/StoreObject.h"
#include "store/RosterWorld.h"

#include <gmock/gmock.h>

namespace test {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A new group of that name.
Ref<ZRGroup> group(const Ref<ZRRoster>& roster, std::string_view name);
/// A new person with that first name, and an address for each of `addresses`; the first is primary.
Ref<ZRPerson> named(
    const Ref<ZRRoster>& roster, std::string_view firstName, const std::vector<std::string>& addresses = {});
/// The identifier of the entry at `index` among the e-mail addresses.
std::string emailIdentifier(const ZRPerson& person, ZRIndex index);
/// Of people the full names, of groups the names, sorted.
std::vector<std::string> namesOf(const ZRRecordList& records);
std::vector<std::string> namesOf(const ZRRecordSet& records);

/// A roster in memory, and what is stored there.
class GroupTest : public testing::Test {
protected:
    objectstore::ObjectList rows(const char* entity) const;

    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace test
