// Texts compare and are found as the options say.
#include "platform/text/Compare.h"

#include "Samples.h"
#include "platform/text/Fold.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace platform {
namespace {

constexpr std::uint32_t kNoCase = kCompareCaseInsensitive;
constexpr std::uint32_t kNoCaseNoMarks = kCompareCaseInsensitive | kCompareDiacriticInsensitive;

int sign(std::weak_ordering order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

struct Pair {
    std::string_view a, b;
    std::uint32_t options;
    int order;
};

const Pair kPairs[] = {
    {"", "", 0, 0},
    {"B", "a", 0, -1},
    {"B", "a", kNoCase, 1},
    {"a", "é", 0, -1},
    {"É", "e", kCompareDiacriticInsensitive, -1},
    {"É", "E", kCompareDiacriticInsensitive, 0},
    {"e\u0301z", "eb", kNoCaseNoMarks, 1},
    {"\uFFFF", "😀", 0, -1},
    {"a10", "a9", 0, -1},
    {"a10", "a9", kCompareNumeric, 1},
    {"a010", "A10", kCompareNumeric | kNoCase, 0},
    {"a1b2", "a1b10", kCompareNumeric, -1},
    {"99999999999999999999998", "99999999999999999999999", kCompareNumeric, -1},
    {"9", "a", kCompareNumeric, -1},
    {"a", "B", kCompareLocalized, -1},
    {"a", "A", kCompareLocalized, -1},
    {"a", "A", kCompareLocalized | kNoCase, 0},
    {"e", "É", kCompareLocalized | kNoCase, -1},
    {"e", "É", kCompareLocalized | kNoCaseNoMarks, 0},
    {"e", "É", kCompareLocalized | kCompareDiacriticInsensitive, -1},
    {"E", "É", kCompareLocalized | kCompareDiacriticInsensitive, 0},
    {"é", "e\u0301", kCompareLocalized, 0},
    {"Room 10", "Room 9", kCompareLocalized | kCompareNumeric, 1},
    {"Room 10", "Room 9", kCompareLocalized, -1},
};

TEST(Compare, OrdersByItsOptionsBothWaysRound)
{
    for (const auto& [a, b, options, order] : kPairs) {
        EXPECT_EQ(sign(compare(a, b, options)), order) << a << " / " << b << " / " << options;
        EXPECT_EQ(sign(compare(b, a, options)), -order) << b << " / " << a << " / " << options;
    }
}

// What memory compares must be what SQLite compares, which sees folded text only.
TEST(Compare, IsTheOrderOfTheFoldedBytes)
{
    Samples samples;
    for (int count = 0; count < 20000; ++count) {
        const std::string a = samples.text(kManyScripts, 5);
        const std::string b = count % 4 ? samples.text(kManyScripts, 5) : a + samples.text(kManyScripts, 2);
        EXPECT_EQ(sign(compare(a, b, kNoCase)), sign(foldCase(a) <=> foldCase(b))) << a << " / " << b;
        EXPECT_EQ(
            sign(compare(a, b, kNoCaseNoMarks)), sign(foldCaseAndDiacritics(a) <=> foldCaseAndDiacritics(b)))
            << a << " / " << b;
    }
}

struct Search {
    std::string_view needle, haystack;
    std::uint32_t options;
    std::optional<TextRange> range;
};

TEST(RangeOf, CoversWholeCharactersOfTheHaystack)
{
    const Search searches[] = {
        {"", "abc", 0, std::nullopt},
        {"", "abc", kNoCase, std::nullopt},
        {"\u0301", "abc", kNoCaseNoMarks, std::nullopt},
        {"abcd", "abc", 0, std::nullopt},
        {"b", "abcb", 0, TextRange{1, 1}},
        {"b", "abcb", kCompareBackwards, TextRange{3, 1}},
        {"B", "abc", 0, std::nullopt},
        {"B", "abc", kNoCase, TextRange{1, 1}},
        {"b", "abc", kCompareAnchored, std::nullopt},
        {"AB", "abc", kCompareAnchored | kNoCase, TextRange{0, 2}},
        {"BC", "abc", kCompareAnchored | kCompareBackwards | kNoCase, TextRange{1, 2}},
        {"ab", "abc", kCompareAnchored | kCompareBackwards, std::nullopt},
        {"ER", "Müller", kNoCase, TextRange{5, 2}},
        {"muller", "Frau MÜLLER!", kNoCaseNoMarks, TextRange{5, 7}},
        {"e", "re\u0301\u0323t", kNoCaseNoMarks, TextRange{1, 5}},
        {"e", "re\u0301\u0323", kNoCaseNoMarks | kCompareAnchored | kCompareBackwards, TextRange{1, 5}},
        {"r", "\u0301re", kNoCaseNoMarks | kCompareAnchored, TextRange{2, 1}},
        {"ss", "Straße", kNoCase, TextRange{4, 2}},
        {"as", "Straße", kNoCase, TextRange{3, 3}},
        {"s", "aß", kNoCase | kCompareBackwards, TextRange{1, 2}},
        {"É", "cafe", kNoCase, std::nullopt},
        {"É", "cafe", kNoCaseNoMarks, TextRange{3, 1}},
        {"か", "が", kNoCaseNoMarks, TextRange{0, 3}},
    };
    for (const auto& [needle, haystack, options, range] : searches) {
        const auto found = rangeOf(needle, haystack, options);
        ASSERT_EQ(found.has_value(), range.has_value()) << needle << " in " << haystack << ' ' << options;
        EXPECT_EQ(contains(haystack, needle, options), range.has_value());
        if (range) {
            EXPECT_EQ(found->of(haystack), range->of(haystack)) << needle << " in " << haystack;
        }
    }
}

TEST(RangeOf, FindsExactlyWhatFoldedTextContains)
{
    Samples samples;
    int found = 0;
    for (int count = 0; count < 20000; ++count) {
        const std::string haystack = samples.text(kManyScripts, 30), needle = samples.text(kManyScripts, 2);
        const std::string folded = foldCaseAndDiacritics(needle);
        const auto range = rangeOf(needle, haystack, kNoCaseNoMarks);
        ASSERT_EQ(range.has_value(),
            !folded.empty() && foldCaseAndDiacritics(haystack).find(folded) != std::string::npos);
        if (!range)
            continue;
        ++found;
        ASSERT_TRUE(isValidUTF8(range->of(haystack))) << needle << " in " << haystack;
        ASSERT_NE(foldCaseAndDiacritics(range->of(haystack)).find(folded), std::string::npos);
    }
    EXPECT_GT(found, 100);
}

std::vector<std::string> sorted(std::vector<std::string> names)
{
    std::sort(names.begin(), names.end(),
        [](const auto& a, const auto& b) { return compare(a, b, kCompareLocalized) < 0; });
    return names;
}

TEST(Collation, FollowsTheLanguageOfTheMoment)
{
    const std::vector<std::string> swedish{"Olsen", "Zorn", "Öberg"}, german{"Öberg", "Olsen", "Zorn"};
    const test::ScopedVariable none("LC_ALL", nullptr);
    test::ScopedVariable collate("LC_COLLATE", "sv_SE.UTF-8");
    EXPECT_EQ(sorted(german), swedish);
    const std::string key = collationKey("Öberg"), version = collationVersion();
    collate.set("de_DE.UTF-8");
    EXPECT_EQ(sorted(swedish), german);
    EXPECT_NE(collationKey("Öberg"), key);
    EXPECT_NE(collationVersion(), version);
    collate.set("sv_SE.UTF-8");
    EXPECT_EQ(collationVersion(), version);
}

TEST(Collation, KeysOrderAsTextsDo)
{
    Samples samples;
    for (int count = 0; count < 5000; ++count) {
        const std::string a = samples.text(kManyScripts, count % 50 ? 6 : 300);
        const std::string b = count % 3 ? samples.text(kManyScripts, 6) : a + samples.text(kManyScripts, 1);
        ASSERT_EQ(sign(collationKey(a) <=> collationKey(b)), sign(compare(a, b, kCompareLocalized)))
            << a << " / " << b;
    }
}

} // namespace
} // namespace platform
