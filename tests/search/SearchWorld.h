// A world for searches: a home with an empty shared roster, and a roster in memory for each test.
#pragma once

#include "search/ZRSearchElementConjunction.h"
#include "search/ZRSearchElementMatch.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

namespace test {

using Names = std::vector<std::string>;

/// A search for people by a property.
Ref<ZRSearchElement> where(std::string_view property, ZRSearchComparison comparison, const Value& value,
    ZRSearchElementMatch::TextView label = std::nullopt, ZRSearchElementMatch::TextView key = std::nullopt);
Ref<ZRSearchElement> wholeCard(const Value& value, ZRSearchComparison comparison);

/// The first names of those found, sorted.
Names namesOf(const ZRRecordList& records);

/// Has the process's shared roster in a home of its own, opened once; tests fill a roster in memory.
class SearchWorld : public testing::Test {
protected:
    static void SetUpTestSuite();

    /// Found by the store, and found in memory.
    Names found(const Ref<ZRSearchElement>& search) const;
    Names foundInMemory(const Ref<ZRSearchElement>& search) const;

    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace test
