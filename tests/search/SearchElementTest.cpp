// What a search element says of itself, and which records it finds.
#include "search/SearchWorld.h"

#include "core/ZRFailure.h"

namespace test {

using SearchElements = SearchWorld;

TEST_F(SearchElements, AConjunctionOfOneIsThatOne)
{
    const auto only = where(kZRFirstNameProperty, kZREqual, "Ana");
    EXPECT_EQ(ZRSearchElement::searchElementForConjunction(kZRSearchOr, {only}), only);
    EXPECT_THROW(ZRSearchElement::searchElementForConjunction(kZRSearchAnd, {}), ZRInvalidArgument);
    EXPECT_THROW(
        ZRSearchElement::searchElementForConjunction(kZRSearchAnd, {only, nullptr}), ZRInvalidArgument);
}

TEST_F(SearchElements, FindRecords)
{
    person(roster, {{kZRFirstNameProperty, "Ana"}, {kZRNoteProperty, "Émile's cousin"}});
    person(roster, {{kZRFirstNameProperty, "Bo"}});
    ASSERT_TRUE(roster->save());

    const auto ana = where(kZRFirstNameProperty, kZREqual, "Ana");
    const auto bo = where(kZRFirstNameProperty, kZREqual, "Bo");
    EXPECT_EQ(found(ana), Names{"Ana"});
    EXPECT_EQ(
        found(ZRSearchElement::searchElementForConjunction(kZRSearchOr, {ana, bo})), (Names{"Ana", "Bo"}));
    EXPECT_EQ(found(ZRRecord::searchElementForTerms({"emile", "cous"})), Names{"Ana"});
    EXPECT_EQ(foundInMemory(ana), Names{"Ana"});
    EXPECT_THROW(roster->recordsMatchingSearchElement(nullptr), ZRInvalidArgument);
}

} // namespace test
