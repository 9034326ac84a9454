// What `roster add`, `edit` and `remove` do by the words of a command line.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;
using testing::HasSubstr;

using ChangesTest = PeopleWorld;

TEST_F(ChangesTest, SetAndTakeOutEntries)
{
    for (const auto& [place, line, wanted] : lineCasesIn("entries.txt")) {
        done("edit Ana Lima " + line);
        const auto property = wanted.front().substr(0, wanted.front().find(':'));
        const auto entries = entriesIn(world.json("show 'Ana Lima'"), property);
        EXPECT_EQ(property + ":" + (entries.empty() ? "" : " ") + entries, wanted.front())
            << place << " " << line;
    }
}

TEST_F(ChangesTest, SetAndTakeOutSingleValues)
{
    const Json card = world.json("edit Lima --set nickname=Nana --set 'Birthday=2 May 1971' --unset First "
                                 "--set ZRPersonFlags=1 --set 'Organization=Lima; Sons = Co'");
    EXPECT_EQ(card["properties"]["Nickname"], "Nana");
    EXPECT_EQ(card["properties"]["Birthday"], "1971-05-02");
    EXPECT_EQ(card["name"], "Lima; Sons = Co");
    EXPECT_FALSE(card["properties"].contains("First"));
    EXPECT_THAT(done("edit Lima --set Nickname=Nana").out, HasSubstr("Nothing changed in Lima;"));
}

TEST_F(ChangesTest, AddACard)
{
    EXPECT_THAT(done("add --set First=Eva --set Phone;mobile=555").out,
        testing::MatchesRegex("Added Eva \\([0-9A-F]{8}\\)\n"));
    EXPECT_EQ(entriesIn(world.json("show Eva"), "Phone"), "<Mobile>=555*");
}

TEST_F(ChangesTest, RemoveWhatIsNamedExactly)
{
    const auto id = world.idOf("Analund");
    EXPECT_THAT(done("remove 'ana lima' 'Ana Lima'").out,
        testing::MatchesRegex("Removed Ana Lima \\([0-9A-F]{8}\\)\n"));
    EXPECT_EQ(world.json("remove " + id.substr(0, 8) + " 'chloe dubois'")["removed"].size(), 2U);
    EXPECT_EQ(names("list"), "Anvil Works, Ben Ek");
}

} // namespace
