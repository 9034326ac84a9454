// Which program opens a link, by the lists of the user, the system and the desktop.
#include "platform/files/DefaultApplication.h"

#include "platform/files/Directories.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace platform;
using namespace test;

namespace {

struct Case {
    const char* what;
    std::vector<std::pair<std::string, std::string>> files;
    std::string url;
    std::string expected;
};

const std::string mail = "[Default Applications]\nx-scheme-handler/mailto=";

const std::vector<Case> cases = {
    {"nothing is chosen", {}, "mailto:local", ""},
    {"the user's choice", {{"config/mimeapps.list", mail + "a.desktop\n"}}, "mailto:local", "a.desktop"},
    {"a scheme in capitals", {{"config/mimeapps.list", mail + "a.desktop\n"}}, "MAILTO:x", "a.desktop"},
    {"another scheme", {{"config/mimeapps.list", mail + "a.desktop\n"}}, "https://x", ""},
    {"the first of several", {{"config/mimeapps.list", mail + ";a.desktop;b.desktop;\r\n"}},
        "mailto:", "a.desktop"},
    {"another section",
        {{"config/mimeapps.list", "[Added Associations]\nx-scheme-handler/mailto=a.desktop\n"}},
        "mailto:", ""},
    {"a section that ended",
        {{"config/mimeapps.list", "[Default Applications]\n[Other]\n" + mail.substr(23)}}, "mailto:", ""},
    {"an empty choice goes on to the system's",
        {{"config/mimeapps.list", mail + ";\n"}, {"system/applications/mimeapps.list", mail + "s.desktop"}},
        "mailto:", "s.desktop"},
    {"the user's data before the system's",
        {{"data/applications/mimeapps.list", mail + "d.desktop"},
            {"system/applications/mimeapps.list", mail + "s.desktop"}},
        "mailto:", "d.desktop"},
    {"the desktop's list before the common one",
        {{"config/mimeapps.list", mail + "a.desktop"}, {"config/two-mimeapps.list", mail + "t.desktop"}},
        "mailto:", "t.desktop"},
};

TEST(DefaultApplication, IsTheFirstThatAListNames)
{
    const ScopedVariable desktop("XDG_CURRENT_DESKTOP", "One:TWO:../x");
    for (const auto& [what, files, url, expected] : cases) {
        const TemporaryFolder folder;
        for (const auto& [name, bytes] : files)
            put(folder / name, bytes);
        const std::map<std::string, std::string> variables = {{"HOME", folder.path()},
            {"XDG_CONFIG_HOME", folder / "config"}, {"XDG_DATA_HOME", folder / "data"},
            {"XDG_DATA_DIRS", folder / "system"}};
        const auto before = Directories::install(makeXDGDirectories([&](const char* name) {
            const auto at = variables.find(name);
            return at == variables.end() ? nullptr : at->second.c_str();
        }));
        EXPECT_EQ(defaultApplicationForURL(url), expected) << what;
        Directories::install(before);
    }
}

} // namespace
