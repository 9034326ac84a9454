// An undo or a redo that is killed at any moment leaves the roster before it, or the one after it.
#include "tool/Kills.h"

#include <iostream>

namespace {

using namespace test;

/// Everything that a reader sees: the cards in order, and their pictures.
std::string everything(const ToolWorld& world)
{
    std::string all;
    for (const auto& card : world.cards())
        all += card.dump() + std::to_string(std::hash<std::string>()(world.picture(card))) + "\n";
    return all;
}

TEST(KilledHistory, LeavesOneStateOrTheOther)
{
    const ToolWorld world;
    ASSERT_EQ(world.tool("add --set First=Before").status, 0);
    const std::string without = everything(world);
    secondsOf(world, "import " + world.write("many.vcf", manyCards(kIsSlow ? 800 : 10'000, 5, 2000)));
    const std::string with = everything(world);
    const double undone = secondsOf(world, "undo");
    ASSERT_TRUE(everything(world) == without) << "what an undo left";
    const double redone = secondsOf(world, "redo");
    ASSERT_TRUE(everything(world) == with) << "what a redo left";

    std::mt19937 random(20261122);
    bool isImported = true;
    int reached = 0;
    const int last = kills(kIsSlow ? 6 : 50);
    for (int kill = 0; kill < last; ++kill) {
        SCOPED_TRACE(
            killWithin((isImported ? undone : redone) * 1.1, world, isImported ? "undo" : "redo", random));
        const auto checked = world.tool("check");
        ASSERT_EQ(checked.status, 0) << checked.err;
        const std::string left = everything(world);
        ASSERT_TRUE(left == with || left == without);
        reached += (left == with) != isImported;
        isImported = left == with;
        // As many undos as redos are killed, whoever came through.
        if (isImported == (kill % 2 == 0)) {
            ASSERT_EQ(world.tool(isImported ? "undo" : "redo").status, 0);
        }
        isImported = kill % 2 != 0;
    }
    std::cout << last << " kills, " << reached << " of which came too late\n";
    EXPECT_LT(reached, last) << "no kill came in time to show anything";
}

} // namespace
