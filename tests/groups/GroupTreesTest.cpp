// Groups within groups: circles are refused at every depth, and big trees are walked once.
#include "groups/GroupWorld.h"

#include "objectstore/StoreContext.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"

namespace test {

namespace {

class GroupTrees : public GroupTest {
protected:
    /// A line of groups, each in the one before.
    std::vector<Ref<ZRGroup>> line(int length)
    {
        std::vector<Ref<ZRGroup>> groups{group(roster, "0")};
        for (int depth = 1; depth < length; ++depth) {
            groups.push_back(group(roster, std::to_string(depth)));
            EXPECT_TRUE(groups[groups.size() - 2]->addSubgroup(*groups.back())) << depth;
        }
        return groups;
    }
    ZRRecordSet membersRecursive(const Ref<ZRGroup>& top)
    {
        return locked(*roster, ZRAccess::read, [&]() ZR_NTS { return top->nts_MembersRecursive(); });
    }
    /// As if two processes had each put one into the other and saved.
    void makeCircle(const Ref<ZRGroup>& a, const Ref<ZRGroup>& b)
    {
        for (const auto& [above, below] : {std::pair(a, b), std::pair(b, a)})
            above->zrDatabaseImpl()->addObject(
                above->zrDatabaseImpl()->slot("childGroups"), *below->zrDatabaseImpl());
    }
};

} // namespace

TEST_F(GroupTrees, RefuseCirclesAtEveryDepth)
{
    const auto groups = line(50);
    for (const auto saved : {false, true}) {
        for (std::size_t i = 0; i < groups.size(); ++i) {
            EXPECT_FALSE(groups[i]->addSubgroup(*groups[i])) << i << " into itself";
            EXPECT_FALSE(groups.back()->addSubgroup(*groups[i])) << "ancestor " << i << " into the last";
            EXPECT_FALSE(groups.front()->addSubgroup(*groups[i])) << "descendant " << i << " into the first";
        }
        EXPECT_TRUE(groups.front()->recursiveContainsGroup(*groups.back())) << saved;
        EXPECT_FALSE(groups.back()->recursiveContainsGroup(*groups.front())) << saved;
        EXPECT_FALSE(groups.front()->recursiveContainsGroup(*groups.front())) << saved;
        EXPECT_EQ(namesOf(groups[0]->subgroups()), std::vector<std::string>{"1"}) << saved;
        ASSERT_TRUE(roster->save());
    }
    // What was taken out may come back, and then elsewhere.
    EXPECT_TRUE(groups[10]->removeSubgroup(*groups[11]));
    EXPECT_FALSE(groups[0]->recursiveContainsGroup(*groups[20]));
    EXPECT_TRUE(groups[20]->addSubgroup(*groups[0]));
    EXPECT_FALSE(groups[10]->addSubgroup(*groups[11]));
}

TEST_F(GroupTrees, MayMeetAgainBelow)
{
    const auto top = group(roster, "top"), left = group(roster, "left"), right = group(roster, "right"),
               shared = group(roster, "shared");
    EXPECT_TRUE(left->addSubgroup(*shared));
    EXPECT_TRUE(right->addSubgroup(*shared));
    EXPECT_TRUE(top->addSubgroups({left, right}));
    EXPECT_THAT(namesOf(shared->parentGroups()), ElementsAre("left", "right"));
    EXPECT_THAT(namesOf(top->allAssociatedMembersAndSubgroups()), ElementsAre("left", "right", "shared"));
    EXPECT_FALSE(top->addSubgroup(*shared));
}

// 2,000 groups, 50 deep and 40 wide, with a member in each.
TEST_F(GroupTrees, OfTwoThousandGroupsAreWalkedWhole)
{
    constexpr int depth = 50, width = 40;
    const auto root = group(roster, "root");
    std::vector<Ref<ZRGroup>> above{root};
    Ref<ZRGroup> deepest;
    for (int level = 0; level < depth; ++level) {
        std::vector<Ref<ZRGroup>> here;
        for (int i = 0; i < width; ++i) {
            here.push_back(group(roster, std::to_string(level) + "." + std::to_string(i)));
            ASSERT_TRUE(here.back()->addMember(*named(roster, "m")));
            ASSERT_TRUE(above[static_cast<std::size_t>(i) % above.size()]->addSubgroup(*here.back()));
        }
        deepest = here.back();
        above = std::move(here);
    }
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(membersRecursive(root).size(), 2000U);
    EXPECT_EQ(root->allAssociatedMembersAndSubgroups().size(), 4000U);
    EXPECT_EQ(root->allAssociatedMembersAndSubgroups(true).size(), 4000U);
    EXPECT_TRUE(root->recursiveContainsGroup(*deepest));
    EXPECT_FALSE(deepest->addSubgroup(*root));
}

TEST_F(GroupTrees, EndWhereProcessesMadeACircle)
{
    const auto a = group(roster, "a"), b = group(roster, "b"), other = group(roster, "other");
    makeCircle(a, b);
    ASSERT_TRUE(roster->save());
    a->addMember(*named(roster, "Ana", {"ana@example.com"}));
    b->addMember(*named(roster, "Bo"));
    EXPECT_THAT(namesOf(membersRecursive(a)), ElementsAre("Ana", "Bo"));
    EXPECT_THAT(namesOf(a->allAssociatedMembersAndSubgroups()), ElementsAre("Ana", "Bo", "a", "b"));
    EXPECT_THAT(b->distributionStringsForMembers(), ElementsAre("Ana <ana@example.com>"));
    EXPECT_TRUE(a->recursiveContainsGroup(*b));
    EXPECT_FALSE(a->recursiveContainsGroup(*other));
    EXPECT_TRUE(other->addSubgroup(*a));
    EXPECT_FALSE(b->addSubgroup(*other));
}

TEST_F(GroupTrees, TellWhoContainsARecord)
{
    const auto top = group(roster, "top"), below = group(roster, "below");
    const auto ana = named(roster, "Ana");
    top->addSubgroup(*below);
    below->addMember(*ana);
    EXPECT_TRUE(below->_isParentGroupOfRecord(*ana));
    EXPECT_FALSE(top->_isParentGroupOfRecord(*ana)) << "not one level deep";
    EXPECT_TRUE(top->_isParentGroupOfRecord(*below));
    EXPECT_THAT(namesOf(ana->parentGroups()), ElementsAre("below"));
    EXPECT_THAT(namesOf(top->membersAndSubgroups()), ElementsAre("below"));
}

} // namespace test
