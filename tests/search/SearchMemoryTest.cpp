// What a comparison answers of live records in memory, and where the store answers the same.
#include "search/SearchWorld.h"

#include "platform/run/Clock.h"
#include "platform/text/Dates.h"

namespace test {

namespace {

using platform::Date;

class SearchInMemory : public SearchWorld {
protected:
    Ref<ZRPerson> ana() const
    {
        return person(roster,
            {{kZRFirstNameProperty, "Ana"}, {kZRNoteProperty, "Émile"}, {kZRPersonFlags, Value(17)},
                {kZRPhoneProperty, multiValue({{"1", "home"}, {"22", "work"}, {"3", "home"}})},
                {kZRAddressProperty,
                    multiValue({{Value::dictionary({{"City", "Rome"}, {"Planet", "Earth"}}), "home"}})}});
    }
};

struct Row {
    Ref<ZRSearchElement> search;
    bool inMemory;
    bool inStore;
};

void expect(const std::vector<Row>& rows, const ZRRecord& record)
{
    for (const auto& row : rows) {
        EXPECT_EQ(row.search->matchesRecord(record), row.inMemory) << "memory: " << row.search->description();
        EXPECT_EQ(row.search->predicateMatchesRecord(record), row.inStore)
            << "store: " << row.search->description();
    }
}

Date noon(int year, int month, int day) { return *platform::noonOf({year, month, day}); }

} // namespace

TEST_F(SearchInMemory, ComparesTexts)
{
    const auto is = [](ZRSearchComparison comparison, const Value& value, bool both) {
        return Row{where(kZRFirstNameProperty, comparison, value), both, both};
    };
    expect(
        {
            is(kZREqual, "Ana", true),
            is(kZREqual, "ana", false),
            is(kZRNotEqual, "Bo", true),
            is(kZRLessThan, "Bo", true),
            is(kZRLessThan, "Ana", false),
            is(kZRLessThanOrEqual, "Ana", true),
            is(kZRGreaterThan, "Al", true),
            is(kZRGreaterThanOrEqual, "Bo", false),
            is(kZREqualCaseInsensitive, "aNA", true),
            is(kZRContainsSubString, "na", true),
            is(kZRContainsSubString, "NA", false),
            is(kZRContainsSubStringCaseInsensitive, "NA", true),
            is(kZRPrefixMatch, "An", true),
            is(kZRPrefixMatch, "na", false),
            is(kZRPrefixMatchCaseInsensitive, "aN", true),
            is(kZRSuffixMatch, "na", true),
            is(kZRSuffixMatch, "An", false),
            is(kZRSuffixMatchCaseInsensitive, "NA", true),
            is(kZRDoesNotContainSubString, "NA", true),
            is(kZRDoesNotContainSubStringCaseInsensitive, "NA", false),
            is(kZRNotEqualCaseInsensitive, "ANA", false),
            is(kZRContainsSubString, Value(5), false),
            is(kZRWithinIntervalAroundToday, Value(5), false),
            is(kZRNotWithinIntervalAroundToday, Value(5), false),
        },
        *ana());
}

TEST_F(SearchInMemory, TreatsWhatIsNotThereByTheComparison)
{
    const auto nobody = person(roster, {{kZRLastNameProperty, "Nobody"}});
    for (ZRSearchComparison comparison = kZREqual; comparison <= kZRNotWithinIntervalFromTodayYearless;
         ++comparison) {
        const bool isNegative = comparison == kZRNotEqual || comparison == kZRNotEqualCaseInsensitive
            || comparison == kZRDoesNotContainSubString
            || comparison == kZRDoesNotContainSubStringCaseInsensitive;
        const bool isPlain = comparison == kZREqual || comparison == kZREqualCaseInsensitive
            || comparison == kZRContainsSubString || comparison == kZRContainsSubStringCaseInsensitive;
        expect(
            {{where(kZRFirstNameProperty, comparison, "x"), isNegative, isNegative},
                {where(kZRPhoneProperty, comparison, "x"),
                    isNegative || (comparison >= kZRNotWithinIntervalAroundToday && (comparison - 17) & 2),
                    isNegative || (comparison >= kZRNotWithinIntervalAroundToday && (comparison - 17) & 2)}},
            *nobody);
        if (comparison != kZRBitsInBitFieldMatch)
            expect({{where(kZRFirstNameProperty, comparison, Value()), isPlain, isPlain}}, *nobody);
    }
    // The two routes part for a card without a note: only memory looks at notes that are not there.
    expect({{where(kZRNoteProperty, kZRNotEqual, "x"), true, false}}, *nobody);
}

TEST_F(SearchInMemory, TestsBits)
{
    const auto card = ana(); // 17: shown as a company, first name first
    const auto bits = [](int value) { return where(kZRPersonFlags, kZRBitsInBitFieldMatch, Value(value)); };
    expect({{bits(1), true, true}, {bits(0), false, false}, {bits(16), true, true}, {bits(32), false, false}},
        *card);
    const auto nobody = person(roster, {{kZRFirstNameProperty, "Bo"}});
    expect({{bits(0), true, true}, {bits(1), false, false}}, *nobody);
}

TEST_F(SearchInMemory, ComparesEntriesByLabelAndKey)
{
    const auto phone = [](ZRSearchComparison comparison, const char* value,
                           ZRSearchElementMatch::TextView label = {}) {
        return where(kZRPhoneProperty, comparison, value, label);
    };
    const auto address = [](ZRSearchComparison comparison, const char* value,
                             ZRSearchElementMatch::TextView key) {
        return where(kZRAddressProperty, comparison, value, {}, key);
    };
    expect(
        {
            {phone(kZREqual, "22"), true, true},
            {phone(kZRNotEqual, "22"), false, false},
            {phone(kZRNotEqual, "4"), true, true},
            {phone(kZREqual, "22", "work"), true, true},
            {phone(kZREqual, "22", "home"), false, false},
            // Memory looks at the first entry of a label, the store at all.
            {phone(kZREqual, "3", "home"), false, true},
            {phone(kZRNotEqual, "3", "home"), true, false},
            {phone(kZRNotEqual, "1", "fax"), true, true},
            {address(kZREqual, "Rome", "City"), true, true},
            {address(kZREqual, "Earth", "Planet"), true, true},
            {address(kZRContainsSubString, "om", {}), true, true},
            {address(kZRDoesNotContainSubString, "om", {}), false, false},
            // The store wants every part of a whole address to be equal.
            {address(kZREqual, "Rome", {}), true, false},
        },
        *ana());
}

TEST_F(SearchInMemory, IgnoresDiacriticsInTheCaseInsensitiveFormsOnly)
{
    const auto card = ana();
    for (const auto comparison : {kZRContainsSubString, kZRContainsSubStringCaseInsensitive}) {
        const auto search = where(kZRNoteProperty, comparison, "emile");
        EXPECT_FALSE(search->matchesRecord(*card));
        search->setDiacriticInsensitiveOption(true);
        EXPECT_EQ(search->matchesRecord(*card), comparison == kZRContainsSubStringCaseInsensitive);
        EXPECT_EQ(search->predicateMatchesRecord(*card), comparison == kZRContainsSubStringCaseInsensitive);
    }
}

TEST_F(SearchInMemory, LooksThroughTheWholeCard)
{
    const auto contains = [](const char* text) {
        return wholeCard(text, kZRContainsSubStringCaseInsensitive);
    };
    expect(
        {
            {contains("EMI"), true, true},
            // The index text is folded, and so is what the store is asked for; memory takes words as they
            // are.
            {contains("ÉMI"), false, true},
            {contains("nobody"), false, false},
            {contains(""), true, true},
            {wholeCard("nobody", kZRDoesNotContainSubString), true, true},
            {wholeCard("ana", kZRDoesNotContainSubString), false, false},
        },
        *ana());
}

TEST_F(SearchInMemory, ReadsAnewAfterAnEdit)
{
    const auto card = ana();
    const auto search = ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd,
        {where(kZRFirstNameProperty, kZRPrefixMatch, "A"), where(kZRFirstNameProperty, kZRSuffixMatch, "a")});
    EXPECT_TRUE(search->matchesRecord(*card));
    card->setValue("Bo", kZRFirstNameProperty);
    EXPECT_FALSE(search->matchesRecord(*card));
}

TEST_F(SearchInMemory, FindsDaysAroundToday)
{
    platform::ManualClock clock(noon(2023, 1, 3).seconds);
    const platform::ClockScope scope(clock);
    constexpr double day = 86400;
    const auto born = [](ZRSearchComparison comparison, double days) {
        return where(kZRBirthdayProperty, comparison, Value(days * day));
    };
    const auto card = person(roster, {{kZRBirthdayProperty, Value(noon(1975, 12, 30))}});
    expect(
        {
            {born(kZRWithinIntervalAroundTodayYearless, 5), true, true},
            {born(kZRWithinIntervalAroundTodayYearless, 3), false, false},
            {born(kZRNotWithinIntervalAroundTodayYearless, 5), false, false},
            {born(kZRNotWithinIntervalAroundTodayYearless, 3), true, true},
            {born(kZRWithinIntervalFromTodayYearless, 30), false, false},
            {born(kZRWithinIntervalFromTodayYearless, 363), true, true},
            {born(kZRNotWithinIntervalFromTodayYearless, 30), true, true},
            {born(kZRWithinIntervalAroundTodayYearless, 200), true, true},
            {born(kZRWithinIntervalAroundToday, 5), false, false},
            {born(kZRNotWithinIntervalAroundToday, 5), true, true},
            // The far end is in the store's range only.
            {born(kZRWithinIntervalAroundTodayYearless, 4), false, true},
            {where(kZRBirthdayProperty, kZREqual, Value(Date{noon(1975, 12, 30).seconds + 3600})), true,
                true},
            {where(kZRBirthdayProperty, kZRLessThan, Value(noon(1976, 1, 1))), true, true},
        },
        *card);
    clock.setNow(noon(1976, 1, 1).seconds);
    expect({{born(kZRWithinIntervalAroundToday, 5), true, true},
               {born(kZRWithinIntervalFromToday, 5), false, false}},
        *card);
    EXPECT_EQ(born(kZRWithinIntervalAroundToday, 5)->_withinDate(),
        Value(Date{noon(1976, 1, 1).seconds - 5 * day}));
}

TEST_F(SearchInMemory, AgreesWithAFetchInAContextOfItsOwn)
{
    const auto card = ana();
    ASSERT_TRUE(roster->save());
    ZRSearchElement::_setTestPredicatesMatchRecordInStore(true);
    EXPECT_TRUE(where(kZRFirstNameProperty, kZREqual, "Ana")->predicateMatchesRecord(*card));
    EXPECT_FALSE(where(kZRFirstNameProperty, kZREqual, "Bo")->predicateMatchesRecord(*card));
    ZRSearchElement::_setTestPredicatesMatchRecordInStore(false);
}

} // namespace test
