// `roster undo`, `redo` and `history` as people use them.
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "history/ZRHistoryStep.h"
#include "tool/OtherProcess.h"
#include "tool/ToolWorld.h"

#include <stdexcept>

namespace {

using namespace test;
using testing::HasSubstr;

class ToolHistory : public ToolTest {
protected:
    /// All cards, groups and pictures; without modification dates, since who only left a group keeps the new
    /// one.
    Json everything() const
    {
        const Json cards = world.json("list");
        Json all = {withoutChange(cards), withoutChange(world.json("group list")),
            withoutChange(world.json("smart-group list")), world.json("me").dump()};
        for (const auto& card : cards)
            all.push_back(world.picture(card));
        return all;
    }
};

TEST_F(ToolHistory, TakesEachVerbBackInOneStep)
{
    const std::string two =
        cardOf("N:Lima;Ana\nEMAIL;TYPE=WORK:a@b.example\nPHOTO;ENCODING=b:/9j/4AAQSkZJRgABAQ==")
        + simpleCard("Ek", "1");
    const Words verbs{"import --group Guests " + world.write("two.vcf", two),
        // Entries must come back in their order, or the check at the end finds a text to search in that
        // differs.
        "add --set First=Cleo --set Email;a=5@d.example --set Email;b=4@d.example --set Email;c=3@d.example "
        "--set Email;d=2@d.example --set Email;e=1@d.example",
        "edit Lima --set Email;home=new@b.example --unset Email;work", "group make Friends",
        "group add Friends Lima Cleo", "group reach Friends Lima Email home",
        "group rename Friends 'Old friends'", "group add --groups Guests 'Old friends'",
        "group remove Guests Ek", "smart-group make Soon --where 'First begins C'", "me Lima",
        "remove 'Ana Lima'", "group delete Guests", "smart-group delete Soon"};
    done("init");
    std::vector<Json> states{everything()};
    for (const auto& verb : verbs) {
        done(verb);
        states.push_back(everything());
    }
    ASSERT_EQ(world.json("history").size(), verbs.size());
    EXPECT_EQ(world.json("history")[2]["title"], "remove Ana Lima");
#ifdef SLOW_BUILD
    constexpr int rounds = 1;
#else
    constexpr int rounds = 3;
#endif
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t at = verbs.size(); at-- > 0;) {
            done("undo");
            ASSERT_EQ(everything(), states[at]) << "undid " << verbs[at];
        }
        EXPECT_EQ(world.tool("undo").status, 1);
        for (std::size_t at = 0; at < verbs.size(); ++at) {
            done("redo");
            ASSERT_EQ(everything(), states[at + 1]) << "redid " << verbs[at];
        }
    }
    done("check");
}

TEST_F(ToolHistory, MakesOneStepOfAnImportOfManyTransactions)
{
    std::string cards;
    for (int i = 0; i < 2'300; ++i)
        cards += simpleCard("F" + std::to_string(i), std::to_string(i));
    done("import " + world.write("many.vcf", cards));
    const Json steps = world.json("history");
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(steps[0]["added"], 2'300);
    EXPECT_EQ(world.json("undo")["removed"], 2'300);
    EXPECT_TRUE(world.cards().empty());
    EXPECT_TRUE(world.json("history")[0]["undone"]);
    EXPECT_EQ(world.json("redo")["added"], 2'300);
    EXPECT_EQ(world.cards().size(), 2'300U);
}

TEST_F(ToolHistory, NamesRecordsThatOthersChangedSince)
{
    done("add --set First=Ana");
    const std::string id = world.idOf("Ana");
    done("edit Ana --set Note=one");
    changeRoster(world.roster(), {"~Ana"});
    const Json changed = everything();
    const auto refused = world.tool("--json undo");
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("Ana (" + id + ") was changed"));
    const Json conflict = Json::parse(refused.out)["conflicts"][0];
    EXPECT_EQ(conflict["id"], id);
    EXPECT_EQ(conflict["name"], "Ana");
    EXPECT_EQ(everything(), changed);
    done("undo --force");
    const Json properties = world.json("show " + id)["properties"];
    EXPECT_FALSE(properties.contains("Note") || properties.contains("Nickname"));
    done("redo");
    EXPECT_EQ(everything(), changed) << "a redo brings back what the forced undo found";
}

TEST_F(ToolHistory, IsForgottenWhenAsked)
{
    done("add --set First=Ana");
    done("edit Ana --set Note=one");
    EXPECT_EQ(world.json("history --limit 1").size(), 1U);
    done("history --clear");
    EXPECT_EQ(world.json("history"), Json::array());
    expectRefusals({{"undo", 1, "nothing to undo"}});
    EXPECT_EQ(world.json("show Ana")["properties"]["Note"], "one");
}

// ---- two processes at once

const Role makes("make a step of two saves", [](const Words& words) {
    const auto roster = openAt(words.at(0));
    const ZRHistoryStep step(*roster, "a long import");
    for (const char* name : {"First", "Second"}) {
        ZRPerson::initWithRoster(roster)->setValue(platform::Value(name), kZRFirstNameProperty);
        if (!roster->save())
            throw std::runtime_error("not saved");
        // Meanwhile somebody tries to undo what is only half there.
        const auto undone = run({{ROSTER_TOOL, "--roster", words.at(0), "undo"}});
        if (undone.status != 1 || undone.err.find("still at work") == std::string::npos)
            throw std::runtime_error("undone under way: " + undone.out + undone.err);
    }
    return std::string();
});

TEST_F(ToolHistory, LeavesAloneWhatIsJustBeingMade)
{
    done("init");
    const auto made = play("make a step of two saves", {world.roster()});
    ASSERT_EQ(made.status, 0) << made.log;
    EXPECT_EQ(world.cards().size(), 2U);
    EXPECT_EQ(world.json("undo")["removed"], 2);
}

} // namespace
