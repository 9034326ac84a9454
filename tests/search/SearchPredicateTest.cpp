// What the store is asked, as the predicate prints it: the forms that matter beyond what they find.
#include "search/SearchWorld.h"

#include "core/ZRGroup.h"
#include "objectstore/PredicatePrinter.h"
#include "platform/run/Clock.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"

namespace test {

namespace {

constexpr double day = 86400;

class SearchPredicates : public SearchWorld {
protected:
    struct Row {
        Ref<ZRSearchElement> search;
        std::string_view printed;
    };

    /// Printed, or "none".
    std::string asked(const Ref<ZRSearchElement>& search) const
    {
        const auto* people =
            ZRRecordObjectStoreFactoryImpl::implClassForPublicRecordClass(ZRPerson::recordClassDescription);
        const auto predicate = locked(*roster, ZRAccess::read,
            [&]() ZR_NTS { return search->_predicateForImplClass(*people, *roster); });
        return predicate ? objectstore::printed(*predicate) : "none";
    }

    void expect(const std::vector<Row>& rows) const
    {
        for (const auto& [search, printed] : rows)
            EXPECT_EQ(asked(search), printed) << search->description();
    }
};

Ref<ZRSearchElement> withoutDiacritics(Ref<ZRSearchElement> search)
{
    search->setDiacriticInsensitiveOption(true);
    return search;
}

} // namespace

TEST_F(SearchPredicates, AskColumnsAndRows)
{
    const auto first = where(kZRFirstNameProperty, kZREqual, "x");
    const auto unknown = where(kZRFirstNameProperty, 27, "x");
    expect({
        {first, R"(firstName == "x")"},
        {unknown, "none"},
        {where(kZRFirstNameProperty, -1, "x"), "none"},
        {where(kZRFirstNameProperty, kZRNotEqual, "x"), R"((NOT (firstName == "x")) OR (firstName == null))"},
        {withoutDiacritics(where(kZRFirstNameProperty, kZRPrefixMatchCaseInsensitive, "x")),
            R"(firstName BEGINSWITH[cd] "x")"},
        {where(kZRFirstNameProperty, kZRBitsInBitFieldMatch, Value()), "FALSE"},
        {where(kZRNoteProperty, kZRNotEqual, "x"),
            R"((note != null) AND ((NOT (note.text == "x")) OR (note.text == null)))"},
        // These columns are kept folded.
        {where(kZREmailProperty, kZRNotEqualCaseInsensitive, "Ä@X"),
            R"(0 == SUBQUERY(emailAddresses, $rmo, ($rmo.addressNormalized == "a@x")).@count)"},
        {wholeCard("Émile", kZRContainsSubStringCaseInsensitive),
            R"(contactIndex.stringForIndexing CONTAINS "emile")"},
        {where(kZRAIMInstantProperty, kZREqual, "x", "L"),
            R"(0 != SUBQUERY(messagingAddresses, $rmo, ($rmo.address == "x"))"
            R"( AND ($rmo.service.serviceName == "AIMInstant") AND ($rmo.label == "L")).@count)"},
        {where(kZRPhoneProperty, kZREqual, Value(), "L"),
            R"((0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == null) AND ($rmo.label == "L")).@count))"
            R"( OR (0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.label == "L")).@count))"},
        {ZRGroup::searchElementForProperty({}, {}, {}, "x", kZREqual), "FALSE"},
        {ZRSearchElement::searchElementForConjunction(kZRConjunctionOr, {first, first}),
            R"((firstName == "x") OR (firstName == "x"))"},
        {ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, {first, unknown}), "none"},
    });
}

// It is noon of the third day, in GMT, and a moment is printed as the seconds since the first.
TEST_F(SearchPredicates, AskForDates)
{
    platform::ManualClock clock(2.5 * day);
    const platform::ClockScope scope(clock);
    const auto born = [](ZRSearchComparison comparison, double days) {
        return where(kZRBirthdayProperty, comparison, Value(days * day));
    };
    expect({
        {where(kZRCreationDateProperty, kZRNotWithinIntervalFromToday, Value(100)),
            "(creationDate != null) AND (NOT ((@216000 <= creationDate) AND (creationDate <= @216100)))"},
        {where(kZRModificationDateProperty, kZRLessThan, Value(platform::Date{5})),
            "((modificationDate != null) AND (modificationDate < @5)) OR"
            " ((NOT (modificationDate != null)) AND (creationDate < @5))"},
        {born(kZRWithinIntervalFromTodayYearless, 7),
            "(216000 <= birthdayYearless) AND (birthdayYearless <= 820800)"},
        // Seven days before the third is in December: the range goes over New Year.
        {born(kZRWithinIntervalAroundTodayYearless, 7),
            "(31147200 <= birthdayYearless) OR (birthdayYearless <= 820800)"},
        {born(kZRWithinIntervalAroundTodayYearless, 200), "birthdayYearless != null"},
        {born(kZRWithinIntervalFromTodayYearless, 200),
            "(216000 <= birthdayYearless) AND (birthdayYearless <= 17496000)"},
    });
}

} // namespace test
