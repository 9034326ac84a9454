// Which names exclude each other, whatever they are made of.
#include "platform/files/NamedClaim.h"

#include "platform/files/Directories.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

using namespace platform;
using namespace test;

namespace {

bool isFree(std::string_view name)
{
    const auto claim = NamedClaim::take(name);
    EXPECT_TRUE(claim) << name;
    return claim && claim->has_value();
}

TEST(NamedClaims, ExcludeTheSameNameOnly)
{
    const std::string path = "org.quillon.Roster:/home/a b/Roster", long1 = std::string(5000, 'n') + "1",
                      long2 = std::string(5000, 'n') + "2";
    for (const std::string& name :
        {path, long1, std::string(), std::string("../../up"), std::string("\0\n", 2)}) {
        const auto held = NamedClaim::take(name);
        ASSERT_TRUE(held && *held) << name;
        EXPECT_FALSE(isFree(name)) << name;
        for (const std::string& other : {path + "/", long2, std::string("..-..-up")})
            EXPECT_TRUE(isFree(other)) << other << " beside " << name;
    }
    EXPECT_TRUE(isFree(path));
}

TEST(NamedClaims, ArePrivateToTheUser)
{
    const auto held = NamedClaim::take("private");
    ASSERT_TRUE(held);
    const auto directory = Directories::current()->runtime();
    for (const auto& entry : std::filesystem::directory_iterator(*directory))
        EXPECT_EQ(modeOf(entry.path()), 0600U) << entry.path();
}

} // namespace
