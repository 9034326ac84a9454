// Every test program starts here: in a home of its own, so that no test sees the user's files or another
// test's.
#include "support/Role.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class PrivateHome : public testing::Environment {
public:
    void SetUp() override
    {
        std::string name = (std::filesystem::temp_directory_path() / "roster-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        _home = name;
        for (const auto& [variable, folder] : {std::pair{"HOME", "home"}, {"XDG_DATA_HOME", "home/data"},
                 {"XDG_CONFIG_HOME", "home/config"}, {"XDG_CACHE_HOME", "home/cache"},
                 {"XDG_RUNTIME_DIR", "run"}, {"TMPDIR", "tmp"}, {"XDG_DATA_DIRS", "system"},
                 // What saves start is there only for the tests that put it there.
                 {"ROSTER_HELPER_DIR", "helpers"}}) {
            const auto path = _home / folder;
            std::filesystem::create_directories(path);
            std::filesystem::permissions(path, std::filesystem::perms::owner_all);
            setenv(variable, path.c_str(), 1);
        }
        for (const char* variable : {"LC_ALL", "LC_COLLATE", "LC_MESSAGES", "LANGUAGE"})
            unsetenv(variable);
        setenv("LANG", "en_US.UTF-8", 1);
        setenv("TZ", "UTC", 1);
    }

    void TearDown() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(_home, ignored);
    }

private:
    std::filesystem::path _home;
};

} // namespace

int main(int argc, char** argv)
{
    // The other process of a test works in the home of that test.
    if (const int status = test::playRoleOfCommandLine(argc, argv); status >= 0)
        return status;
    testing::InitGoogleMock(&argc, argv);
    testing::AddGlobalTestEnvironment(new PrivateHome);
    return RUN_ALL_TESTS();
}
