// The countries are those of the world, as ICU lists them.
#include "core/CountryCodes.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include <unicode/uloc.h>

namespace {

TEST(CountryCodes, AreThoseOfICU)
{
    std::vector<std::string> expected;
    for (const char* const* code = uloc_getISOCountries(); *code; ++code) {
        expected.emplace_back(*code);
        std::ranges::transform(
            expected.back(), expected.back().begin(), [](char c) { return char(c | 0x20); });
    }
    const auto codes = knownCountryCodes();
    EXPECT_THAT(
        std::vector<std::string>(codes.begin(), codes.end()), testing::UnorderedElementsAreArray(expected));
}

TEST(CountryCodes, AreKnownInLowerCaseOnly)
{
    for (const char* code : {"ad", "de", "us", "zw"})
        EXPECT_TRUE(isKnownCountry(code)) << code;
    for (const char* code : {"", "d", "xx", "US", "uk", "usa", "zz", "aa"})
        EXPECT_FALSE(isKnownCountry(code)) << code;
}

TEST(CountryCodes, AreCorrectedWherePeopleWriteTheLanguage)
{
    for (const auto& [written, stored] :
        {std::pair{"cs", "cz"}, {"ja", "jp"}, {"uk", "gb"}, {"us", "us"}, {"UK", "UK"}, {"", ""}})
        EXPECT_EQ(correctedCountryCode(written), stored) << written;
}

} // namespace
