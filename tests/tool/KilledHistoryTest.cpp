// An undo or a redo that is killed at any moment leaves the roster before it, or the one after it.
#include "tool/ToolWorld.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <random>
#include <thread>

namespace {

using namespace test;
using Clock = std::chrono::steady_clock;

// As with imports that are killed, the usual run with sanitizers is a short one; ROSTER_KILLS=50 is the full
// one.
#ifdef SLOW_BUILD
constexpr int kCards = 800, kUsualKills = 6;
#else
constexpr int kCards = 10'000, kUsualKills = 50;
#endif

int kills()
{
    const char* const wanted = std::getenv("ROSTER_KILLS");
    return wanted ? std::atoi(wanted) : kUsualKills;
}

/// Cards of several lines, every fifth one with a picture.
std::string cardsWithPhotos()
{
    std::string cards;
    for (int i = 0; i < kCards; ++i) {
        const std::string number = std::to_string(i);
        cards += "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Family" + number + ";Given" + number
            + ";;;\r\nEMAIL;TYPE=WORK:a" + number + "@example.com\r\nTEL;TYPE=CELL:+1 555 " + number
            + "\r\nNOTE:Note of card " + number + "\r\n";
        if (i % 5 == 0)
            cards +=
                "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQSkZJRgABAQAAAQABAAD/" + std::string(2000, 'A') + "\r\n";
        cards += "END:VCARD\r\n";
    }
    return cards;
}

/// Everything that a reader sees: the cards in order, and their pictures.
std::string everything(const ToolWorld& world)
{
    std::string all;
    for (const auto& card : world.cards())
        all += card.dump() + std::to_string(std::hash<std::string>()(world.picture(card))) + "\n";
    return all;
}

double secondsOf(const ToolWorld& world, const std::string& verb)
{
    const auto start = Clock::now();
    EXPECT_EQ(world.tool({verb}).status, 0);
    return std::chrono::duration<double>(Clock::now() - start).count();
}

TEST(KilledHistory, LeavesOneStateOrTheOther)
{
    const ToolWorld world;
    ASSERT_EQ(world.tool({"add", "--set", "First=Before"}).status, 0);
    const std::string without = everything(world);
    ASSERT_EQ(world.tool({"import", world.write("many.vcf", cardsWithPhotos())}).status, 0);
    const std::string with = everything(world);
    const double undone = secondsOf(world, "undo");
    ASSERT_TRUE(everything(world) == without) << "what an undo left";
    const double redone = secondsOf(world, "redo");
    ASSERT_TRUE(everything(world) == with) << "what a redo left";

    std::mt19937 random(20261122);
    bool isImported = true;
    int reached = 0;
    const int last = kills();
    for (int kill = 0; kill < last; ++kill) {
        const std::string verb = isImported ? "undo" : "redo";
        std::uniform_real_distribution<double> moments(0, (isImported ? undone : redone) * 1.1);
        const double moment = moments(random);
        SCOPED_TRACE(verb + " killed after " + std::to_string(moment) + " s");
        {
            Process replay(world.start({verb}));
            std::this_thread::sleep_for(std::chrono::duration<double>(moment));
            replay.kill(SIGKILL);
            replay.wait();
        }
        ASSERT_EQ(world.tool({"check"}).status, 0);
        const std::string left = everything(world);
        ASSERT_TRUE(left == with || left == without);
        reached += (left == with) != isImported;
        isImported = left == with;
        // As many undos as redos are killed, whoever came through.
        if (isImported == (kill % 2 == 0)) {
            ASSERT_EQ(world.tool({isImported ? "undo" : "redo"}).status, 0);
        }
        isImported = kill % 2 != 0;
    }
    std::cout << last << " kills, " << reached << " of which came too late\n";
    EXPECT_LT(reached, last) << "no kill came in time to show anything";
}

} // namespace
