// A card that is being made: shown before it is in the roster, discarded when it stays empty.
#include "store/ListWorld.h"

#include "store/ZRServices.h"

#include <gmock/gmock.h>

namespace test {

namespace {

using testing::ElementsAre;

/// Lists with somebody who looks at them.
class ShownLists final : public ZRDBCache {
public:
    explicit ShownLists(Ref<ZRRoster> roster) : ZRDBCache(std::move(roster)) { }
    void updateMembersSelection(const ZRRecordList& members) override { selected = members; }
    ZRRecordList selected;

private:
    ~ShownLists() override = default;
};

class NewPerson : public testing::Test {
protected:
    NewPerson()
    {
        services.performNewPerson = [this](const auto& person, const auto& in, std::string_view name) {
            steps +=
                std::string(name) + " of " + person->compositeName() + (in ? " in " + in->name() : "") + "; ";
        };
        services.markRecordWithGroupSubscription = [this](ZRGroup& in, ZRRecord&) {
            steps += "marked by " + in.name() + "; ";
        };
    }
    ~NewPerson() override
    {
        services.performNewPerson = nullptr;
        services.markRecordWithGroupSubscription = nullptr;
    }

    std::vector<std::string> people() { return namesOf(cache->allPeople()->records()); }
    std::vector<std::string> members(const Ref<ZRGroup>& of)
    {
        return namesOf(cache->membersOfGroup(of)->records());
    }
    /// A card outside the roster, as somebody makes who does not know yet whether it stays.
    Ref<ZRPerson> draft() const { return named(elsewhere, ""); }
    static void name(const Ref<ZRPerson>& card, std::string_view first)
    {
        card->setValue(Value(first), kZRFirstNameProperty);
    }

    ZRServices& services = ZRServices::registered();
    std::string steps;
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster(),
                        elsewhere = ZRRoster::emptyMemoryBackedRoster();
    const Ref<ShownLists> cache = ZRDBCache::initWithRoster<ShownLists>(roster);
    const Ref<ZRPerson> bo = named(roster, "Bo");
    const Ref<ZRGroup> club = group(roster, "club");
};

} // namespace

TEST_F(NewPerson, ShowsInTheListsBeforeItIsInTheRoster)
{
    const auto card = draft();
    EXPECT_THAT(people(), ElementsAre("Bo"));
    EXPECT_THAT(members(club), ElementsAre());
    cache->startEditingNewPerson(card, club);
    EXPECT_TRUE(cache->isNewPerson(card.get()));
    EXPECT_FALSE(cache->isNewPerson(bo.get()));
    EXPECT_FALSE(cache->isNewPerson(nullptr));
    EXPECT_THAT(cache->selected, ElementsAre(card));
    EXPECT_THAT(people(), ElementsAre("", "Bo"));
    EXPECT_THAT(members(club), ElementsAre(""));
    cache->clearAll();
    EXPECT_THAT(people(), ElementsAre("", "Bo")) << "also in lists that are made meanwhile";
    EXPECT_THAT(members(club), ElementsAre(""));
    EXPECT_EQ(roster->people().size(), 1);
    cache->endEditing(card);
}

TEST_F(NewPerson, IsDiscardedWhenItStaysEmpty)
{
    // One that was made in the roster must not stay in it.
    for (const auto& where : {elsewhere, roster}) {
        const auto card = named(where, "");
        cache->startEditingNewPerson(card, club);
        EXPECT_THAT(people(), ElementsAre("", "Bo"));
        EXPECT_THAT(members(club), ElementsAre(""));
        cache->endEditing(card);
        EXPECT_FALSE(cache->isNewPerson(card.get()));
        EXPECT_THAT(people(), ElementsAre("Bo"));
        EXPECT_THAT(members(club), ElementsAre());
        EXPECT_EQ(roster->people().size(), 1);
    }
    EXPECT_EQ(steps, "");
}

TEST_F(NewPerson, IsAddedUnderItsFinalName)
{
    const auto theirs = groupOf(ZRSubscribedGroup::recordClassDescription, roster, "theirs");
    const struct {
        const char* name;
        Ref<ZRGroup> in;
        std::vector<std::string> people;
        const char* steps;
    } cases[] = {
        {"Cy", club, {"Bo", "Cy"}, "NEW_PERSON of Cy in club; "},
        {"Abe", nullptr, {"Abe", "Bo", "Cy"}, "NEW_PERSON of Abe; "},
        {"Di", theirs, {"Abe", "Bo", "Cy", "Di"}, "marked by theirs; NEW_PERSON of Di in theirs; "},
    };
    for (const auto& [first, in, expected, told] : cases) {
        const auto card = draft();
        static_cast<void>(people());
        cache->startEditingNewPerson(card, in);
        static_cast<void>(members(in));
        name(card, first);
        cache->endEditing(card);
        EXPECT_EQ(card->roster(), roster) << first;
        EXPECT_EQ(people(), expected);
        EXPECT_EQ(std::exchange(steps, ""), told);
        if (in) {
            EXPECT_THAT(members(in), ElementsAre(first));
            EXPECT_THAT(namesOf(in->members()), ElementsAre(first));
        }
    }
}

TEST_F(NewPerson, EndsTheOneBefore)
{
    const auto first = draft(), second = draft(), third = draft();
    cache->startEditingNewPerson(first, club);
    cache->startEditingNewPerson(second, nullptr);
    EXPECT_THAT(people(), ElementsAre("", "Bo")) << "the first was empty";
    name(second, "Cy");
    cache->startEditingNewPerson(third, nullptr);
    EXPECT_THAT(people(), ElementsAre("", "Bo", "Cy"));
    cache->endEditing(second);
    EXPECT_TRUE(cache->isNewPerson(third.get())) << "the second had ended";
    cache->endEditing(nullptr);
    cache->endEditing(third);
    EXPECT_THAT(people(), ElementsAre("Bo", "Cy"));
}

TEST_F(NewPerson, IsNoStepToUndoWithoutTheService)
{
    services.performNewPerson = nullptr;
    const auto card = draft();
    cache->startEditingNewPerson(card, club);
    name(card, "Cy");
    cache->endEditing(card);
    EXPECT_THAT(people(), ElementsAre("Bo", "Cy"));
    EXPECT_EQ(cache->undoManager(), nullptr);
}

} // namespace test
