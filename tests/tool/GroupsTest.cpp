// What `roster group` and `roster smart-group` do, and what they refuse.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;
using testing::HasSubstr;

using GroupsTest = PeopleWorld;

TEST_F(GroupsTest, AreMadeFilledRenamedAndDeleted)
{
    EXPECT_THAT(done({"group", "make", "Old", "friends"}).out, HasSubstr("Made Old friends ("));
    done({"group", "add", "Old friends", "Lima", "Ek", "Dubois"});
    EXPECT_EQ(names({"group", "members", "OLD FRIENDS"}), "Chloé Dubois, Ben Ek, Ana Lima");
    EXPECT_EQ(
        names({"group", "members", "Old friends", "--sort", "first", "--limit", "2"}), "Ana Lima, Ben Ek");
    done({"group", "rename", "Old friends", "Friends"});
    done({"group", "remove", "Friends", "Dubois"});
    EXPECT_EQ(names({"list", "--group", "Friends"}), "Ben Ek, Ana Lima");
    EXPECT_EQ(names({"group", "list"}), "Friends");

    done({"group", "make", "Family", "--in", "Friends"});
    done({"group", "add", "Family", "Analund"});
    EXPECT_EQ(names({"group", "subgroups", "Friends"}), "Family");
    EXPECT_EQ(names({"group", "members", "Friends"}), "Ben Ek, Ana Lima");
    EXPECT_EQ(names({"group", "members", "--deep", "Friends"}), "Dan Analund, Ben Ek, Ana Lima");
    const std::string shown = done({"group", "show", "Friends"}).out;
    for (const char* part : {"Subgroups              Family (", "Ana Lima (", "Unique id"})
        EXPECT_THAT(shown, HasSubstr(part));

    EXPECT_THAT(done({"group", "delete", "Friends"}).out, HasSubstr("Deleted Friends ("));
    EXPECT_EQ(names({"group", "list"}), "Family");
    EXPECT_EQ(world.cards().size(), 5U);
}

TEST_F(GroupsTest, AreNamedByIdToo)
{
    const Json made = world.json({"group", "make", "Friends"});
    const auto id = made["id"].get<std::string>();
    done({"group", "make", "friends"});
    // A name as it is written goes before one in another case.
    EXPECT_EQ(world.json({"group", "show", "Friends"})["id"], id);
    expectRefusal({"group", "show", "FRIENDS"}, 1, "2 groups are called 'FRIENDS'");
    EXPECT_EQ(world.json({"group", "show", id})["id"], id);
    EXPECT_EQ(world.json({"group", "show", id.substr(0, 8)})["id"], id);
    EXPECT_EQ(made["members"], Json::array());
}

TEST_F(GroupsTest, RefuseWhatMakesNoSenseAndChangeNothing)
{
    done({"group", "make", "Outer"});
    done({"group", "make", "Inner", "--in", "Outer"});
    expectRefusal({"group", "add", "--groups", "Inner", "Outer"}, 1, "'Outer' cannot go into 'Inner'");
    expectRefusal({"group", "add", "--groups", "Inner", "Inner"}, 1, "'Inner' cannot go into 'Inner'");
    expectRefusal({"group", "add", "Outer", "Lima", "Nobody"}, 1, "no card has 'Nobody'");
    expectRefusal({"group", "add", "Nowhere", "Lima"}, 1, "no group 'Nowhere'");
    expectRefusal({"group", "remove", "Outer", "Lima"}, 1, "'Ana Lima' is not in 'Outer'");
    expectRefusal({"group", "remove", "--groups", "Inner", "Outer"}, 1, "'Outer' is not in 'Inner'");
    expectRefusal({"group", "delete", "Outer", "Nowhere"}, 1, "no group 'Nowhere'");
    expectRefusal({"group"}, 2, "subcommand");
    EXPECT_EQ(world.json({"group", "show", "Outer"})["members"], Json::array());
    EXPECT_EQ(names({"group", "subgroups", "Outer"}), "Inner");
}

TEST_F(GroupsTest, ReachAPersonByThePrimaryEntryOrTheChosenOne)
{
    done({"group", "make", "Friends"});
    expectRefusal({"group", "reach", "Friends", "Lima"}, 1, "is not in");
    done({"group", "add", "Friends", "Lima"});
    const auto email = [&] {
        return world.json({"group", "reach", "Friends", "Lima"})["choices"][0]["value"];
    };
    EXPECT_EQ(email(), "ana@home.example");
    done({"group", "reach", "Friends", "Lima", "email", "work"});
    EXPECT_EQ(email(), "lima@works.example");
    done({"group", "reach", "Friends", "Lima", "Email", "ANA@home.example"});
    EXPECT_EQ(email(), "ana@home.example");
    expectRefusal({"group", "reach", "Friends", "Lima", "Email", "car"}, 1, "no entry 'car'");
    expectRefusal({"group", "reach", "Friends", "Lima", "Shoe", "43"}, 2, "Email, Phone or Address");
    expectRefusal({"group", "reach", "Friends", "Lima", "Email"}, 2, "which entry");
}

TEST_F(GroupsTest, TakeInWhoIsImported)
{
    const std::string two = simpleCard("Reyes", "1") + simpleCard("Okafor", "2");
    done({"import", "--group", "Guests", world.write("two.vcf", two)});
    done({"import", "--group", "guests", world.write("one.vcf", simpleCard("Haddad", "3"))});
    EXPECT_EQ(names({"list", "--group", "Guests"}), "Ana Haddad, Ana Okafor, Ana Reyes");
    EXPECT_EQ(names({"group", "list"}), "Guests");
    // Nobody came: no group stays behind.
    EXPECT_EQ(world.tool({"import", "--group", "Empty", world.path("missing.vcf")}).status, 1);
    EXPECT_EQ(names({"group", "list"}), "Guests");
}

TEST_F(GroupsTest, FindTheirMembersByRules)
{
    const Json made = world.json({"smart-group", "make", "Anas", "--any", "--where", "First begins ana",
        "--where", "Last begins ana"});
    EXPECT_EQ(made["rules"], "First begins \"ana\" or Last begins \"ana\"");
    EXPECT_EQ(names({"smart-group", "members", "Anas"}), "Dan Analund, Ana Lima");
    EXPECT_EQ(names({"list", "--group", "Anas"}), "Dan Analund, Ana Lima");
    EXPECT_EQ(names({"smart-group", "list"}), "Anas");
    EXPECT_EQ(names({"group", "list"}), "");

    done({"smart-group", "edit", "Anas", "--where", "Email;home is present", "--track"});
    const Json edited = world.json({"smart-group", "show", "Anas"});
    EXPECT_EQ(edited["rules"], "Email;home is present");
    EXPECT_EQ(edited["tracks"], true);
    EXPECT_EQ(names({"smart-group", "members", "Anas"}), "Dan Analund, Ana Lima");
    done({"smart-group", "rename", "Anas", "At home"});
    done({"smart-group", "delete", "At home"});
    EXPECT_EQ(names({"smart-group", "list"}), "");
}

TEST_F(GroupsTest, ReadRulesAsTheyPrintThem)
{
    done({"group", "make", "Friends"});
    for (const char* rule : {"Email;work contains \"x\"", "Birthday within-next 2 weeks",
             "Card lacks \"x y\"", "Address.City == \"Porto\"", "Birthday >= 1970-05-01",
             "Group member-of \"Friends\"", "Group not-member-of any", "ZRPersonFlags has-bits 1",
             "Note is absent", "Birthday recurs-within 1 year", "Creation not-within 86399 seconds"}) {
        SCOPED_TRACE(rule);
        done({"smart-group", "make", rule, "--where", rule});
        EXPECT_EQ(world.json({"smart-group", "show", rule})["rules"], rule);
    }
}

TEST_F(GroupsTest, SmartOnesHoldNobodyByHandAndAreNotFoundByThemselves)
{
    done({"smart-group", "make", "Anas", "--first", "Ana"});
    expectRefusal({"group", "add", "Anas", "Ek"}, 1, "no group 'Anas'");
    expectRefusal({"smart-group", "make", "Nothing"}, 2, "--where");
    expectRefusal({"smart-group", "edit", "Anas"}, 2, "what to change");
    expectRefusal(
        {"smart-group", "edit", "Anas", "--where", "Group member-of Anas"}, 1, "cannot be found by itself");
    done({"smart-group", "make", "Both", "--where", "Group member-of Anas"});
    expectRefusal(
        {"smart-group", "edit", "Anas", "--where", "Group member-of Both"}, 1, "cannot be found by itself");
    EXPECT_EQ(names({"smart-group", "members", "Both"}), "Ana Lima");
}

} // namespace
