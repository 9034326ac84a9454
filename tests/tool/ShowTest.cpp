// How `roster show` writes numbers and addresses, which stay as they are stored.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;
using testing::HasSubstr;

using ShowTest = PeopleWorld;

TEST_F(ShowTest, WritesNumbersAndAddressesAsTheirCountriesDo)
{
    const Json stored = world.json(
        "edit Dubois --set Phone;home=2125550123 --set Phone;work=+493012345678 --set Phone;mobile=anytime "
        "--set 'Address.Street;home=Torstr. 1' --set Address.City;home=Berlin --set Address.ZIP;home=10115 "
        "--set Address.Country;home=Germany --set Address.CountryCode;home=de "
        "--set 'Address.Street;work=12 Elm Street\nFloor 2' --set Address.City;work=Springfield "
        "--set Address.State;work=IL --set Address.ZIP;work=62701");
    ASSERT_EQ(stored["properties"]["Phone"][1]["value"], "+493012345678");
    const std::string shown = done("show Dubois").out;
    for (const char* part : {"Phone (home)           (212) 555-0123\n", "Phone (mobile)         anytime\n",
             "Phone (work)           +49 30", "Germany\n",
             "Address (home)         Torstr. 1\n                         10115 Berlin\n",
             "Address (work)         12 Elm Street\n                         Floor 2\n"
             "                         Springfield IL 62701\n"})
        EXPECT_THAT(shown, HasSubstr(part));
    EXPECT_THAT(shown, testing::Not(HasSubstr("+493012345678")));
    EXPECT_EQ(world.json("show Dubois"), stored);
}

} // namespace
