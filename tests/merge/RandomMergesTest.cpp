// Merged cards and imports among all other commands, walked up and down.
#include "merge/MergeKinds.h"

#include <gtest/gtest.h>

namespace test {

namespace {

const Role walks("walk with mergers", [](const Words& words) {
    ApplicationHost::install(std::make_shared<Forgetless>());
    CommandDriver driver(openShared(), static_cast<std::uint32_t>(std::stoul(words.at(0))));
    populate(driver);
    std::string wrong = driver.run(allKindsWithMerges(), std::stoi(words.at(1)));
    ApplicationHost::install(nullptr);
    return wrong;
});

} // namespace

TEST(RandomMerges, GoBackAndForthExactly)
{
    const Home home;
    const Outcome outcome = home.play("walk with mergers", {"1", "200"});
    EXPECT_EQ(outcome.status, 0) << outcome.log;
    EXPECT_EQ(outcome.answer, "");
}

} // namespace test
