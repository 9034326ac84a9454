// Languages that people write for their country become the country.
#include "core/CountryCodes.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(CountryCodes, AreCorrectedWherePeopleWriteTheLanguage)
{
    for (const auto& [written, stored] :
        {std::pair{"cs", "cz"}, {"ja", "jp"}, {"uk", "gb"}, {"us", "us"}, {"UK", "UK"}, {"", ""}})
        EXPECT_EQ(correctedCountryCode(written), stored) << written;
}

} // namespace
