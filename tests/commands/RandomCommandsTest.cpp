// Long sequences of commands, walked up and down: every place is what it was, here, in the store, and to who
// opens it.
#include "commands/CommandDriver.h"

#include "store/ZRManagedObjectContext.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace test {

namespace {

const Role walks("walk", [](const Words& words) {
    CommandDriver driver(openShared(), static_cast<std::uint32_t>(std::stoul(words.at(0))));
    populate(driver);
    return driver.run(allCommandKinds(), std::stoi(words.at(1)));
});

class RandomCommands : public testing::TestWithParam<int> { };

} // namespace

TEST_P(RandomCommands, GoBackAndForthExactly)
{
    const Home home;
    const Outcome outcome = home.play("walk", {std::to_string(GetParam()), "200"});
    EXPECT_EQ(outcome.status, 0) << outcome.log;
    EXPECT_EQ(outcome.answer, "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCommands, testing::Values(1, 2));

} // namespace test
