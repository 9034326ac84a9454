// An import that is killed at any moment leaves a sound roster with whole cards.
#include "tool/Kills.h"

#include <iostream>
#include <set>

namespace {

using namespace test;

/// A card as it is told, ids aside, with its picture.
std::string wholeCard(const ToolWorld& world, const Json& card)
{
    return withoutIds(card).dump() + world.picture(card);
}

TEST(KilledImport, LeavesASoundRosterWithWholeCards)
{
    constexpr int cardCount = kIsSlow ? 5000 : 10'000;
    const ToolWorld world;
    const std::string import = "import " + world.write("many.vcf", manyCards(cardCount, 50, 400));
    const double whole = secondsOf(world, import);
    std::set<std::string> expected;
    for (const auto& card : world.cards())
        expected.insert(wholeCard(world, card));
    ASSERT_EQ(expected.size(), static_cast<std::size_t>(cardCount));

    std::mt19937 random(20240711);
    std::set<std::size_t> counts;
    const int last = kills(kIsSlow ? 8 : 30);
    for (int kill = 0; kill < last; ++kill) {
        world.removeRoster();
        SCOPED_TRACE(killWithin(whole * 1.05, world, import, random));
        const auto checked = world.tool("check");
        ASSERT_EQ(checked.status, 0) << checked.out << checked.err;
        const Json cards = world.cards();
        ASSERT_TRUE(cards.is_array());
        for (const auto& card : cards)
            ASSERT_TRUE(expected.contains(wholeCard(world, card))) << card.dump(2);
        counts.insert(cards.size());
    }
    std::cout << last << " kills left " << testing::PrintToString(counts) << " cards\n";
    // Kills that all came before the first save, or after the last, would have shown nothing.
    EXPECT_GT(counts.size(), 2U);
}

} // namespace
