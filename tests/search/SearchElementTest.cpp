// What a search element says of itself, and which records it finds.
#include "search/SearchWorld.h"

#include "core/ZRFailure.h"
#include "core/ZRGroup.h"
#include "platform/files/UserDefaults.h"
#include "platform/run/Log.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRModelSlots.h"

namespace test {

using SearchElements = SearchWorld;

TEST_F(SearchElements, AConjunctionOfOneIsThatOne)
{
    const auto only = where(kZRFirstNameProperty, kZREqual, "Ana");
    EXPECT_EQ(ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, {only}), only);
    EXPECT_THROW(ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, {}), ZRInvalidArgument);
    EXPECT_THROW(
        ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, {only, nullptr}), ZRInvalidArgument);
}

TEST_F(SearchElements, FindRecords)
{
    const auto ana = person(roster, {{kZRFirstNameProperty, "Ana"}, {kZRNoteProperty, "Émile's cousin"}});
    person(roster, {{kZRFirstNameProperty, "Bo"}});
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(found(ZRRecord::searchElementForTerms({"emile", "cous"})), Names{"Ana"});
    // What a search has read of a card is not what the card is now.
    const auto twice = ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd,
        {where(kZRFirstNameProperty, kZRPrefixMatch, "A"), where(kZRFirstNameProperty, kZRSuffixMatch, "a")});
    EXPECT_TRUE(twice->matchesRecord(*ana));
    ana->setValue("Bo", kZRFirstNameProperty);
    EXPECT_FALSE(twice->matchesRecord(*ana));

    ZRGroup::initWithRoster(roster)->setValue("Team", kZRGroupNameProperty);
    const auto byName = ZRRecord::searchElementForTerms(ZRGroup::recordClassDescription, {"team"});
    EXPECT_EQ(roster->recordsMatchingSearchElement(byName).size(), 1u);
    EXPECT_EQ(roster->recordsMatchingSearchElementNoHinting(byName).size(), 1u);
    EXPECT_THROW(roster->recordsMatchingSearchElement(nullptr), ZRInvalidArgument);
}

TEST_F(SearchElements, AskTheStoreOfOneRecordWhereThatIsTested)
{
    const auto ana = person(roster, {{kZRFirstNameProperty, "Ana"}});
    ASSERT_TRUE(roster->save());
    ana->setValue("Bo", kZRFirstNameProperty);
    const auto byOldName = where(kZRFirstNameProperty, kZREqual, "Ana");
    EXPECT_FALSE(byOldName->predicateMatchesRecord(*ana));
    ZRSearchElement::_setTestPredicatesMatchRecordInStore(true);
    EXPECT_TRUE(byOldName->predicateMatchesRecord(*ana)) << "in the store it is unchanged";
    ZRSearchElement::_setTestPredicatesMatchRecordInStore(false);
}

TEST_F(SearchElements, TellTheirWayWhereThatIsAskedFor)
{
    person(roster, {{kZRFirstNameProperty, "Ana"}});
    ASSERT_TRUE(roster->save());
    const auto byName = where(kZRFirstNameProperty, kZREqual, "Ana");
    const auto byKey = where(kZRNoteProperty, kZREqual, "x", {}, "key");
    const platform::LogCapture log;
    found(byName);
    EXPECT_FALSE(log.contains("Search element:"));
    platform::UserDefaults::standard().setBool(true, "ZRSearchDebug");
    found(byName);
    found(byKey);
    platform::UserDefaults::standard().removeObjectForKey("ZRSearchDebug");
    EXPECT_TRUE(log.contains("Search element:\n  ---> SE[ First == Ana ]\n  ===>  P[ firstName"));
    EXPECT_TRUE(log.contains(" ]\n  ---> Matched 1 records in 0."));
    EXPECT_TRUE(
        log.contains("Search element:\n  ---> SE[ Note {key} == x ]\n  ---> Matched 0 records in 0."));
}

TEST_F(SearchElements, AreEqualWhateverTheirValue)
{
    const auto search = where(kZRPhoneProperty, kZREqual, "1", "home");
    EXPECT_TRUE(search->isEqual(*where(kZRPhoneProperty, kZREqual, "2", "home")));
    const Ref<ZRSearchElement> others[]{where(kZRPhoneProperty, kZREqual, "1", "work"),
        where(kZRPhoneProperty, kZREqual, "1"), where(kZRPhoneProperty, kZREqual, "1", ""),
        where(kZRPhoneProperty, kZRPrefixMatch, "1", "home"), where(kZREmailProperty, kZREqual, "1", "home"),
        where(kZRPhoneProperty, kZREqual, "1", "home", "City")};
    for (const auto& other : others)
        EXPECT_FALSE(search->isEqual(*other)) << other->description();
    EXPECT_FALSE(others[1]->isEqual(*others[2])) << "no label is not the empty one";
}

TEST_F(SearchElements, TellWhatTheyLookFor)
{
    const auto people = where(kZRFirstNameProperty, kZREqual, "x");
    const auto groups = ZRGroup::searchElementForProperty({}, {}, {}, "x", kZREqual);
    const auto both =
        ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, {groups, people, groups});
    EXPECT_EQ(both->searchRecordClasses(),
        (std::vector<const ZRRecordClass*>{&ZRGroup::recordClassDescription,
            &ZRSmartGroup::recordClassDescription, &ZRPerson::recordClassDescription}));
    EXPECT_TRUE(both->searchPeople() && both->searchGroups());
    EXPECT_FALSE(both->searchSubscribed());
    EXPECT_EQ(both->description(), "(GroupName == x) OR (First == x) OR (GroupName == x)");
    EXPECT_EQ(where(kZRNoteProperty, kZRNotMemberOfGroup, "x", "L", "K")->description(),
        "Note [L] {K} not member x");
}

TEST_F(SearchElements, PassAValueOnToTheirChildren)
{
    const auto first = where(kZRFirstNameProperty, kZREqual, "x");
    const auto both = ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, {first, first});
    both->setSearchValue("y");
    EXPECT_EQ(dynamic_cast<ZRSearchElementMatch&>(*first)._value(), Value("y"));
    EXPECT_THROW(both->setDiacriticInsensitiveOption(true), ZRUnimplementedOperation);
    EXPECT_FALSE(both->diacriticInsensitiveOption());
}

// The store refuses conditions past its depth: such a search goes through memory.
TEST_F(SearchElements, OfAnyDepthAreAnswered)
{
    const auto ana = person(roster, {{kZRFirstNameProperty, "Ana"}});
    auto search = where(kZRFirstNameProperty, kZREqual, "Ana");
    for (int i = 0; i < 1200; ++i)
        search = ZRSearchElement::searchElementForConjunction(
            kZRConjunctionOr, {where(kZRFirstNameProperty, kZREqual, "Bo"), search});
    EXPECT_EQ(found(search), Names{"Ana"});
}

TEST_F(SearchElements, NameTheRelationshipsThatTheyRead)
{
    const auto paths = [&](const Ref<ZRSearchElement>& search) {
        return locked(*roster, ZRAccess::read, [&]() ZR_NTS {
            return search->prefetchingRelationshipKeyPathsForImplClass(contactSlots().entity, *roster);
        });
    };
    const auto phone = where(kZRPhoneProperty, kZREqual, "x"), note = where(kZRNoteProperty, kZREqual, "x");
    EXPECT_EQ(paths(phone), Names{"phoneNumbers"});
    EXPECT_EQ(paths(where(kZRFirstNameProperty, kZREqual, "x")), Names());
    EXPECT_EQ(paths(ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, {phone, note, phone})),
        (Names{"phoneNumbers", "note"}));
}

} // namespace test
