// The lists that come with the library: every template of every country is of use and does no harm.
#include "format/NaivePhoneFormat.h"
#include "format/ZRPhoneFormatter.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>

namespace {

using platform::makeRef;
using test::positionsOf;
using Formats = std::vector<std::string>;

/// Whether `positions`, from `at` on, take every number that begins with `number`.
bool takesAll(std::string_view positions, std::string_view wanted, std::size_t at)
{
    for (; at < positions.size(); ++at)
        if (positions[at] != '#' && positions[at] != wanted[at])
            return false;
    return true;
}

/// A number that fits `wanted` and none of its rivals, digit by digit; absent when they take all of its
/// numbers.
std::optional<std::string> firstNumber(
    std::string_view wanted, const std::vector<std::string>& rivals, std::string number = {})
{
    if (number.size() == wanted.size())
        return rivals.empty() ? std::optional(number) : std::nullopt;
    const std::size_t at = number.size();
    if (std::any_of(
            rivals.begin(), rivals.end(), [&](const auto& rival) { return takesAll(rival, wanted, at); }))
        return {};
    const std::string choices = wanted[at] == '#' ? "0123456789" : std::string(1, wanted[at]);
    for (const char choice : choices) {
        std::vector<std::string> left;
        std::copy_if(rivals.begin(), rivals.end(), std::back_inserter(left),
            [&](const auto& rival) { return rival[at] == '#' || rival[at] == choice; });
        if (auto found = firstNumber(wanted, left, number + choice))
            return found;
    }
    return {};
}

/// Runs `body` for each list of each country, which a failure then names.
void forEachList(const std::function<void(const Formats&)>& body)
{
    for (const auto& [country, lists] :
        ZRPhoneFormatter::phoneFormatsDictionary().asDictionary()->entries()) {
        EXPECT_THAT(country, testing::MatchesRegex("[a-z][a-z]"));
        EXPECT_EQ(lists.asArray().size(), 2U) << country;
        std::size_t number = 0;
        for (const auto& list : lists.asArray()) {
            SCOPED_TRACE(country + ", list " + std::to_string(number++));
            Formats formats;
            for (const auto& format : list.asArray())
                formats.emplace_back(format.asText());
            body(formats);
        }
    }
}

TEST(PhoneFormats, HoldOnlyTidyTemplates)
{
    std::size_t lists = 0;
    forEachList([&](const Formats& formats) {
        ++lists;
        EXPECT_THAT(formats.size(), testing::AllOf(testing::Ge(1U), testing::Le(60U)));
        for (const auto& format : formats) {
            EXPECT_EQ(format.find_first_not_of(" -.()/+0123456789#"), std::string::npos) << format;
            EXPECT_EQ(format.back(), '#') << format << ": ends with decoration, or takes one number only";
            EXPECT_EQ(std::ranges::count(format, '('), std::ranges::count(format, ')'));
            // "#" takes a plus sign too, and would tear up the numbers of other countries.
            EXPECT_NE(positionsOf(format).front(), '#') << format;
        }
    });
    EXPECT_EQ(lists, 2U * 245U) << "two of each country";
}

TEST(PhoneFormats, EachHaveANumberOfTheirOwnThatStaysAsItIsWritten)
{
    forEachList([](const Formats& formats) {
        const auto formatter = makeRef<ZRPhoneFormatter>();
        std::map<std::size_t, std::vector<std::string>> earlier;
        for (const auto& format : formats)
            formatter->addFormat(format);
        for (const auto& format : formats) {
            auto& rivals = earlier[positionsOf(format).size()];
            const auto number = firstNumber(positionsOf(format), rivals);
            ASSERT_TRUE(number) << format << " is never reached";
            const auto shown = formatter->stringForObjectValue(*number);
            EXPECT_EQ(shown, test::naivelyFormatted(*number, {format})) << format;
            EXPECT_EQ(formatter->stringForObjectValue(*shown), shown) << format;
            rivals.push_back(positionsOf(format));
        }
    });
}

TEST(PhoneFormats, PutTheMoreLiteralOfTwoFirst)
{
    const auto literals = [](const std::string& positions) {
        return std::count_if(positions.begin(), positions.end(), [](char c) { return c != '#'; });
    };
    const auto meet = [](const std::string& a, const std::string& b) {
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
            return x == y || x == '#' || y == '#';
        });
    };
    forEachList([&](const Formats& formats) {
        for (auto later = formats.begin(); later != formats.end(); ++later)
            for (auto earlier = formats.begin(); earlier != later; ++earlier) {
                const auto first = positionsOf(*earlier), second = positionsOf(*later);
                EXPECT_TRUE(!meet(first, second) || literals(first) >= literals(second))
                    << *earlier << " " << *later;
            }
    });
}

TEST(PhoneFormats, BeginAtHomeInTheFirstListAndAbroadInTheSecond)
{
    const auto isAbroad = [](const std::string& format) { return format.front() == '+'; };
    int number = 0;
    forEachList([&](const Formats& formats) {
        Formats sorted = formats;
        std::stable_partition(sorted.begin(), sorted.end(),
            [&](const auto& format) { return isAbroad(format) == (number % 2 == 1); });
        EXPECT_EQ(formats, sorted);
        EXPECT_TRUE(std::any_of(formats.begin(), formats.end(), isAbroad));
        ++number;
    });
}

} // namespace
