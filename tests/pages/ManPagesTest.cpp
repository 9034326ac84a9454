// The manual pages say what the table of commands says, and render without a warning; with
// ROSTER_UPDATE_PAGES set the test brings their sections up to date.
#include "CommandTable.h"
#include "ManPage.h"
#include "Offers.h"
#include "Rules.h"
#include "pages/Page.h"
#include "support/Process.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using namespace test;
using testing::HasSubstr;

std::string pathOf(const std::string& page) { return pagePath("man/" + page); }

std::vector<std::filesystem::path> allPages()
{
    std::vector<std::filesystem::path> pages;
    for (const auto& file : std::filesystem::directory_iterator(pathOf("")))
        pages.push_back(file.path());
    return pages;
}

TEST(ManPages, SayWhatTheTableOfCommandsSays)
{
    expectPage(pathOf("roster.1"), pageOfTool(contentsOf(pathOf("roster.1"))));
    for (const auto* command : commandsIn("")) {
        const std::string path = pathOf("roster-" + std::string(command->name) + ".1");
        expectPage(path, pageOf(*command, contentsOf(path)));
    }
}

TEST(ManPages, AreThereForCommandsThatAreThere)
{
    for (const auto& page : allPages()) {
        const std::string name = page.stem();
        if (page.extension() == ".1" && name != "roster") {
            EXPECT_NE(commandNamed("", name.substr(std::string("roster-").size())), nullptr) << page;
        }
    }
}

// What people write is not forgotten when a command is new.
TEST(ManPages, DescribeInWholeSentences)
{
    constexpr std::size_t shortest = 200;
    for (const auto& page : allPages()) {
        SCOPED_TRACE(page);
        std::size_t described = 0;
        for (const auto& section : sectionsOf(contentsOf(page)))
            if (section.title == "DESCRIPTION")
                described = section.text.size();
        EXPECT_GT(described, shortest);
    }
}

TEST(ManPages, TellEveryOperatorOfARule)
{
    const std::string page = contentsOf(pathOf("roster-query.7"));
    for (const auto& [word, meaning] : ruleOperators())
        EXPECT_THAT(page, HasSubstr(".B " + roff(word) + "\n"));
}

TEST(ManPages, TellEveryPreferenceThatIsOffered)
{
    const std::string page = contentsOf(pathOf("roster-files.5"));
    for (const auto& [word, meaning] : offered(Offer::preferences, "", {}))
        EXPECT_THAT(page, HasSubstr(roff(word.substr(0, word.size() - 1))));
}

TEST(ManPages, RenderWithoutWarnings)
{
    for (const auto& page : allPages()) {
        const auto ended = run({{GROFF, "-man", "-Tutf8", "-ww", "-z", "-K", "utf8", page}});
        EXPECT_EQ(ended.status, 0) << page;
        EXPECT_EQ(ended.err, "") << page;
    }
}

} // namespace
