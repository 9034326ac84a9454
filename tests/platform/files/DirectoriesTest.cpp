// Which environment puts things where.
#include "platform/files/Directories.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <map>

using namespace platform;
using namespace test;
using testing::ElementsAre;

namespace {

using Variables = std::map<std::string, std::string>;

std::shared_ptr<const Directories> directories(Variables variables, std::string sharedTemporary = "/tmp")
{
    return makeXDGDirectories(
        [variables = std::move(variables)](const char* name) {
            const auto at = variables.find(name);
            return at == variables.end() ? nullptr : at->second.c_str();
        },
        std::move(sharedTemporary));
}

TEST(DirectoriesTest, LieBelowHomeUnlessNamed)
{
    const auto plain = directories({{"HOME", "/h"}, {"XDG_CONFIG_HOME", ""}, {"XDG_CACHE_HOME", "relative"}});
    EXPECT_EQ(plain->dataHome(), "/h/.local/share");
    EXPECT_EQ(plain->configHome(), "/h/.config");
    EXPECT_EQ(plain->cacheHome(), "/h/.cache");
    EXPECT_EQ(plain->temporary(), "/tmp");
    EXPECT_THAT(plain->libraries(), ElementsAre("/h/.local/share", "/usr/local/share", "/usr/share"));

    const auto named = directories({{"HOME", "/h"}, {"XDG_DATA_HOME", "/d/"}, {"XDG_CONFIG_HOME", "/c"},
        {"XDG_CACHE_HOME", "/k"}, {"TMPDIR", "/t/"}, {"XDG_DATA_DIRS", "/x/:not/absolute::/y"}});
    EXPECT_EQ(named->configHome(), "/c");
    EXPECT_EQ(named->cacheHome(), "/k");
    EXPECT_EQ(named->temporary(), "/t");
    EXPECT_THAT(named->libraries(), ElementsAre("/d", "/x", "/y"));
}

TEST(DirectoriesTest, FindHomeWithoutTheEnvironment)
{
    EXPECT_TRUE(directories({})->home().starts_with('/'));
}

TEST(RuntimeDirectory, IsTheSessionsWhereThatIsTheUsersOwn)
{
    const TemporaryFolder session, shared;
    const auto own = shared / ("roster-" + std::to_string(geteuid()));
    EXPECT_EQ(*directories({{"XDG_RUNTIME_DIR", session.path()}}, shared.path())->runtime(), session.path());
    // Anybody may look into this one, so it will not do.
    std::filesystem::permissions(session.path(), std::filesystem::perms(0755));
    EXPECT_EQ(*directories({{"XDG_RUNTIME_DIR", session.path()}}, shared.path())->runtime(), own);
    EXPECT_EQ(*directories({{"XDG_RUNTIME_DIR", "/missing"}}, shared.path())->runtime(), own);
    EXPECT_EQ(modeOf(own), 0700U);
}

TEST(RuntimeDirectory, IsRefusedWhereSomebodyElseMayHavePreparedIt)
{
    const TemporaryFolder shared, bait;
    const auto own = shared / ("roster-" + std::to_string(geteuid()));
    const auto refused = [&] { return !directories({}, shared.path())->runtime(); };
    std::filesystem::create_symlink(bait.path(), own);
    EXPECT_TRUE(refused()) << "a link";
    std::filesystem::remove(own);
    put(own, "");
    EXPECT_TRUE(refused()) << "a file";
    std::filesystem::remove(own);
    std::filesystem::create_directory(own);
    std::filesystem::permissions(own, std::filesystem::perms(0770));
    EXPECT_TRUE(refused()) << "open to others";
    if (geteuid() == 0) {
        std::filesystem::permissions(own, std::filesystem::perms(0700));
        ASSERT_EQ(chown(own.c_str(), 12345, 12345), 0);
        EXPECT_TRUE(refused()) << "of another user";
    }
}

} // namespace
