// A world for searches: a home with an empty shared roster, and a roster in memory for each test.
#include "search/SearchWorld.h"

#include <algorithm>
#include <cstdlib>

namespace test {

Ref<ZRSearchElement> where(std::string_view property, ZRSearchComparison comparison, const Value& value,
    ZRSearchElementMatch::TextView label, ZRSearchElementMatch::TextView key)
{
    return ZRPerson::searchElementForProperty(property, label, key, value, comparison);
}

Ref<ZRSearchElement> wholeCard(const Value& value, ZRSearchComparison comparison)
{
    return ZRPerson::searchElementForProperty(std::nullopt, std::nullopt, std::nullopt, value, comparison);
}

Names namesOf(const ZRRecordList& records)
{
    Names names;
    for (const auto& record : records)
        names.emplace_back(record->valueForProperty(kZRFirstNameProperty).asText());
    std::ranges::sort(names);
    return names;
}

void SearchWorld::SetUpTestSuite()
{
    // The directories of a process are read once: the first suite makes them.
    static const Home home;
    static const auto shared = [] {
        for (const auto& [variable, folder] : home.stage().environment)
            setenv(variable.c_str(), folder.c_str(), 1);
        return openShared();
    }();
    ASSERT_TRUE(shared);
}

Names SearchWorld::found(const Ref<ZRSearchElement>& search) const
{
    return namesOf(roster->recordsMatchingSearchElement(search));
}

Names SearchWorld::foundInMemory(const Ref<ZRSearchElement>& search) const
{
    return namesOf(roster->recordsMatchingSearchElementNoHinting(search));
}

} // namespace test
