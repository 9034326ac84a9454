// Addresses come out as the postal services of their countries publish them, punctuation aside.
#include "AddressWorld.h"

#include "format/AddressDisplay.h"
#include "format/ZRAddressFunctions.h"
#include "support/TextCases.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace test {

namespace {

std::string joined(const std::vector<std::string>& lines, const std::string& separator)
{
    return fmt::format("{}", fmt::join(lines, separator));
}

/// The parts of a text between separators.
std::vector<std::string> split(const std::string& text, const std::string& separator)
{
    std::vector<std::string> parts;
    for (std::size_t at = 0; at <= text.size(); at += parts.back().size() + separator.size())
        parts.push_back(text.substr(at, text.find(separator, at) - at));
    return parts;
}

} // namespace

TEST_F(AddressTest, StandsAsItsPostalServicePublishesIt)
{
    const auto examples = casesIn(PUBLISHED_ADDRESSES);
    EXPECT_GE(examples.size(), 40U);
    for (const auto& example : examples) {
        const auto fields = split(example.input.substr(0, example.input.find('\n')), " | ");
        ASSERT_EQ(fields.size(), 6U) << example.message();
        const Value value =
            address({{"CountryCode", fields[0]}, {"Street", joined(split(fields[1], " / "), "\n")},
                {"City", fields[2]}, {"State", fields[3]}, {"ZIP", fields[4]}, {"Country", fields[5]}});
        EXPECT_EQ(
            visible(std::string(ZRCreateFormattedAddressFromDictionary(*roster, value).asText())) + "\n",
            example.expected)
            << example.message();
        EXPECT_EQ(joined(displayLinesOfAddress(*roster, value), "\n") + "\n", example.expected)
            << example.message();
    }
}

TEST_F(AddressTest, IsShownWithoutGapsAndWithAllThatIsStored)
{
    const struct {
        Value address;
        const char* shown;
    } cases[] = {
        {address({{"City", "Berlin"}, {"CountryCode", "de"}}), "Berlin / Germany"},
        {address({{"Street", " A 1 \n\n  B 2\t"}, {"ZIP", "\u200E10115 "}, {"CountryCode", "de"}}),
            "A 1 / B 2 / 10115 / Germany"},
        // The country's format has no place for a state, and the state is not lost.
        {address({{"City", "Berlin"}, {"State", "Berlin-Mitte"}, {"CountryCode", "DE"}}),
            "Berlin / Berlin-Mitte / Germany"},
        {address({{"City", "Macau"}, {"State", "Taipa"}, {"CountryCode", "mo"}}),
            "Macao SAR China / Macau / Taipa"},
        // At home nobody writes the country, and what is written stands.
        {address({{"City", "Austin"}, {"State", "TX"}, {"CountryCode", "us"}}), "Austin TX"},
        {address({{"City", "Austin"}, {"Country", "Texas!"}, {"CountryCode", "us"}}), "Austin / Texas!"},
        {address({{"City", "Austin"}, {"CountryCode", "xx"}}), "Austin"},
        {address({{"City", "Austin"}}), "Austin"},
        {address({{"CountryCode", "jp"}}), "Japan"},
        {address({}), ""},
        {Value(), ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(joined(displayLinesOfAddress(*roster, c.address), " / "), c.shown)
            << c.address.description();
}

} // namespace test
