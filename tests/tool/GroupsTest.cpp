// What `roster group` and `roster smart-group` do.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;
using testing::HasSubstr;

using GroupsTest = PeopleWorld;

TEST_F(GroupsTest, AreMadeFilledRenamedAndDeleted)
{
    EXPECT_THAT(done("group make Old friends").out, HasSubstr("Made Old friends ("));
    done("group add 'Old friends' Lima Ek Dubois");
    EXPECT_EQ(names("group members 'OLD FRIENDS'"), "Chloé Dubois, Ben Ek, Ana Lima");
    EXPECT_EQ(names("group members 'Old friends' --sort first --limit 2"), "Ana Lima, Ben Ek");
    EXPECT_EQ(names("list --group 'Old friends' --sort first"), "Ana Lima, Ben Ek, Chloé Dubois");
    done("group rename 'Old friends' Friends");
    done("group remove Friends Dubois");
    EXPECT_EQ(names("list --group Friends"), "Ben Ek, Ana Lima");
    EXPECT_EQ(names("group list"), "Friends");

    done("group make Family --in Friends");
    done("group add Family Analund");
    EXPECT_EQ(names("group subgroups Friends"), "Family");
    EXPECT_EQ(names("group members Friends"), "Ben Ek, Ana Lima");
    EXPECT_EQ(names("group members --deep Friends"), "Dan Analund, Ben Ek, Ana Lima");
    const std::string shown = done("group show Friends").out;
    for (const char* part : {"Subgroups              Family (", "Ana Lima (", "Unique id"})
        EXPECT_THAT(shown, HasSubstr(part));

    EXPECT_THAT(done("group delete Friends").out, HasSubstr("Deleted Friends ("));
    EXPECT_EQ(names("group list"), "Family");
    EXPECT_EQ(world.cards().size(), 5U);
}

TEST_F(GroupsTest, AreNamedByIdToo)
{
    const Json made = world.json("group make Friends");
    const auto id = made["id"].get<std::string>();
    done("group make friends");
    // A name as it is written goes before one in another case.
    for (const auto& name : {std::string("Friends"), id, id.substr(0, 8)})
        EXPECT_EQ(world.json("group show " + name)["id"], id) << name;
    EXPECT_EQ(made["members"], Json::array());
}

TEST_F(GroupsTest, ReachAPersonByThePrimaryEntryOrTheChosenOne)
{
    done("group make Friends");
    done("group add Friends Lima");
    const auto email = [&] { return world.json("group reach Friends Lima")["choices"][0]["value"]; };
    EXPECT_EQ(email(), "ana@home.example");
    done("group reach Friends Lima email work");
    EXPECT_EQ(email(), "lima@works.example");
    done("group reach Friends Lima Email ANA@home.example");
    EXPECT_EQ(email(), "ana@home.example");
}

TEST_F(GroupsTest, TakeInWhoIsImported)
{
    const std::string two = simpleCard("Reyes", "1") + simpleCard("Okafor", "2");
    done("import --group Guests " + world.write("two.vcf", two));
    done("import --group guests " + world.write("one.vcf", simpleCard("Haddad", "3")));
    EXPECT_EQ(names("list --group Guests"), "Ana Haddad, Ana Okafor, Ana Reyes");
    EXPECT_EQ(names("group list"), "Guests");
    // Nobody came: no group stays behind.
    EXPECT_EQ(world.tool("import --group Empty " + world.path("missing.vcf")).status, 1);
    EXPECT_EQ(names("group list"), "Guests");
}

TEST_F(GroupsTest, FindTheirMembersByRules)
{
    const Json made =
        world.json("smart-group make Anas --any --where 'First begins ana' --where 'Last begins ana'");
    EXPECT_EQ(made["rules"], "First begins \"ana\" or Last begins \"ana\"");
    EXPECT_EQ(names("smart-group members Anas"), "Dan Analund, Ana Lima");
    EXPECT_EQ(names("list --group Anas"), "Dan Analund, Ana Lima");
    EXPECT_EQ(names("smart-group list"), "Anas");
    EXPECT_EQ(names("group list"), "");

    done("smart-group edit Anas --where 'Email;home is present' --track");
    const Json edited = world.json("smart-group show Anas");
    EXPECT_EQ(edited["rules"], "Email;home is present");
    EXPECT_EQ(edited["tracks"], true);
    EXPECT_EQ(names("smart-group members Anas"), "Dan Analund, Ana Lima");
    done("smart-group rename Anas 'At home'");
    done("smart-group delete 'At home'");
    EXPECT_EQ(names("smart-group list"), "");
}

TEST_F(GroupsTest, ReadRulesAsTheyPrintThem)
{
    done("group make Friends");
    for (const std::string rule : {"Email;work contains \"x\"", "Birthday within-next 2 weeks",
             "Card lacks \"x y\"", "Address.City == \"Porto\"", "Birthday >= 1970-05-01",
             "Group member-of \"Friends\"", "Group not-member-of any", "ZRPersonFlags has-bits 1",
             "Note is absent", "Birthday recurs-within 1 year", "Creation not-within 86399 seconds"}) {
        done("smart-group make '" + rule + "' --where '" + rule + "'");
        EXPECT_EQ(world.json("smart-group show '" + rule + "'")["rules"], rule);
    }
}

TEST_F(GroupsTest, SmartOnesFindTheMembersOfOthers)
{
    done("smart-group make Anas --first Ana");
    done("smart-group make Both --where 'Group member-of Anas'");
    EXPECT_EQ(names("smart-group members Both"), "Ana Lima");
}

} // namespace
