// What cannot be done ends with its status and one line, and changes nothing.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;

using RefusalsTest = PeopleWorld;

TEST_F(RefusalsTest, TellOneLineAndChangeNothing)
{
    for (const char* line : {"add --set First=BEN --set Last=Ék", "group make Friends",
             "group add Friends Lima", "group make Outer", "group make outer", "group make Inner --in Outer",
             "smart-group make Anas --first Ana", "smart-group make Both --where 'Group member-of Anas'"})
        done(line);
    const auto everything = [&] {
        return Json{world.cards(), world.json("group list"), world.json("smart-group list"),
            world.json("group show Friends"), world.json("group show Outer"), world.json("group show Inner")};
    };
    const Json before = everything();
    for (const auto& [place, line, wanted] : lineCasesIn("refusals.txt")) {
        SCOPED_TRACE(place);
        const auto blank = wanted.front().find(' ');
        expectRefusals({{line, std::stoi(wanted.front()), wanted.front().substr(blank + 1)}});
    }
    EXPECT_EQ(everything(), before);
}

} // namespace
