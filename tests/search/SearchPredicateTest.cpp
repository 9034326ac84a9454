// What the store is asked, as the predicate prints it: one row for each form that a question can take.
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

Ref<ZRSearchElement> phone(
    ZRSearchComparison comparison, const Value& value, ZRSearchElementMatch::TextView label = {})
{
    return where(kZRPhoneProperty, comparison, value, label);
}

Ref<ZRSearchElement> withoutDiacritics(Ref<ZRSearchElement> search)
{
    search->setDiacriticInsensitiveOption(true);
    return search;
}

} // namespace

TEST_F(SearchPredicates, AskOneColumn)
{
    const auto first = [](ZRSearchComparison comparison, const Value& value = "x") {
        return where(kZRFirstNameProperty, comparison, value);
    };
    expect({
        {first(kZREqual), R"(firstName == "x")"},
        {first(kZRNotEqual), R"((NOT (firstName == "x")) OR (firstName == null))"},
        {first(kZRGreaterThanOrEqual), R"(firstName >= "x")"},
        {first(kZRContainsSubStringCaseInsensitive), R"(firstName CONTAINS[c] "x")"},
        {withoutDiacritics(first(kZRPrefixMatchCaseInsensitive)), R"(firstName BEGINSWITH[cd] "x")"},
        {first(kZRBitsInBitFieldMatch), "none"},
        {first(27), "none"},
        {first(-1), "none"},
        {first(kZREqualCaseInsensitive, ""), "firstName == null"},
        {first(kZRNotEqual, platform::NullMarker()), "NOT (firstName == null)"},
        {first(kZRBitsInBitFieldMatch, Value()), "FALSE"},
        {where(kZRParentGroupsProperty, kZRMemberOfGroup, Value()), "FALSE"},
        {where(kZRNoteProperty, kZRContainsSubString, "x"), R"(note.text CONTAINS "x")"},
        {where(kZRNoteProperty, kZRNotEqual, "x"),
            R"((note != null) AND ((NOT (note.text == "x")) OR (note.text == null)))"},
        {where("No such property", kZREqual, "x"), "none"},
        {wholeCard("Émile", kZRContainsSubStringCaseInsensitive),
            R"(contactIndex.stringForIndexing CONTAINS "emile")"},
        {wholeCard("x", kZRDoesNotContainSubString), R"(NOT (contactIndex.stringForIndexing CONTAINS "x"))"},
        {wholeCard(Value(1), kZREqual), "none"},
        {ZRGroup::searchElementForProperty({}, {}, {}, "x", kZREqual), "FALSE"},
        {ZRSearchElement::searchElementForConjunction(
             kZRConjunctionOr, {first(kZREqual), first(kZRLessThan)}),
            R"((firstName == "x") OR (firstName < "x"))"},
        {ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, {first(kZREqual), first(27)}),
            "none"},
    });
}

TEST_F(SearchPredicates, AskTheRowsOfAMultiValue)
{
    const Value none;
    expect({
        {phone(kZREqual, "x"), R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == "x")).@count)"},
        {phone(kZRNotEqual, "x"), R"(0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == "x")).@count)"},
        {phone(kZREqual, "x", "L"),
            R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == "x") AND ($rmo.label == "L")).@count)"},
        {phone(kZREqual, "x", ""), R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == "x")).@count)"},
        {phone(kZREqual, none), "0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber != null)).@count"},
        {phone(kZRNotEqualCaseInsensitive, none),
            "0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber != null)).@count"},
        {phone(kZREqual, none, "L"),
            R"((0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == null) AND ($rmo.label == "L")).@count))"
            R"( OR (0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.label == "L")).@count))"},
        {phone(kZRNotEqual, none, "L"),
            R"((0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber != null) AND ($rmo.label == "L")).@count))"
            R"( OR (0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.label == "L")).@count))"},
        {phone(kZRLessThan, none), "FALSE"},
        {where(kZRAIMInstantProperty, kZREqual, "x", "L"),
            R"(0 != SUBQUERY(messagingAddresses, $rmo, ($rmo.address == "x"))"
            R"( AND ($rmo.service.serviceName == "AIMInstant") AND ($rmo.label == "L")).@count)"},
        {where(kZREmailProperty, kZRNotEqualCaseInsensitive, "Ä@X"),
            R"(0 == SUBQUERY(emailAddresses, $rmo, ($rmo.addressNormalized == "a@x")).@count)"},
        {where(kZREmailProperty, kZREqual, "A@X"),
            R"(0 != SUBQUERY(emailAddresses, $rmo, ($rmo.address == "A@X")).@count)"},
        {where(kZRAddressProperty, kZREqual, "x", {}, kZRAddressCityKey),
            R"(0 != SUBQUERY(postalAddresses, $rmo, ($rmo.city == "x")).@count)"},
        {where(kZRPhoneProperty, kZREqual, "x", {}, "City"), "none"},
    });
}

// It is noon of the third day, in GMT, and a moment is printed as the seconds since the first.
TEST_F(SearchPredicates, AskForDates)
{
    platform::ManualClock clock(2.5 * day);
    const platform::ClockScope scope(clock);
    const auto created = [](ZRSearchComparison comparison) {
        return where(kZRCreationDateProperty, comparison, Value(100));
    };
    const auto born = [](ZRSearchComparison comparison, double days) {
        return where(kZRBirthdayProperty, comparison, Value(days * day));
    };
    expect({
        {created(kZRWithinIntervalAroundToday), "(@215900 <= creationDate) AND (creationDate <= @216100)"},
        {created(kZRWithinIntervalFromToday), "(@216000 <= creationDate) AND (creationDate <= @216100)"},
        {created(kZRNotWithinIntervalFromToday),
            "(creationDate != null) AND (NOT ((@216000 <= creationDate) AND (creationDate <= @216100)))"},
        {where(kZROtherDatesProperty, kZRNotWithinIntervalAroundToday, Value(100)),
            "0 == SUBQUERY(dates, $rmo, (@215900 <= $rmo.date) AND ($rmo.date <= @216100)).@count"},
        {where(kZRModificationDateProperty, kZRLessThan, Value(platform::Date{5})),
            "((modificationDate != null) AND (modificationDate < @5)) OR"
            " ((NOT (modificationDate != null)) AND (creationDate < @5))"},
        {born(kZRWithinIntervalFromTodayYearless, 7),
            "(216000 <= birthdayYearless) AND (birthdayYearless <= 820800)"},
        // Seven days before the third is in December: the range goes over New Year.
        {born(kZRWithinIntervalAroundTodayYearless, 7),
            "(31147200 <= birthdayYearless) OR (birthdayYearless <= 820800)"},
        {born(kZRWithinIntervalFromTodayYearless, 200),
            "(216000 <= birthdayYearless) AND (birthdayYearless <= 17496000)"},
        {born(kZRWithinIntervalAroundTodayYearless, 200), "birthdayYearless != null"},
        {born(kZRWithinIntervalFromTodayYearless, 366), "birthdayYearless != null"},
        {where(kZROtherDatesProperty, kZRNotWithinIntervalAroundTodayYearless, Value(200 * day)),
            "0 == SUBQUERY(dates, $rmo, ($rmo.dateYearless != null)).@count"},
    });
}

TEST_F(SearchPredicates, AskTheRowsOfDeclaredProperties)
{
    const auto types = [](ZRPropertyType type) { return Value(static_cast<std::int64_t>(type)); };
    ASSERT_EQ(ZRPerson::addPropertiesAndTypes(Value::dictionary({{"Team", types(kZRPropertyTypeString)},
                                                  {"List", types(kZRPropertyTypeArray)}}),
                  roster.get()),
        2);
    const auto team = asked(where("Team", kZRNotEqual, "x"));
    EXPECT_TRUE(team.starts_with(
        R"(0 == SUBQUERY(customProperties, $rmo, ($rmo.stringValue == "x") AND ($rmo.customProperty == )"))
        << team;
    EXPECT_EQ(asked(where("List", kZREqual, "x")), "none");
}

} // namespace test
