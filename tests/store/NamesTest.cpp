// Names: how they are shown, how they are sorted, and what is found by them.
#include "store/RosterWorld.h"

#include "core/ZRNameOrder.h"
#include "store/ZROSRecord.h"

#include <gmock/gmock.h>

namespace test {

namespace {

using Properties = std::vector<std::pair<std::string_view, Value>>;

constexpr int company = 1, lastFirst = 16, firstFirst = 32;

/// The fields of a card by letter: Title, First, Middle, Last, Suffix, Nickname, Organization, and readings
/// (f, m, l).
Properties fields(std::string_view letters)
{
    static const std::map<char, std::pair<std::string_view, Value>> byLetter{
        {'T', {kZRTitleProperty, "Title"}}, {'F', {kZRFirstNameProperty, "First"}},
        {'M', {kZRMiddleNameProperty, "Middle"}}, {'L', {kZRLastNameProperty, "Last"}},
        {'S', {kZRSuffixProperty, "Suffix"}}, {'N', {kZRNicknameProperty, "Nick"}},
        {'O', {kZROrganizationProperty, "Org"}}, {'f', {kZRFirstNamePhoneticProperty, "phirst"}},
        {'m', {kZRMiddleNamePhoneticProperty, "middel"}}, {'l', {kZRLastNamePhoneticProperty, "lahst"}},
        {'E', {kZREmailProperty, multiValue({{"a@example.com", "x"}, {"b@example.com", "x"}}, 1)}},
        {'A', {kZRAIMInstantProperty, multiValue({{"aim", "x"}})}}};
    Properties all;
    for (const char letter : letters)
        all.push_back(byLetter.at(letter));
    return all;
}

class Names : public testing::Test {
protected:
    Ref<ZRPerson> card(std::string_view letters, int flags = 0)
    {
        auto properties = fields(letters);
        if (flags != 0)
            properties.emplace_back(kZRPersonFlags, flags);
        return person(roster, properties);
    }
    std::string sortName(const Ref<ZRPerson>& one, const char* key) const
    {
        return std::string(one->valueForKeyPath(std::string("zrDatabaseImpl.") + key).asText());
    }
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace

TEST_F(Names, AreMadeOfTheFieldsThatCount)
{
    struct Case {
        const char* letters;
        int flags;
        const char* full;
        const char* composite;
        const char* phonetic;
    };
    constexpr Case cases[] = {
        {"TFMLS", firstFirst, "Title First Middle Last Suffix", "Title First Middle Last Suffix", ""},
        {"TFMLS", lastFirst, "Title Last First Suffix Middle", "Title Last First Suffix Middle", ""},
        {"FL", 0, "First Last", "First Last", ""},
        {"TL", 0, "Last", "Last", ""},
        {"TMLS", lastFirst, "Last", "Last", ""},
        {"TFMS", 0, "First", "First", ""},
        {"TMS", 0, "", "No Name", ""},
        {"fl", firstFirst, "", "No Name", "phirstlahst"},
        {"fml", firstFirst, "", "No Name", "phirstmiddel lahst"},
        {"fml", lastFirst, "", "No Name", "lahst phirst middel"},
        {"l", 0, "", "No Name", "lahst"},
        {"fm", 0, "", "No Name", "phirst"},
        {"NOEA", 0, "", "Nick", ""},
        {"OEA", 0, "", "Org", ""},
        {"EA", 0, "", "a@example.com", ""},
        {"A", 0, "", "aim", ""},
        {"FLO", company, "First Last", "Org", ""},
        {"TFLN", company, "Title First Last", "Title First Last", ""},
        {"NE", company, "", "Nick", ""},
        {"", company, "", "No Name", ""},
    };
    for (const auto& [letters, flags, full, composite, phonetic] : cases) {
        SCOPED_TRACE(std::string(letters) + " with flags " + std::to_string(flags));
        const auto one = card(letters, flags);
        EXPECT_EQ(one->_fullPhoneticName(), phonetic);
        EXPECT_EQ(one->_fullName(), full);
        EXPECT_EQ(one->compositeName(), composite);
    }
}

TEST_F(Names, WithoutAuxiliaryElementsHaveNoTitle)
{
    const auto one = card("TFMLS");
    EXPECT_EQ(one->_fullNameIncludingAuxiliaryElements(false), "First Middle Last Suffix");
    EXPECT_EQ(one->_compositeNameIncludingAuxiliaryElements(false), "First Middle Last Suffix");
    EXPECT_EQ(card("TFLO", company)->similarNameForHashing(), "orgtitle first last");
}

TEST_F(Names, CountAPartBySomeBitsOfItsLength)
{
    for (const auto& [length, isThere] : {std::pair{255, true}, {256, false}, {257, true}, {512, false}}) {
        const std::string first(static_cast<std::size_t>(length), 'a');
        const auto one = person(roster, {{kZRFirstNameProperty, first}, {kZRLastNameProperty, "Last"}});
        EXPECT_EQ(one->_fullName(), isThere ? first + " Last" : "Last") << length;
    }
}

// The form under the lock takes an empty organization for a name, and never looks for another one.
TEST_F(Names, HaveALooserFormUnderTheLock)
{
    const auto one = person(
        roster, {{kZROrganizationProperty, ""}, {kZRNicknameProperty, "Nick"}, {kZRPersonFlags, company}});
    EXPECT_EQ(one->nts__RealCompositeName(), "");
    EXPECT_EQ(one->_realCompositeName(), "Nick");
    EXPECT_EQ(card("NO")->nts__RealCompositeName(), "");
}

TEST_F(Names, StayAsTheyWereReadUntilTheCacheIsCleared)
{
    const auto one = card("FL");
    EXPECT_EQ(one->compositeName(), "First Last");
    one->setValue("Other", kZRFirstNameProperty);
    EXPECT_EQ(one->compositeName(), "First Last");
    one->clearTemporaryCache();
    EXPECT_EQ(one->compositeName(), "Other Last");
    one->setValue("Third", kZRFirstNameProperty);
    roster->_vacuum();
    EXPECT_EQ(one->compositeName(), "Third Last");
}

TEST_F(Names, AnEmptyNicknameIsAnAlternateName)
{
    EXPECT_EQ(
        person(roster, {{kZRNicknameProperty, ""}, {kZROrganizationProperty, "Org"}})->alternateName(), "");
    EXPECT_EQ(card("NOEA")->createAlternateName(), "Org") << "the sort columns know no nickname";
    EXPECT_EQ(card("EA")->createAlternateName(), "a@example.com");
}

TEST_F(Names, SortByTheirReadingsFirst)
{
    struct Case {
        const char* letters;
        int flags;
        const char* byFirst;
        const char* byLast;
    };
    constexpr Case cases[] = {
        {"FL", 0, "first last First Last ", "last first Last First "},
        {"FLfl", 0, "phirst lahst phirst lahst ", "lahst phirst lahst phirst "},
        {"FLf", 0, "phirst last phirst Last ", "last phirst Last phirst "},
        {"F", 0, "first First ", "first First "},
        {"FLO", company, "orgOrg", "orgOrg"},
        {"FL", company, "first last First Last ", "last first Last First "},
        {"NEA", 0, "a@example.coma@example.com", "a@example.coma@example.com"},
        {"A", 0, "aimaim", "aimaim"},
        {"N", 0, "", ""},
    };
    for (const auto& [letters, flags, byFirst, byLast] : cases) {
        SCOPED_TRACE(std::string(letters) + " with flags " + std::to_string(flags));
        const auto one = card(letters, flags);
        EXPECT_EQ(sortName(one, "sortingFirstName"), byFirst);
        EXPECT_EQ(sortName(one, "sortingLastName"), byLast);
    }
}

TEST_F(Names, AreSortedAnewWhenWhatTheyFollowFromChanges)
{
    const auto one = card("EA");
    EXPECT_EQ(sortName(one, "sortingFirstName"), "a@example.coma@example.com");
    one->setValue(multiValue({{"z@example.com", "x"}}), kZREmailProperty);
    EXPECT_EQ(sortName(one, "sortingFirstName"), "z@example.comz@example.com");
    ASSERT_TRUE(roster->save());
    one->removeValueForProperty(kZREmailProperty);
    EXPECT_EQ(sortName(one, "sortingFirstName"), "aimaim");
    one->setValue("Org", kZROrganizationProperty);
    EXPECT_EQ(sortName(one, "sortingFirstName"), "orgOrg");
    one->setValue("Last", kZRLastNameProperty);
    EXPECT_EQ(sortName(one, "sortingFirstName"), "last Last ");
    one->setValue(company, kZRPersonFlags);
    EXPECT_EQ(sortName(one, "sortingFirstName"), "orgOrg");
}

TEST_F(Names, AreCrossedInTwoPartsOnPurpose)
{
    std::string part1, part2;
    card("FL")->createFirstLastSortingNamePart1(part1, part2);
    EXPECT_EQ(part1 + "|" + part2, "Last|First");
    card("FLl")->createLastFirstSortingNamePart1(part1, part2);
    EXPECT_EQ(part1 + "|" + part2, "First|lahst");
    card("FLO", company)->createFirstLastSortingNamePart1(part1, part2);
    EXPECT_EQ(part1 + "|" + part2, "Org|");
}

TEST_F(Names, OrderPeopleAsTheUserReadsThem)
{
    for (const auto& [first, last] : {std::pair{"Zoë", "Abel"}, {"zoe", "Abel"}, {"Ängla", "Berg"},
             {"Angus", "Berg"}, {"Bo", "Öst"}, {"Anna-Karin", "Ost"}, {"Émile", "Abel"}})
        person(roster, {{kZRFirstNameProperty, first}, {kZRLastNameProperty, last}});
    const auto names = [&](ZRNameOrder order, std::size_t limit) {
        std::vector<std::string> list;
        for (const auto& one : roster->sortedPeople(order, limit))
            list.push_back(static_cast<ZRPerson&>(*one).compositeName());
        return list;
    };
    const auto pending = names(ZRNameOrder::lastName, 0);
    EXPECT_THAT(pending,
        testing::ElementsAre(
            "Émile Abel", "zoe Abel", "Zoë Abel", "Ängla Berg", "Angus Berg", "Anna-Karin Ost", "Bo Öst"));
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(names(ZRNameOrder::lastName, 0), pending) << "the store's order and memory's";
    EXPECT_THAT(
        names(ZRNameOrder::firstName, 3), testing::ElementsAre("Ängla Berg", "Angus Berg", "Anna-Karin Ost"));
}

TEST_F(Names, CompareEvenWhenTheirRowsAreGone)
{
    const auto a = card("F"), b = card("L"), gone = card("FL"), alsoGone = card("FL");
    const ZRNameComparison byFirst{.byLastName = false};
    EXPECT_EQ(ZRComparePeopleName(*a, *a, byFirst), 0);
    EXPECT_EQ(ZRComparePeopleName(*a, *b, byFirst), -1);
    EXPECT_EQ(ZRComparePeopleName(*b, *a, byFirst), 1);
    roster->removeRecord(gone);
    roster->removeRecord(alsoGone);
    EXPECT_EQ(ZRComparePeopleName(*a, *gone, byFirst), 1);
    EXPECT_EQ(ZRComparePeopleName(*gone, *a, byFirst), -1);
    EXPECT_EQ(ZRComparePeopleName(*gone, *alsoGone, byFirst), -1);
}

TEST_F(Names, FindPeopleByAnyPartOfTheirCard)
{
    const auto one = person(roster,
        {{kZRFirstNameProperty, "Zoë"}, {kZRNoteProperty, "likes Crème"},
            {kZRPhoneProperty, multiValue({{"(０２) 12-34", "x"}})},
            {kZRAddressProperty,
                multiValue({{Value::dictionary({{"City", "Århus"}, {"Floor", "attic"}}), "x"}})}});
    card("FL");
    for (const bool saved : {false, true}) {
        for (const char* text : {"zoe", "CREME", "021234", "arhus", "attic"}) {
            const auto found = roster->peopleMatchingText(text);
            ASSERT_EQ(found.size(), 1U) << text << (saved ? " saved" : " unsaved");
            EXPECT_EQ(found[0].get(), one.get());
        }
        ASSERT_TRUE(roster->save());
    }
    one->setValue("now without", kZRNoteProperty);
    EXPECT_TRUE(roster->peopleMatchingText("creme").empty());
}

} // namespace test
