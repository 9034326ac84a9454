// What the store is asked: each comparison of each kind of property, as the predicate prints it.
#include "search/SearchWorld.h"

#include "core/ZRGroup.h"
#include "objectstore/PredicatePrinter.h"
#include "platform/run/Clock.h"
#include "platform/text/Dates.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"

#include <fmt/format.h>

namespace test {

namespace {

class SearchPredicates : public SearchWorld {
protected:
    /// Printed, or "none".
    std::string asked(const Ref<ZRSearchElement>& search,
        const ZRRecordClass& recordClass = ZRPerson::recordClassDescription) const
    {
        const auto* entity = ZRRecordObjectStoreFactoryImpl::implClassForPublicRecordClass(recordClass);
        const auto predicate = locked(*roster, ZRAccess::read,
            [&]() ZR_NTS { return search->_predicateForImplClass(*entity, *roster); });
        return predicate ? objectstore::printed(*predicate) : "none";
    }
};

struct Row {
    ZRSearchComparison comparison;
    const char* printed;
};

} // namespace

TEST_F(SearchPredicates, OfASingleText)
{
    const Row rows[] = {
        {kZREqual, R"(firstName == "x")"},
        {kZRNotEqual, R"((NOT (firstName == "x")) OR (firstName == null))"},
        {kZRLessThan, R"(firstName < "x")"},
        {kZRLessThanOrEqual, R"(firstName <= "x")"},
        {kZRGreaterThan, R"(firstName > "x")"},
        {kZRGreaterThanOrEqual, R"(firstName >= "x")"},
        {kZREqualCaseInsensitive, R"(firstName ==[c] "x")"},
        {kZRContainsSubString, R"(firstName CONTAINS "x")"},
        {kZRContainsSubStringCaseInsensitive, R"(firstName CONTAINS[c] "x")"},
        {kZRPrefixMatch, R"(firstName BEGINSWITH "x")"},
        {kZRPrefixMatchCaseInsensitive, R"(firstName BEGINSWITH[c] "x")"},
        {kZRBitsInBitFieldMatch, "none"},
        {kZRDoesNotContainSubString, R"((NOT (firstName CONTAINS "x")) OR (firstName == null))"},
        {kZRDoesNotContainSubStringCaseInsensitive,
            R"((NOT (firstName CONTAINS[c] "x")) OR (firstName == null))"},
        {kZRNotEqualCaseInsensitive, R"((NOT (firstName ==[c] "x")) OR (firstName == null))"},
        {kZRSuffixMatch, R"(firstName ENDSWITH "x")"},
        {kZRSuffixMatchCaseInsensitive, R"(firstName ENDSWITH[c] "x")"},
        {kZRWithinIntervalAroundToday, "none"},
        {kZRNotWithinIntervalFromTodayYearless, "none"},
        {27, "none"},
        {-1, "none"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(asked(where(kZRFirstNameProperty, row.comparison, "x")), row.printed) << row.comparison;
}

TEST_F(SearchPredicates, OfAMultiValue)
{
    const Row rows[] = {
        {kZREqual, R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == "x")).@count)"},
        {kZRNotEqual, R"(0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == "x")).@count)"},
        {kZRLessThan, R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber < "x")).@count)"},
        {kZRGreaterThanOrEqual, R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber >= "x")).@count)"},
        {kZREqualCaseInsensitive, R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber ==[c] "x")).@count)"},
        {kZRContainsSubString, R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber CONTAINS "x")).@count)"},
        {kZRPrefixMatchCaseInsensitive,
            R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber BEGINSWITH[c] "x")).@count)"},
        {kZRBitsInBitFieldMatch, "none"},
        {kZRDoesNotContainSubString,
            R"(0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber CONTAINS "x")).@count)"},
        {kZRDoesNotContainSubStringCaseInsensitive,
            R"(0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber CONTAINS[c] "x")).@count)"},
        {kZRNotEqualCaseInsensitive,
            R"(0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber ==[c] "x")).@count)"},
        {kZRSuffixMatch, R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber ENDSWITH "x")).@count)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(asked(where(kZRPhoneProperty, row.comparison, "x")), row.printed) << row.comparison;
}

TEST_F(SearchPredicates, OfLabelsServicesKeysAndWhatHasNoValue)
{
    const Value none;
    const struct {
        Ref<ZRSearchElement> search;
        const char* printed;
    } rows[] = {
        {where(kZRPhoneProperty, kZREqual, "x", "L"),
            R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == "x") AND ($rmo.label == "L")).@count)"},
        {where(kZRPhoneProperty, kZREqual, "x", ""),
            R"(0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == "x")).@count)"},
        {where(kZRPhoneProperty, kZREqual, none),
            "0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber != null)).@count"},
        {where(kZRPhoneProperty, kZRContainsSubString, ""),
            "0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber != null)).@count"},
        {where(kZRPhoneProperty, kZRNotEqualCaseInsensitive, none),
            "0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber != null)).@count"},
        {where(kZRPhoneProperty, kZREqual, none, "L"),
            R"((0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber == null) AND ($rmo.label == "L")).@count))"
            R"( OR (0 == SUBQUERY(phoneNumbers, $rmo, ($rmo.label == "L")).@count))"},
        {where(kZRPhoneProperty, kZRNotEqual, none, "L"),
            R"((0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber != null) AND ($rmo.label == "L")).@count))"
            R"( OR (0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.label == "L")).@count))"},
        {where(kZRPhoneProperty, kZRLessThan, none), "FALSE"},
        {where(kZRFirstNameProperty, kZREqualCaseInsensitive, ""), "firstName == null"},
        {where(kZRFirstNameProperty, kZRNotEqual, platform::NullMarker()), "NOT (firstName == null)"},
        {where(kZRFirstNameProperty, kZRBitsInBitFieldMatch, none), "FALSE"},
        {where(kZRParentGroupsProperty, kZRMemberOfGroup, none), "FALSE"},
        {where(kZRAIMInstantProperty, kZREqual, "x", "L"),
            R"(0 != SUBQUERY(messagingAddresses, $rmo, ($rmo.address == "x"))"
            R"( AND ($rmo.service.serviceName == "AIMInstant") AND ($rmo.label == "L")).@count)"},
        {where(kZREmailProperty, kZREqualCaseInsensitive, "Ä@X"),
            R"(0 != SUBQUERY(emailAddresses, $rmo, ($rmo.addressNormalized == "a@x")).@count)"},
        {where(kZREmailProperty, kZRNotEqualCaseInsensitive, "A@X"),
            R"(0 == SUBQUERY(emailAddresses, $rmo, ($rmo.addressNormalized == "a@x")).@count)"},
        {where(kZREmailProperty, kZREqual, "A@X"),
            R"(0 != SUBQUERY(emailAddresses, $rmo, ($rmo.address == "A@X")).@count)"},
        {where(kZRAddressProperty, kZREqual, "x", {}, kZRAddressCityKey),
            R"(0 != SUBQUERY(postalAddresses, $rmo, ($rmo.city == "x")).@count)"},
        {where(kZRAddressProperty, kZREqual, "x", {}, "Planet"), "none"},
        {where(kZRPhoneProperty, kZREqual, "x", {}, "City"), "none"},
        {where(kZRNoteProperty, kZRContainsSubString, "x"), R"(note.text CONTAINS "x")"},
        {where(kZRNoteProperty, kZRNotEqual, "x"),
            R"((note != null) AND ((NOT (note.text == "x")) OR (note.text == null)))"},
        {where("No such property", kZREqual, "x"), "none"},
        {wholeCard("Émile", kZRContainsSubStringCaseInsensitive),
            R"(contactIndex.stringForIndexing CONTAINS "emile")"},
        {wholeCard("", kZRContainsSubString), R"(contactIndex.stringForIndexing CONTAINS "")"},
        {wholeCard("x", kZRDoesNotContainSubString), R"(NOT (contactIndex.stringForIndexing CONTAINS "x"))"},
        {wholeCard(Value(1), kZREqual), "none"},
        {ZRGroup::searchElementForProperty({}, {}, {}, "x", kZREqual), "FALSE"},
        {ZRSearchElement::searchElementForConjunction(kZRConjunctionOr,
             {where(kZRFirstNameProperty, kZREqual, "a"), where(kZRLastNameProperty, kZREqual, "b")}),
            R"((firstName == "a") OR (lastName == "b"))"},
        {ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd,
             {where(kZRFirstNameProperty, kZREqual, "a"),
                 where(kZRPersonFlags, kZRBitsInBitFieldMatch, Value(1))}),
            "none"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(asked(row.search), row.printed) << row.search->description();
}

TEST_F(SearchPredicates, OfAWholeAddressAskEveryPartOfIt)
{
    const auto all = asked(where(kZRAddressProperty, kZREqual, "x"));
    EXPECT_EQ(all.substr(0, all.find(" AND ")),
        R"((0 != SUBQUERY(postalAddresses, $rmo, ($rmo.street == "x")).@count))");
    EXPECT_EQ(std::count(all.begin(), all.end(), '@'), 7);
    for (const auto comparison : {kZRNotEqual, kZRContainsSubString, kZRContainsSubStringCaseInsensitive})
        EXPECT_NE(asked(where(kZRAddressProperty, comparison, "x")).find(" OR "), std::string::npos);
    EXPECT_NE(
        asked(where(kZRAddressProperty, kZRDoesNotContainSubString, "x")).find(" AND "), std::string::npos);
}

TEST_F(SearchPredicates, IgnoreDiacriticsWhereTheElementSaysSo)
{
    const auto search = where(kZRFirstNameProperty, kZRContainsSubStringCaseInsensitive, "x");
    search->setDiacriticInsensitiveOption(true);
    EXPECT_EQ(asked(search), R"(firstName CONTAINS[cd] "x")");
}

TEST_F(SearchPredicates, OfDates)
{
    const double now = platform::noonOf({2023, 6, 15}, platform::TimeZone::gmt())->seconds;
    platform::ManualClock moved(now);
    const platform::ClockScope scope(moved);
    const auto created = [&](ZRSearchComparison comparison) {
        return asked(where(kZRCreationDateProperty, comparison, Value(100)));
    };
    const auto seconds = [](double moment) { return Value(platform::Date{moment}).description(); };
    EXPECT_EQ(created(kZRWithinIntervalAroundToday),
        fmt::format("({} <= creationDate) AND (creationDate <= {})", seconds(now - 100), seconds(now + 100)));
    EXPECT_EQ(created(kZRWithinIntervalFromToday),
        fmt::format("({} <= creationDate) AND (creationDate <= {})", seconds(now), seconds(now + 100)));
    EXPECT_EQ(created(kZRNotWithinIntervalFromToday),
        fmt::format("(creationDate != null) AND (NOT (({} <= creationDate) AND (creationDate <= {})))",
            seconds(now), seconds(now + 100)));
    EXPECT_EQ(asked(where(kZROtherDatesProperty, kZRNotWithinIntervalAroundToday, Value(100))),
        fmt::format("0 == SUBQUERY(dates, $rmo, ({} <= $rmo.date) AND ($rmo.date <= {})).@count",
            seconds(now - 100), seconds(now + 100)));
    EXPECT_EQ(asked(where(kZRModificationDateProperty, kZRLessThan, Value(platform::Date{5}))),
        "((modificationDate != null) AND (modificationDate < @5)) OR"
        " ((NOT (modificationDate != null)) AND (creationDate < @5))");
}

TEST_F(SearchPredicates, OfDatesWithoutTheirYear)
{
    constexpr double day = 86400;
    platform::ManualClock moved(platform::noonOf({2023, 1, 3}, platform::TimeZone::gmt())->seconds);
    const platform::ClockScope scope(moved);
    const auto born = [&](ZRSearchComparison comparison, double days) {
        return asked(where(kZRBirthdayProperty, comparison, Value(days * day)));
    };
    EXPECT_EQ(born(kZRWithinIntervalFromTodayYearless, 7),
        fmt::format("({} <= birthdayYearless) AND (birthdayYearless <= {})", Value(2.5 * day).description(),
            Value(9.5 * day).description()));
    // Seven days before the 3rd is in December: the range goes over New Year.
    EXPECT_EQ(born(kZRWithinIntervalAroundTodayYearless, 7),
        fmt::format("({} <= birthdayYearless) OR (birthdayYearless <= {})", Value(360.5 * day).description(),
            Value(9.5 * day).description()));
    EXPECT_EQ(born(kZRWithinIntervalAroundTodayYearless, 200), "birthdayYearless != null");
    EXPECT_EQ(born(kZRWithinIntervalFromTodayYearless, 366), "birthdayYearless != null");
    EXPECT_NE(born(kZRWithinIntervalFromTodayYearless, 200), "birthdayYearless != null");
    EXPECT_EQ(asked(where(kZROtherDatesProperty, kZRNotWithinIntervalAroundTodayYearless, Value(200 * day))),
        "0 == SUBQUERY(dates, $rmo, ($rmo.dateYearless != null)).@count");
}

TEST_F(SearchPredicates, OfCustomPropertiesAskTheirRows)
{
    const auto types = [](ZRPropertyType type) { return Value(static_cast<std::int64_t>(type)); };
    ASSERT_EQ(
        ZRPerson::addPropertiesAndTypes(Value::dictionary({{"Team", types(kZRPropertyTypeString)},
                                            {"Score", types(kZRPropertyTypeInteger | kZRPropertyTypeMulti)},
                                            {"List", types(kZRPropertyTypeArray)}}),
            roster.get()),
        3);
    const auto team = asked(where("Team", kZRNotEqual, "x"));
    EXPECT_TRUE(team.starts_with(
        R"(0 == SUBQUERY(customProperties, $rmo, ($rmo.stringValue == "x") AND ($rmo.customProperty == )"))
        << team;
    const auto score = asked(where("Score", kZRLessThan, Value(3), "L"));
    EXPECT_TRUE(score.starts_with("0 != SUBQUERY(customProperties, $rmo, ($rmo.numberValue < 3) AND "))
        << score;
    EXPECT_TRUE(score.ends_with(R"( AND ($rmo.label == "L")).@count)")) << score;
    EXPECT_EQ(asked(where("List", kZREqual, "x")), "none");
}

} // namespace test
