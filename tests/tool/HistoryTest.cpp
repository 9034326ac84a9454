// `roster undo`, `redo` and `history` as people use them.
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "history/ZRHistoryStep.h"
#include "platform/files/Preferences.h"
#include "store/ZRRoster.h"
#include "tool/OtherProcess.h"
#include "tool/ToolWorld.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string_view>

namespace {

using namespace test;

/// All cards and groups, as JSON without modification dates: who only left a group keeps the new one.
std::string everything(const ToolWorld& world)
{
    const Json cards = world.cards();
    std::string all = cards.dump() + world.json({"group", "list"}).dump()
        + world.json({"smart-group", "list"}).dump() + world.json({"me"}).dump();
    for (const auto& card : cards)
        all += world.picture(card);
    constexpr std::string_view date = "\"Modification\":\"2026-11-22T06:00:00Z\"", key = date.substr(0, 15);
    for (auto at = all.find(key); at != all.npos; at = all.find(key, at))
        all.erase(at, date.size());
    return all;
}

std::string idOf(const ToolWorld& world, const std::string& name)
{
    return world.json({"show", name}).at("id").get<std::string>();
}

TEST(ToolHistory, TakesEachVerbBackInOneStep)
{
    const ToolWorld world;
    const std::string photo = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lima;Ana\r\nEMAIL;TYPE=WORK:a@b.example\r\n"
                              "PHOTO;ENCODING=b:/9j/4AAQSkZJRgABAQ==\r\nEND:VCARD\r\n";
    const std::vector<std::vector<std::string>> verbs{
        {"import", "--group", "Guests", world.write("two.vcf", photo + simpleCard("Ek", "1"))},
        {"add", "--set", "First=Cleo", "--set", "Email;home=c@d.example"},
        {"edit", "Lima", "--set", "Email;home=new@b.example", "--unset", "Email;work"},
        {"group", "make", "Friends"}, {"group", "add", "Friends", "Lima", "Cleo"},
        {"group", "reach", "Friends", "Lima", "Email", "home"}, {"group", "rename", "Friends", "Old friends"},
        {"group", "add", "--groups", "Guests", "Old friends"}, {"group", "remove", "Guests", "Ek"},
        {"smart-group", "make", "Soon", "--where", "First begins C"}, {"me", "Lima"}, {"remove", "Ana Lima"},
        {"group", "delete", "Guests"}, {"smart-group", "delete", "Soon"}};
    ASSERT_EQ(world.tool({"init"}).status, 0);
    std::vector<std::string> states{everything(world)};
    for (const auto& verb : verbs) {
        const auto ended = world.tool(verb);
        ASSERT_EQ(ended.status, 0) << verb[0] << ended.err;
        states.push_back(everything(world));
    }
    ASSERT_EQ(world.json({"history"}).size(), verbs.size());
    EXPECT_EQ(world.json({"history"})[2]["title"], "remove Ana Lima");
#ifdef SLOW_BUILD
    constexpr int rounds = 1;
#else
    constexpr int rounds = 3;
#endif
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t at = verbs.size(); at-- > 0;) {
            const auto undone = world.tool({"undo"});
            ASSERT_EQ(undone.status, 0) << undone.err;
            ASSERT_EQ(everything(world), states[at]) << "undid " << verbs[at][0] << " " << verbs[at][1];
        }
        EXPECT_EQ(world.tool({"undo"}).status, 1);
        for (std::size_t at = 0; at < verbs.size(); ++at) {
            const auto redone = world.tool({"redo"});
            ASSERT_EQ(redone.status, 0) << redone.err;
            ASSERT_EQ(everything(world), states[at + 1]) << "redid " << verbs[at][0] << " " << verbs[at][1];
        }
    }
    EXPECT_EQ(world.tool({"check"}).status, 0);
}

TEST(ToolHistory, MakesOneStepOfAnImportOfManyTransactions)
{
    const ToolWorld world;
    std::string cards;
    for (int i = 0; i < 2'300; ++i)
        cards += simpleCard("F" + std::to_string(i), std::to_string(i));
    ASSERT_EQ(world.tool({"import", world.write("many.vcf", cards)}).status, 0);
    const Json steps = world.json({"history"});
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(steps[0]["added"], 2'300);
    EXPECT_EQ(world.json({"undo"})["removed"], 2'300);
    EXPECT_TRUE(world.cards().empty());
    EXPECT_TRUE(world.json({"history"})[0]["undone"]);
    EXPECT_EQ(world.json({"redo"})["added"], 2'300);
    EXPECT_EQ(world.cards().size(), 2'300U);
}

TEST(ToolHistory, NamesRecordsThatOthersChangedSince)
{
    const ToolWorld world;
    ASSERT_EQ(world.tool({"add", "--set", "First=Ana"}).status, 0);
    const std::string id = idOf(world, "Ana");
    ASSERT_EQ(world.tool({"edit", "Ana", "--set", "Note=one"}).status, 0);
    changeRoster(world.roster(), {"~Ana"});
    const std::string changed = everything(world);
    const auto refused = world.tool({"--json", "undo"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("Ana (" + id + ") was changed"), std::string::npos) << refused.err;
    const Json conflict = Json::parse(refused.out)["conflicts"][0];
    EXPECT_EQ(conflict["id"], id);
    EXPECT_EQ(conflict["name"], "Ana");
    EXPECT_EQ(everything(world), changed);
    EXPECT_EQ(world.tool({"undo", "--force"}).status, 0);
    const Json properties = world.json({"show", id})["properties"];
    EXPECT_FALSE(properties.contains("Note") || properties.contains("Nickname"));
    EXPECT_EQ(world.tool({"redo"}).status, 0);
    EXPECT_EQ(everything(world), changed) << "a redo brings back what the forced undo found";
}

TEST(ToolHistory, IsForgottenWhenAsked)
{
    const ToolWorld world;
    ASSERT_EQ(world.tool({"add", "--set", "First=Ana"}).status, 0);
    ASSERT_EQ(world.tool({"edit", "Ana", "--set", "Note=one"}).status, 0);
    EXPECT_EQ(world.json({"history", "--limit", "1"}).size(), 1U);
    ASSERT_EQ(world.tool({"history", "--clear"}).status, 0);
    EXPECT_EQ(world.json({"history"}), Json::array());
    const auto nothing = world.tool({"undo"});
    EXPECT_EQ(nothing.status, 1);
    EXPECT_NE(nothing.err.find("nothing to undo"), std::string::npos);
    EXPECT_EQ(world.json({"show", "Ana"})["properties"]["Note"], "one");
}

// ---- two processes at once

const Role makes("make a step of two saves", [](const Words& words) {
    platform::Preferences::shared().setArgument(
        "ZRAlternateDataStoreDirectory", platform::Value(words.at(0)));
    ZRRoster::setShouldCreateEmptyDatabase(true);
    const auto roster = ZRRoster::sharedRoster();
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

TEST(ToolHistory, LeavesAloneWhatIsJustBeingMade)
{
    const ToolWorld world;
    ASSERT_EQ(world.tool({"init"}).status, 0);
    const auto made = play("make a step of two saves", {world.roster()});
    ASSERT_EQ(made.status, 0) << made.log;
    EXPECT_EQ(world.cards().size(), 2U);
    EXPECT_EQ(world.json({"undo"})["removed"], 2);
}

} // namespace
