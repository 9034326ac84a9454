// Lists that are edited in place: after any edits they are as if sorted from nothing.
#include "store/ListWorld.h"

#include "core/ZRAllGroup.h"
#include "objectstore/StorePredicate.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRServices.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

namespace test {

namespace {

using testing::ElementsAre;
using Names = std::vector<std::string>;

class ListEdits : public testing::Test {
protected:
    Names people() { return namesOf(cache->allPeople()->records()); }
    Names members(const Ref<ZRGroup>& of) { return namesOf(cache->membersOfGroup(of)->records()); }
    void rename(const Ref<ZRPerson>& one, std::string_view first)
    {
        one->setValue(Value(first), kZRFirstNameProperty);
    }

    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
    const Ref<ZRDBCache> cache = roster->dbCache();
};

/// A user who edits at random, and tells the cache of it.
class Editor {
public:
    Editor(Ref<ZRRoster> roster, Ref<ZRDBCache> cache, unsigned seed)
        : _roster(std::move(roster)), _cache(std::move(cache)), _random(seed)
    {
        for (const char* name : {"family", "work", "club"})
            _groups.push_back(group(_roster, name));
        for (int i = 0; i < 60; ++i)
            add();
        look();
    }

    void edit()
    {
        void (Editor::*const edits[])() = {&Editor::add, &Editor::addMany, &Editor::remove, &Editor::rename,
            &Editor::rename, &Editor::renameSome, &Editor::renameMost, &Editor::join, &Editor::join,
            &Editor::leave, &Editor::renameAndLeave};
        (this->*edits[below(std::size(edits))])();
    }

    /// The first list that is wrong, and how.
    std::string look()
    {
        std::string fault = faultOf(_cache->allPeople()->records(), _roster->people(), *_cache);
        for (const auto& one : _groups)
            if (fault.empty())
                fault = faultOf(_cache->membersOfGroup(one)->records(), one->members(), *_cache);
        return fault;
    }

private:
    std::size_t below(std::size_t bound) { return _random() % bound; }
    const Ref<ZRPerson>& anyone() { return _people[below(_people.size())]; }
    const Ref<ZRGroup>& anyGroup() { return _groups[below(_groups.size())]; }
    std::string_view anyName()
    {
        constexpr std::string_view names[] = {"Ana", "Bo", "bo", "Émile", "Emile", "Zoe", "Øyvind", ""};
        return names[below(std::size(names))];
    }
    void changeName(const Ref<ZRPerson>& one)
    {
        one->setValue(Value(anyName()), below(2) ? kZRFirstNameProperty : kZRLastNameProperty);
    }
    Ref<ZRPerson> make() { return _people.emplace_back(named(_roster, anyName(), anyName())); }
    ZRRecordList some(std::size_t count)
    {
        ZRRecordList chosen(_people.begin(), _people.end());
        std::shuffle(chosen.begin(), chosen.end(), _random);
        chosen.resize(std::min(count, chosen.size()));
        return chosen;
    }

    void add() { _cache->addedMembers({make()}); }
    void addMany()
    {
        ZRRecordList added;
        for (std::size_t i = below(5); i > 0; --i)
            added.push_back(make());
        _cache->addedMembers(added);
    }
    void remove()
    {
        if (_people.size() < 30)
            return;
        const auto at = _people.begin() + static_cast<std::ptrdiff_t>(below(_people.size()));
        const Ref<ZRPerson> gone = *at;
        _people.erase(at);
        _roster->removeRecord(gone);
        _cache->deletedMembers({gone});
    }
    void rename()
    {
        const auto one = anyone();
        changeName(one);
        _cache->changedMember(one);
    }
    void renameAll(const ZRRecordList& chosen)
    {
        for (const auto& one : chosen)
            changeName(platform::refCast<ZRPerson>(one));
        _cache->changedMembers(chosen);
    }
    void renameSome() { renameAll(some(below(_people.size() / 3))); }
    void renameMost() { renameAll(some(_people.size() / 3 + below(_people.size() / 2))); }
    void join()
    {
        const auto chosen = some(below(4));
        const auto& joined = anyGroup();
        for (const auto& one : chosen)
            joined->addMember(static_cast<ZRPerson&>(*one));
        _cache->addedMembers(chosen, joined);
    }
    void leaveGroup(bool renamed)
    {
        const auto& left = anyGroup();
        const auto in = left->members();
        if (in.empty())
            return;
        const auto one = platform::refCast<ZRPerson>(in[below(in.size())]);
        left->removeMember(*one);
        if (renamed)
            changeName(one);
        _cache->removedMembers({one}, left);
        if (renamed)
            _cache->changedMember(one);
    }
    void leave() { leaveGroup(false); }
    void renameAndLeave() { leaveGroup(true); }

    const Ref<ZRRoster> _roster;
    const Ref<ZRDBCache> _cache;
    std::mt19937 _random;
    std::vector<Ref<ZRGroup>> _groups;
    std::vector<Ref<ZRPerson>> _people;
};

} // namespace

TEST_F(ListEdits, LeaveListsAsIfSortedFromNothing)
{
    constexpr int edits = 2000, lookEvery = 5;
    for (const std::int64_t order : {0, 1}) {
        const NameSorting sorting(order);
        const auto fresh = ZRRoster::emptyMemoryBackedRoster();
        Editor editor(fresh, fresh->dbCache(), 20 + static_cast<unsigned>(order));
        for (int i = 0; i < edits; ++i) {
            editor.edit();
            if (i % lookEvery == 0) {
                ASSERT_EQ(editor.look(), "") << "after edit " << i << " by order " << order;
            }
        }
        EXPECT_EQ(editor.look(), "");
    }
}

TEST_F(ListEdits, ShowInTheListThatIsHeld)
{
    const auto bo = named(roster, "Bo");
    const auto list = cache->allPeople();
    cache->addedMembers({named(roster, "Ana")});
    EXPECT_THAT(namesOf(list->records()), ElementsAre("Ana", "Bo"));
    EXPECT_EQ(cache->allPeople(), list);
    cache->addedMembers({bo});
    EXPECT_EQ(list->records().size(), 2) << "who is there does not come twice";
}

TEST_F(ListEdits, OfAThirdDropTheListButOfOneNever)
{
    ZRRecordList people{named(roster, "A")};
    const auto ofOne = cache->allPeople();
    cache->changedMembers(people);
    cache->changedMembers({});
    EXPECT_EQ(cache->allPeople(), ofOne);
    for (const char* name : {"B", "C", "D", "E", "F", "G"})
        people.push_back(named(roster, name));
    cache->clearAll();
    const auto list = cache->allPeople();
    cache->changedMembers({people[0], people[1]});
    EXPECT_EQ(cache->allPeople(), list) << "two of seven";
    cache->changedMembers({people[0], people[1], people[2]});
    EXPECT_NE(cache->allPeople(), list) << "three of seven";
}

TEST_F(ListEdits, OfWhoIsNotInAListLeaveItAlone)
{
    const auto ana = named(roster, "Ana"), bo = named(roster, "Bo");
    const auto club = group(roster, "club");
    club->addMember(*ana);
    EXPECT_THAT(members(club), ElementsAre("Ana"));
    cache->changedMember(bo);
    cache->changedMembers({bo, ana});
    cache->removedMembers({bo}, club);
    cache->removedMembers({ana}, nullptr);
    EXPECT_THAT(members(club), ElementsAre("Ana"));
}

// ---- groups

TEST_F(ListEdits, OfMembersGoToTheirGroupsToo)
{
    const auto club = group(roster, "club"), inner = group(roster, "inner");
    const auto ana = named(roster, "Ana"), bo = named(roster, "Bo");
    club->addMember(*bo);
    club->addSubgroup(*inner);
    EXPECT_THAT(members(club), ElementsAre("inner", "Bo"));
    club->addMember(*ana);
    cache->addedMembers({ana}, club);
    rename(bo, "Abe");
    cache->changedMember(bo);
    EXPECT_THAT(members(club), ElementsAre("inner", "Abe", "Ana"));
    EXPECT_EQ(members(nullptr), Names{});
}

TEST_F(ListEdits, OfTheGroupOfAllAreThoseOfAllPeople)
{
    const auto everybody = ZRAllGroup::specialGroupForRoster(roster);
    named(roster, "Bo");
    const auto list = cache->membersOfGroup(everybody);
    EXPECT_EQ(list, cache->allPeople());
    cache->addedMembers({named(roster, "Ana")});
    cache->addedMembers({named(roster, "Cy")}, everybody);
    EXPECT_THAT(namesOf(list->records()), ElementsAre("Ana", "Bo")) << "one list, told of once";
}

// Who is in a smart group changes without an edit of it.
TEST_F(ListEdits, AreNotWaitedForBySmartGroups)
{
    const auto smart = groupOf(ZRSmartGroup::recordClassDescription, roster, "Bee"),
               plain = group(roster, "club");
    EXPECT_NE(cache->membersOfGroup(smart), cache->membersOfGroup(smart));
    EXPECT_EQ(cache->membersOfGroup(plain), cache->membersOfGroup(plain));
}

TEST_F(ListEdits, OfGroupsKeepThemInOrder)
{
    const auto zoo = group(roster, "zoo"), ark = group(roster, "Ark");
    const auto shared = groupOf(ZRSubscribedGroup::recordClassDescription, roster, "Ant"),
               smart = groupOf(ZRSmartGroup::recordClassDescription, roster, "Bee");
    EXPECT_THAT(namesOf(cache->allGroups()), ElementsAre("Ark", "zoo", "Bee", "Ant"));
    EXPECT_THAT(namesOf(cache->allSimpleGroups()), ElementsAre("Ark", "zoo", "Ant"));
    EXPECT_THAT(namesOf(cache->enclosedSubscriptionGroupsForAllGroup(*shared)), ElementsAre("Ant"));
    const auto more = group(roster, "Moo");
    EXPECT_EQ(cache->_insertionIndexForGroup(*more), 1);
    cache->addedGroups({more, ark});
    zoo->setValue(Value("Bat"), kZRGroupNameProperty);
    cache->changedGroups({zoo});
    EXPECT_THAT(namesOf(cache->allGroups()), ElementsAre("Ark", "Bat", "Moo", "Bee", "Ant"));
    cache->deletedGroups({ark, smart});
    EXPECT_THAT(namesOf(cache->allGroups()), ElementsAre("Bat", "Moo", "Ant"));
}

// ---- subscriptions

TEST_F(ListEdits, KeepTheListsOfSubscriptionsApart)
{
    ZRServices::registered().peopleAtRemoteLocation = [](ZRRoster& asked, const std::string& location) {
        ZRRecordList all =
            asked.recordsForClass(ZRSubscribedPerson::recordClassDescription, nullptr, {}, true);
        std::erase_if(all, [&](const auto& one) { return one->remoteLocation() != location; });
        return all;
    };
    const auto bo = named(roster, "Bo"), cy = subscribedPerson(roster, "Cy", "//disk/cy"),
               abe = subscribedPerson(roster, "Abe", "//disk/cy"),
               di = subscribedPerson(roster, "Di", "//di");
    const auto there = cache->allPeopleForRemoteLocation("//disk/cy");
    EXPECT_THAT(people(), ElementsAre("Bo"));
    EXPECT_THAT(namesOf(there->records()), ElementsAre("Abe", "Cy"));
    const auto ana = subscribedPerson(roster, "Ana", "//disk/cy");
    cache->addedMembers({ana});
    rename(abe, "Zoe");
    cache->changedMember(abe);
    EXPECT_THAT(namesOf(there->records()), ElementsAre("Ana", "Cy", "Zoe"));
    EXPECT_THAT(people(), ElementsAre("Bo"));
    const auto local = cache->allPeople();
    cache->clearAllForRemoteLocation("//disk/cy");
    EXPECT_EQ(cache->allPeople(), local);
    EXPECT_NE(cache->allPeopleForRemoteLocation("//disk/cy"), there);
    ZRServices::registered().peopleAtRemoteLocation = nullptr;
    EXPECT_THAT(namesOf(cache->allPeopleForRemoteLocation("//di")->records()), ElementsAre())
        << "without the service";
}

// ---- what is dropped

TEST_F(ListEdits, AreForgottenWithTheirLists)
{
    const auto club = group(roster, "club");
    const auto all = cache->allPeople(), in = cache->membersOfGroup(club);
    cache->clearCacheForGroup(*club);
    EXPECT_NE(cache->membersOfGroup(club), in);
    EXPECT_EQ(cache->allPeople(), all);
    cache->clearAll();
    EXPECT_NE(cache->allPeople(), all);
}

// Lists own records, and records own their roster: were lists owned by it too, the leak check would tell.
TEST_F(ListEdits, KeepNoRosterAlive)
{
    auto other = ZRRoster::emptyMemoryBackedRoster();
    auto lists = other->dbCache();
    EXPECT_EQ(other->dbCache(), lists) << "one for all who ask";
    named(other, "Ana");
    EXPECT_EQ(lists->allPeople()->records().size(), 1);
    const auto* const kept = other.get();
    const auto one = other->recordForUniqueId(lists->allPeople()->records()[0]->uniqueId());
    other = nullptr;
    lists = nullptr;
    EXPECT_EQ(one->roster().get(), kept) << "kept by its record alone";
}

} // namespace test
