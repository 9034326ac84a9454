// Long sequences of all commands, with merged cards and imports among them, walked up and down: every place
// is what it was, here, in the store, and to who opens it.
#include "merge/MergeKinds.h"

#include <gtest/gtest.h>

namespace test {

namespace {

const Role walks("walk", [](const Words& words) {
    ApplicationHost::install(std::make_shared<Forgetless>());
    CommandDriver driver(openShared(), static_cast<std::uint32_t>(std::stoul(words.at(0))));
    populate(driver);
    std::string wrong = driver.run(allKindsWithMerges(), std::stoi(words.at(1)));
    ApplicationHost::install(nullptr);
    return wrong;
});

} // namespace

TEST(RandomCommands, GoBackAndForthExactly)
{
    for (const char* seed : {"1", "2"}) {
        const Home home;
        const Outcome outcome = home.play("walk", {seed, "240"});
        EXPECT_EQ(outcome.status, 0) << seed << outcome.log;
        EXPECT_EQ(outcome.answer, "") << seed;
    }
}

} // namespace test
