// How the tool is killed, and what it works on.
#include "tool/Kills.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

namespace test {

using Clock = std::chrono::steady_clock;

int kills(int usual)
{
    const char* const wanted = std::getenv("ROSTER_KILLS");
    return wanted ? std::atoi(wanted) : usual;
}

std::string manyCards(int count, int picturesEvery, std::size_t pictureSize)
{
    std::string cards;
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        std::string lines = "N:Family" + number + ";Given" + number + ";;;\nEMAIL;TYPE=WORK:a" + number
            + "@example.com\nEMAIL;TYPE=HOME:b" + number + "@example.org\nTEL;TYPE=CELL:+1 555 " + number
            + "\nADR;TYPE=HOME:;;" + number
            + " Elm Street;Springfield;IL;62701;United States\nNOTE:Note of card " + number
            + "\\, which is long enough to be searched for words.";
        if (i % picturesEvery == 0)
            lines +=
                "\nPHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQSkZJRgABAQAAAQABAAD/" + std::string(pictureSize, 'A');
        cards += cardOf(lines);
    }
    return cards;
}

double secondsOf(const ToolWorld& world, const std::string& line)
{
    const auto start = Clock::now();
    const auto ended = world.tool(line);
    EXPECT_EQ(ended.status, 0) << ended.err;
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string killWithin(double seconds, const ToolWorld& world, const std::string& line, std::mt19937& random)
{
    const double moment = std::uniform_real_distribution<double>(0, seconds)(random);
    Process process(world.start(line));
    std::this_thread::sleep_for(std::chrono::duration<double>(moment));
    process.kill(SIGKILL);
    process.wait();
    return line.substr(0, line.find(' ')) + " killed after " + std::to_string(moment) + " s";
}

} // namespace test
