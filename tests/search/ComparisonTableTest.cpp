// Does each comparison of each kind of property find in the store, and in memory, what its rules say?
#include "search/NaiveQuestion.h"
#include "search/RouteProof.h"
#include "search/SearchSamples.h"
#include "search/SearchWorld.h"

#include <fmt/format.h>

#include <fstream>

namespace test {

namespace {

constexpr ZRSearchComparison kComparisons = kZRNotMemberOfGroup + 1;

template <class Body>
void forEveryComparison(const Searched& searched, Body body)
{
    for (const auto& key : searched.keys)
        for (const auto& label : searched.labels)
            for (const auto& value : searched.values)
                for (ZRSearchComparison comparison = kZREqual; comparison < kComparisons; ++comparison)
                    for (const bool ignoresDiacritics : {false, true})
                        if (!ignoresDiacritics || (value.isString() && ruleOf(comparison).ignoresCase))
                            body(Condition{.property = searched.property,
                                .label = label,
                                .key = key,
                                .value = value,
                                .comparison = comparison,
                                .ofPeople = searched.isOfPeople,
                                .ignoresDiacritics = ignoresDiacritics});
}

/// What cannot be asked sensibly: a date has no order with a bare number of seconds.
bool isSensible(const Condition& search, ZRPropertyType type)
{
    return zrBaseType(type) != kZRPropertyTypeDate || !search.value.isNumber()
        || ruleOf(search.comparison).isInterval();
}

class ComparisonTable : public SearchWorld {
protected:
    /// Every comparison of those properties, and of the kinds, that are wanted.
    static void prove(RouteProof& proof, TwinRoster& twin, const auto& isWanted)
    {
        for (const auto& searched : searchedProperties(twin)) {
            const auto kind = searched.isOfPeople ? NaiveRecord::Kind::person : NaiveRecord::Kind::group;
            const auto type = typeOf(twin.plain(), searched.property, kind);
            forEveryComparison(searched, [&](const Condition& search) {
                if (isWanted(search, type) && isSensible(search, type))
                    proof.check(search);
            });
        }
    }
};

/// What there is but one leaf: whole cards beside groups.
Condition wholeCardBesideGroup()
{
    return {.conjunction = kZRConjunctionOr,
        .children = {{.value = Value("Ana"), .comparison = kZRDoesNotContainSubString},
            {.property = std::string(zr::kZRGroupNameProperty), .value = Value("Ana"), .ofPeople = false}}};
}

/// A smart group that the store cannot be asked about.
Condition companies()
{
    return {
        .property = std::string(zr::kZRPersonFlags), .value = Value(1), .comparison = kZRBitsInBitFieldMatch};
}

std::size_t count(const std::string& text, std::string_view part)
{
    std::size_t times = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++times;
    return times;
}

} // namespace

// A roster in a file, half of it unsaved: all kinds of properties, and all differences between the routes.
TEST_F(ComparisonTable, HoldsForEveryPropertyInBothRoutes)
{
    const PlaceAndTime berlin("Europe/Berlin", {.day = {2027, 2, 26}, .hour = 20});
    TwinRoster twin(ZRRoster::sharedRoster());
    fillWithSamples(twin);
    RouteProof proof(twin);
    prove(proof, twin, [](const Condition&, ZRPropertyType) { return true; });
    proof.check(wholeCardBesideGroup());
    twin.addSmartGroup("Companies", companies());
    prove(proof, twin, [](const Condition& search, ZRPropertyType) {
        return search.property == zr::kZRParentGroupsProperty;
    });
    proof.expectEveryDifference();
}

// Days are what depends on where and when one is.
TEST_F(ComparisonTable, HoldsForDatesElsewhere)
{
    const struct {
        const char* zone;
        platform::CalendarTime time;
    } places[]{{"America/Los_Angeles", {.day = {2025, 12, 28}, .hour = 20}},
        {"Pacific/Auckland", {.day = {2028, 3, 1}, .hour = 6}}, {"GMT", {.day = {2028, 2, 29}, .hour = 12}},
        {"Asia/Kolkata", {.day = {2027, 1, 1}, .hour = 0, .minute = 30}}};
    for (const auto& [zone, time] : places) {
        SCOPED_TRACE(zone);
        const PlaceAndTime there(zone, time);
        TwinRoster twin(ZRRoster::emptyMemoryBackedRoster());
        fillWithSamples(twin);
        RouteProof proof(twin);
        prove(proof, twin, [](const Condition& search, ZRPropertyType type) {
            const Rule& rule = ruleOf(search.comparison);
            return zrBaseType(type) == kZRPropertyTypeDate && (rule.isOrder() || rule.isInterval());
        });
    }
}

TEST(SearchPage, TellsTheDifferencesAndNoOthers)
{
    std::ifstream file(SEARCH_PAGE);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    for (const auto name : kDifferences)
        EXPECT_EQ(count(text, fmt::format("\n| {} | ", name)), 1U) << name;
    for (const auto name : kUnasked)
        EXPECT_EQ(count(text, fmt::format("\n| {} | ", name)), 1U) << name;
    const auto from = text.find("## Where the routes differ");
    const std::string told = text.substr(from, text.find("\n## ", from) - from);
    constexpr std::size_t headings = 2, linesOfHeading = 2;
    EXPECT_EQ(count(told, "\n|"), kDifferences.size() + kUnasked.size() + headings * linesOfHeading);
}

} // namespace test
