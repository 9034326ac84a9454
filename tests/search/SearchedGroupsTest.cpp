// Searches for the members of groups, and groups whose searches name each other.
#include "search/SearchWorld.h"

#include "core/ZRGroup.h"
#include "search/ZRSmartGroup.h"

namespace test {

namespace {

/// Groups that archives name are looked for in the shared roster, so these tests work in it.
class SearchedGroups : public SearchWorld {
protected:
    ~SearchedGroups() override
    {
        for (const auto& list : {shared->people(), shared->groups()})
            for (const auto& record : list)
                shared->removeRecord(record);
        shared->save();
    }

    Ref<ZRPerson> named(std::string_view name) const
    {
        return person(shared, {{kZRFirstNameProperty, name}});
    }
    Ref<ZRGroup> group(const std::vector<Ref<ZRPerson>>& members) const
    {
        auto made = ZRGroup::initWithRoster(shared);
        for (const auto& member : members)
            EXPECT_TRUE(made->addMember(*member));
        return made;
    }
    Ref<ZRGroup> smartGroup() const
    {
        return platform::refCast<ZRGroup>(
            ZRRecord::initWithUniqueId(ZRSmartGroup::recordClassDescription, std::nullopt, shared));
    }
    static void setSearch(const Ref<ZRGroup>& group, const Ref<ZRSearchElement>& search)
    {
        const auto data = search->archivedData();
        ASSERT_TRUE(data) << data.error().text;
        group->clearTemporaryCache();
        ASSERT_TRUE(group->setValue(Value::data(*data), kZRSearchElementProperty));
    }
    static Ref<ZRSearchElement> in(const Value& group, ZRSearchComparison comparison = kZRMemberOfGroup)
    {
        return where(kZRParentGroupsProperty, comparison, group);
    }
    static Ref<ZRSearchElement> called(std::string_view name)
    {
        return where(kZRFirstNameProperty, kZREqual, name);
    }

    Names inStore(const Ref<ZRSearchElement>& search) const
    {
        EXPECT_TRUE(shared->save());
        return namesOf(shared->recordsMatchingSearchElement(search));
    }
    Names inMemory(const Ref<ZRSearchElement>& search) const
    {
        return namesOf(shared->recordsMatchingSearchElementNoHinting(search));
    }
    void expectBoth(const Ref<ZRSearchElement>& search, const Names& names) const
    {
        EXPECT_EQ(inStore(search), names) << search->description();
        EXPECT_EQ(inMemory(search), names) << search->description();
    }

    const Ref<ZRRoster> shared = ZRRoster::sharedRoster();
};

} // namespace

TEST_F(SearchedGroups, HaveTheirMembersAndThoseBelow)
{
    const auto ana = named("Ana"), bo = named("Bo");
    named("Cy");
    const auto upper = group({ana}), lower = group({bo});
    ASSERT_TRUE(upper->addSubgroup(*lower));
    expectBoth(in(Value(upper)), {"Ana", "Bo"});
    expectBoth(in(Value(lower)), {"Bo"});
    expectBoth(in(Value(lower), kZRNotMemberOfGroup), {"Ana", "Cy"});
    expectBoth(in(kZRSmartGroupAnyGroupMembershipProperty), {"Ana", "Bo"});
    expectBoth(in(kZRSmartGroupAnyGroupMembershipProperty, kZRNotMemberOfGroup), {"Cy"});
    // A group is no member, though its number in the store may be that of one.
    expectBoth(
        ZRGroup::searchElementForProperty(kZRParentGroupsProperty, {}, {}, Value(upper), kZRMemberOfGroup),
        {});
}

TEST_F(SearchedGroups, ThatAreSmartHaveWhoeverMatches)
{
    named("Ana");
    named("Bo");
    const auto smart = smartGroup(), empty = smartGroup();
    setSearch(smart, called("Ana"));
    expectBoth(in(Value(smart)), {"Ana"});
    expectBoth(in(Value(empty)), {});
    // Members of smart groups count in the store only.
    EXPECT_EQ(inStore(in(kZRSmartGroupAnyGroupMembershipProperty)), Names{"Ana"});
    EXPECT_EQ(inMemory(in(kZRSmartGroupAnyGroupMembershipProperty)), Names());
}

TEST_F(SearchedGroups, ThatNameEachOtherEnd)
{
    named("Ana");
    const auto first = smartGroup(), second = smartGroup();
    ASSERT_TRUE(shared->save());
    setSearch(first, in(Value(second)));
    setSearch(second, in(Value(first)));
    expectBoth(in(Value(first)), {});

    setSearch(second,
        ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, {in(Value(first)), called("Ana")}));
    expectBoth(in(Value(first)), {"Ana"});
    // The marks of one question are gone with it.
    expectBoth(in(Value(first)), {"Ana"});
}

TEST_F(SearchedGroups, AreNamedByWhoReferencesThem)
{
    const auto plain = group({}), other = group({});
    const auto smart = smartGroup();
    ASSERT_TRUE(shared->save());
    setSearch(smart, in(Value(plain)));
    const auto search = in(Value(smart));
    EXPECT_TRUE(search->isReferencingGroup(*smart));
    EXPECT_TRUE(search->isReferencingGroup(*plain));
    EXPECT_FALSE(search->isReferencingGroup(*other));
    EXPECT_TRUE(search->usesGroupInDefinition(*smart));
    EXPECT_FALSE(search->usesGroupInDefinition(*plain));
    const auto both =
        ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, {search, in(Value(other)), search});
    EXPECT_EQ(both->groupsUsedInDefinition(), (std::vector<Ref<ZRGroup>>{smart, other}));
    EXPECT_TRUE(both->isReferencingGroup(*plain));
    EXPECT_TRUE(called("Ana")->groupsUsedInDefinition().empty());
}

TEST_F(SearchedGroups, AreFoundByTheirNames)
{
    const auto plain = group({}), smart = smartGroup();
    plain->setValue("Team", kZRGroupNameProperty);
    smart->setValue("Teams", kZRGroupNameProperty);
    ASSERT_TRUE(shared->save());
    const auto search = ZRRecord::searchElementForTerms(ZRGroup::recordClassDescription, {"team"});
    EXPECT_EQ(shared->recordsMatchingSearchElement(search).size(), 2u);
    EXPECT_EQ(shared->recordsMatchingSearchElementNoHinting(search).size(), 2u);
}

} // namespace test
