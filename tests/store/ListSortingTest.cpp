// How lists are sorted, by one thread and by several, and where a record is in them.
#include "store/ListWorld.h"

#include "core/ZRNameOrder.h"
#include "store/ZRManagedObjectContext.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

namespace test {

namespace {

using testing::ElementsAre;

/// Names that a sort may stumble over, more than once each.
constexpr std::string_view kNames[] = {"Ana", "ana", "Ána", "Ängla", "Zoë", "zoe", "Ødegård", "李", "안", "",
    "van der Berg", "van Dyk", "O'Neil", "ONeil", "\xF0\x9F\x8C\xB5", "e\xCC\x81mile", "\xC3\xA9mile",
    "Ana "};

class ListSorting : public testing::Test {
protected:
    /// That many people under a few dozen names, not in order.
    ZRRecordList crowd(std::size_t count)
    {
        std::mt19937 random(static_cast<unsigned>(count));
        const auto name = [&] { return kNames[random() % std::size(kNames)]; };
        ZRRecordList people;
        while (people.size() < count)
            people.push_back(named(roster, name(), name()));
        return people;
    }
    void sortByThreads(ZRRecordList& list)
    {
        locked(*roster, ZRAccess::read, [&]() ZR_NTS { cache->nts_threaded_sortMembers(list); });
    }
    /// The same list by comparisons of names alone.
    ZRRecordList sortedByNames(ZRRecordList list)
    {
        const ZRNameComparison comparison = _createCompartorContext();
        std::ranges::stable_sort(
            list, [&](const auto& a, const auto& b) { return ZRComparePeopleName(*b, *a, comparison) > 0; });
        return list;
    }

    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
    const Ref<ZRDBCache> cache = roster->dbCache();
};

} // namespace

// Equal names keep their order, so the one answer is exact.
TEST_F(ListSorting, GivesOneAnswerByAnyNumberOfThreads)
{
    for (const std::int64_t order : {0, 1})
        for (const std::size_t count : {0, 1, 2, 799, 800, 801, 802, 803, 1999}) {
            SCOPED_TRACE(std::to_string(count) + " people by order " + std::to_string(order));
            const NameSorting sorting(order);
            const ZRRecordList people = crowd(count), expected = sortedByNames(people);
            ZRRecordList byOne = people, bySeveral = people;
            cache->sortMembers(byOne);
            sortByThreads(bySeveral);
            EXPECT_TRUE(byOne == expected);
            EXPECT_TRUE(bySeveral == expected);
            EXPECT_EQ(cache->nameSorting(), order);
        }
}

// A process of another locale finds keys in the store that say nothing to it.
TEST_F(ListSorting, NeedsNoStoredKeys)
{
    roster->managedObjectContext()->setWritesCollationKeys(false);
    ZRRecordList people = crowd(801);
    const ZRRecordList expected = sortedByNames(people);
    sortByThreads(people);
    EXPECT_TRUE(people == expected);
}

TEST_F(ListSorting, PutsGroupsBeforePeopleAndWhoIsGoneBeforeThem)
{
    const auto bo = named(roster, "Bo"), gone = named(roster, "Ana"), nameless = named(roster, "");
    const auto late = group(roster, "zoo"), early = group(roster, "Ark");
    ZRRecordList list{bo, late, gone, early};
    roster->removeRecord(gone);
    cache->sortMembers(list);
    EXPECT_TRUE((list == ZRRecordList{gone, early, late, bo}));
    const NameSorting byFirstName(0);
    EXPECT_EQ(cache->insertionIndexForMember(*nameless, {early, late, bo}), 0) << "without a name";
}

// ---- places

TEST_F(ListSorting, FindsTheRightOneAmongEqualNames)
{
    ZRRecordList list{named(roster, "Ana")};
    for (int i = 0; i < 5; ++i)
        list.push_back(named(roster, "Bo"));
    list.push_back(named(roster, "Cy"));
    for (std::size_t i = 0; i < list.size(); ++i)
        EXPECT_EQ(cache->indexOfMember(list[i].get(), list), static_cast<ZRIndex>(i));
    EXPECT_EQ(cache->indexOfMember(named(roster, "Bo").get(), list), kZRNotFound);
    EXPECT_EQ(cache->indexOfMember(named(roster, "Zoe").get(), list), kZRNotFound);
    EXPECT_EQ(cache->indexOfMember(nullptr, list), kZRNotFound);
    EXPECT_EQ(cache->indexOfMember(list[0].get(), {}), kZRNotFound);
}

TEST_F(ListSorting, InsertsBeforeItsEqualsAndAppendsPastTheEnd)
{
    const ZRRecordList list{named(roster, "Bo"), named(roster, "Bo"), named(roster, "Di")};
    for (const auto& [name, place] :
        {std::pair<const char*, ZRIndex>{"Ana", 0}, {"Bo", 0}, {"Cy", 2}, {"Di", 2}, {"Ed", kZRNotFound}})
        EXPECT_EQ(cache->insertionIndexForMember(*named(roster, name), list), place) << name;
    EXPECT_EQ(cache->insertionIndexForMember(*list[0], {}), kZRNotFound);
}

TEST_F(ListSorting, TakesTheOrderThatItIsGiven)
{
    const auto a = named(roster, "Ana", "Zimmer"), b = named(roster, "Bo", "Abel");
    const ZRRecordList byLast{b, a};
    const NameSorting byFirstName(0);
    EXPECT_EQ(cache->indexOfMember(a.get(), byLast, 1), 1);
    EXPECT_EQ(cache->insertionIndexForMember(*named(roster, "Cy", "Moss"), byLast, 1), 1);
    EXPECT_EQ(cache->insertionIndexForMember(*named(roster, "Cy", "Moss"), {a, b}, kZRNotFound), kZRNotFound);
}

TEST_F(ListSorting, ComparesLikeTheReentrantSort)
{
    ZRNameComparison byLastName{.byLastName = true};
    const auto a = named(roster, "Ana", "Zimmer"), b = named(roster, "Bo", "Abel");
    const ZRRecord* left = a.get();
    const ZRRecord* right = b.get();
    EXPECT_EQ(bsd_ZRComparePeopleName(&byLastName, &left, &right), 1);
    EXPECT_EQ(bsd_ZRComparePeopleName(&byLastName, &right, &left), -1);
}

} // namespace test
