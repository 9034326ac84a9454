// How searches read as the rows of a rule editor, and intervals as people say them.
#include "search/SmartGroupWorld.h"
#include "search/ZRSearchElementHelper.h"

#include <fmt/format.h>

#include <cmath>

namespace test {

namespace {

using Helper = ZRSearchElementHelper;

std::vector<Ref<ZRSearchElement>> over(
    const std::vector<std::string>& properties, const Value& value, ZRSearchComparison comparison)
{
    std::vector<Ref<ZRSearchElement>> searches;
    for (const auto& property : properties)
        searches.push_back(where(property, comparison, value));
    return searches;
}

/// What an editor makes of "name contains": all properties of a name.
Ref<ZRSearchElement> name(
    const char* text, ZRSearchComparison comparison = kZRContainsSubStringCaseInsensitive)
{
    return any(over(Helper::nameProperties(), text, comparison));
}

Ref<ZRSearchElement> address(const char* text)
{
    std::vector<Ref<ZRSearchElement>> searches;
    for (const auto& key : Helper::AddressKeys())
        searches.push_back(where(kZRAddressProperty, kZRContainsSubString, text, kZRAddressHomeLabel, key));
    return any(searches);
}

/// Rows and lists in a line: "OR[0.0 First 7 Ana, …]", with order and level in front.
class Writer final : public ZRSearchRuleBuilder {
public:
    void addRule(const ZRSearchRule& rule, std::int64_t order, std::int64_t level) override
    {
        text += fmt::format("{}{}.{} {}{}{} {} {}", text.empty() || text.ends_with('[') ? "" : ", ", level,
            order, rule.property, rule.label ? "/" + *rule.label : "", rule.key ? "/" + *rule.key : "",
            rule.comparison, rule.value.description());
    }
    void beginList(ZRSearchConjunction conjunction, std::int64_t order, std::int64_t level) override
    {
        text += fmt::format("{}{}.{} {}[", text.empty() || text.ends_with('[') ? "" : ", ", level, order,
            conjunction == kZRConjunctionAnd ? "AND" : "OR");
    }
    void endList(std::int64_t, std::int64_t) override { text += "]"; }

    std::string text;
};

class SearchElementHelpers : public SearchWorld { };

TEST_F(SearchElementHelpers, WriteASearchAsRows)
{
    const auto grouped = all({name("Ana"), name("Lima", kZREqual)});
    static_cast<ZRSearchElementConjunction&>(*grouped).setIsRuleGrouping(true);
    const auto city = where(kZRAddressProperty, kZREqual, "Rome", {}, kZRAddressCityKey);
    const auto note = where(kZRNoteProperty, kZREqual, "x");
    const auto chats = any(over(Helper::IMProperties(), "ana", kZREqual));
    auto mixed = over(Helper::nameProperties(), "Ana", kZREqual);
    mixed.back() = where(Helper::nameProperties().back(), kZREqual, "Bo");

    const std::tuple<const char*, Ref<ZRSearchElement>, std::string> rows[] = {
        {"a comparison", note, "0.0 Note 0 x"},
        {"the whole card", wholeCard("x", kZREqual), "0.0  0 x"},
        {"a key", city, "0.0 Address/City 0 Rome"},
        {"a list", all({note, city}), "0.0 AND[1.0 Note 0 x, 1.1 Address/City 0 Rome]"},
        {"a name", name("Ana"), "0.0 First 8 Ana"},
        {"all chats", chats, "0.0 AIMInstant 0 ana"},
        {"an address", address("Rome"), "0.0 Address/_$!<Home>!$_ 7 Rome"},
        {"two names are two rows", all({name("Ana"), name("Lima")}),
            "0.0 AND[1.0 First 8 Ana, 1.1 First 8 Lima]"},
        {"two names marked as one", grouped, "0.0 First 0 Ana Lima"},
        {"two names below", any({note, all({name("Ana"), name("Lima")})}),
            "0.0 OR[1.0 Note 0 x, 1.1 First 8 Ana Lima]"},
        {"lists in lists", any({all({note, chats}), city}),
            "0.0 OR[1.0 AND[2.0 Note 0 x, 2.1 AIMInstant 0 ana], 1.1 Address/City 0 Rome]"},
    };
    for (const auto& [what, search, expected] : rows) {
        Writer writer;
        Helper::buildRepresentationFromSearchElement(*search, writer);
        EXPECT_EQ(writer.text, expected) << what;
        EXPECT_EQ(Helper::isSingleSearchElement(*search, 0).has_value(), !expected.ends_with(']')) << what;
    }
    EXPECT_FALSE(Helper::isSingleSearchElement(*any(mixed), 0)) << "they do not ask the same";
}

TEST_F(SearchElementHelpers, ReadNames)
{
    auto others = over(Helper::nameProperties(), "Ana", kZREqual);
    others.pop_back();
    const std::tuple<const char*, Ref<ZRSearchElement>, Value, ZRSearchComparison> rows[] = {
        {"a name", name("Ana"), "Ana", kZRContainsSubStringCaseInsensitive},
        {"names", all({name("Ana"), name("de"), name("Lima", kZRPrefixMatch)}), "Ana de Lima",
            kZRPrefixMatch},
        {"a name and a note", all({where(kZRNoteProperty, kZREqual, "x"), name("Ana")}), "Ana",
            kZRContainsSubStringCaseInsensitive},
        {"not all properties", any(others), {}, -1},
        {"a comparison", where(kZRFirstNameProperty, kZREqual, "Ana"), {}, -1},
    };
    for (const auto& [what, search, expected, expectedComparison] : rows) {
        ZRSearchComparison comparison = -1;
        EXPECT_EQ(Helper::nameValueForConjoinedSearchElement(*search, comparison), expected) << what;
        EXPECT_EQ(comparison, expectedComparison) << what;
    }
}

TEST(SearchIntervals, ReadAsPeopleSayThem)
{
    using enum ZRDateUnit;
    constexpr double day = 86400, week = 7 * day + 1, month = 31 * day + 1, year = 365 * day + 1;
    const std::tuple<double, ZRDateUnit, double> rows[] = {
        {0, days, 0},
        {day, days, 1},
        {6 * day, days, 6},
        {day / 2, days, 0.5},
        {10.25 * day, days, 10.25},
        {week, weeks, 1},
        {7 * day, days, 7}, // less than a week of the editor
        {14 * day, weeks, 2},
        {8 * day, weeks, 1},
        {9 * day, days, 9},
        {3 * week, weeks, 3},
        {month, months, 1},
        {31 * day, days, 31},
        {2 * month, months, 2},
        {60 * day, days, 60},
        {63 * day, months, 2},
        {year, years, 1},
        {11 * month, months, 11},
        {2 * year, years, 2},
        {1.08 * year, years, 1},
        {1.92 * year, years, 2},
        {1.09 * year, days, 1.09 * year / day},
        {365 * day, weeks, 52},
        {-3 * day, days, -3},
    };
    for (const auto& [seconds, unit, count] : rows) {
        const ZRDateSpan span = Helper::calculateBestDateType(seconds);
        EXPECT_EQ(span.unit, unit) << seconds;
        EXPECT_EQ(span.count, count) << seconds;
    }
    // What an editor offers comes back as it was entered.
    for (const auto& [most, unit, length] :
        {std::tuple(40, years, year), {11, months, month}, {4, weeks, week}, {6, days, day}})
        for (int count = 1; count <= most; ++count) {
            const ZRDateSpan span = Helper::calculateBestDateType(count * length);
            EXPECT_EQ(span.unit, unit) << count;
            EXPECT_EQ(span.count, count);
        }
    EXPECT_EQ(Helper::calculateBestDateType(INFINITY).unit, days);
}

} // namespace

} // namespace test
