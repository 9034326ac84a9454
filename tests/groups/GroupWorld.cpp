// Groups for tests: made in one line, and told by the names of what is in them.
#include "groups/GroupWorld.h"

#include "store/ZRManagedObjectContext.h"

#include <algorithm>

namespace test {

Ref<ZRGroup> group(const Ref<ZRRoster>& roster, std::string_view name)
{
    auto made = ZRGroup::initWithRoster(roster);
    made->setValue(Value(name), kZRGroupNameProperty);
    return made;
}

Ref<ZRPerson> named(
    const Ref<ZRRoster>& roster, std::string_view firstName, const std::vector<std::string>& addresses)
{
    auto made = person(roster, {{kZRFirstNameProperty, Value(firstName)}});
    std::vector<Entry> entries;
    for (const auto& address : addresses)
        entries.push_back({Value(address), kZRWorkLabel});
    if (!entries.empty())
        made->setValue(multiValue(entries), kZREmailProperty);
    return made;
}

std::string emailIdentifier(const ZRPerson& person, ZRIndex index)
{
    return person.valueForProperty(kZREmailProperty).as<ZRMultiValue>()->identifierAtIndex(index);
}

std::vector<std::string> namesOf(const ZRRecordList& records)
{
    std::vector<std::string> names;
    for (const auto& record : records)
        if (const auto* one = dynamic_cast<const ZRGroup*>(record.get()))
            names.push_back(one->name());
        else
            names.push_back(static_cast<const ZRPerson&>(*record)._fullName());
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> namesOf(const ZRRecordSet& records)
{
    return namesOf(ZRRecordList(records.begin(), records.end()));
}

objectstore::ObjectList GroupTest::rows(const char* entity) const
{
    return roster->managedObjectContext()->zrObjectsForPredicate(nullptr, entity);
}

} // namespace test
