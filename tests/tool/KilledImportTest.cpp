// An import that is killed at any moment leaves a sound roster with whole cards.
#include "tool/ToolWorld.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <random>
#include <set>
#include <thread>

namespace {

using namespace test;
using Clock = std::chrono::steady_clock;

// A kill and the look at what it left take a second and a half of work in release, ten times that with
// sanitizers. So the usual run kills less often than the hundred times of a full one (ROSTER_KILLS=100).
#ifdef SLOW_BUILD
constexpr int kCards = 5000, kUsualKills = 8;
#else
constexpr int kCards = 10'000, kUsualKills = 30;
#endif

int kills()
{
    const char* const wanted = std::getenv("ROSTER_KILLS");
    return wanted ? std::atoi(wanted) : kUsualKills;
}

/// Cards of several lines, every fiftieth one with a picture.
std::string manyCards()
{
    std::string cards;
    for (int i = 0; i < kCards; ++i) {
        const std::string number = std::to_string(i);
        cards += "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Family" + number + ";Given" + number
            + ";;;\r\nEMAIL;TYPE=WORK:a" + number + "@example.com\r\nEMAIL;TYPE=HOME:b" + number
            + "@example.org\r\nTEL;TYPE=CELL:+1 555 " + number + "\r\nADR;TYPE=HOME:;;" + number
            + " Elm Street;Springfield;IL;62701;United States\r\nNOTE:Note of card " + number
            + "\\, which is long enough to be searched for words.\r\n";
        if (i % 50 == 0)
            cards +=
                "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQSkZJRgABAQAAAQABAAD/" + std::string(400, 'A') + "\r\n";
        cards += "END:VCARD\r\n";
    }
    return cards;
}

/// A card as it is told, ids aside, with its picture.
std::string wholeCard(const ToolWorld& world, const Json& card)
{
    return withoutIds(card).dump() + world.picture(card);
}

TEST(KilledImport, LeavesASoundRosterWithWholeCards)
{
    const ToolWorld world;
    const std::string file = world.write("many.vcf", manyCards());

    const auto start = Clock::now();
    ASSERT_EQ(world.tool({"import", file}).status, 0);
    const std::chrono::duration<double> whole = Clock::now() - start;
    std::set<std::string> expected;
    for (const auto& card : world.cards())
        expected.insert(wholeCard(world, card));
    ASSERT_EQ(expected.size(), static_cast<std::size_t>(kCards));

    std::mt19937 random(20240711);
    std::uniform_real_distribution<double> moments(0, whole.count() * 1.05);
    std::set<std::size_t> counts;
    const int last = kills();
    for (int kill = 0; kill < last; ++kill) {
        world.removeRoster();
        const double moment = moments(random);
        SCOPED_TRACE("killed after " + std::to_string(moment) + " s");
        {
            Process import(world.start({"import", file}));
            std::this_thread::sleep_for(std::chrono::duration<double>(moment));
            import.kill(SIGKILL);
            import.wait();
        }
        const auto checked = world.tool({"check"});
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
