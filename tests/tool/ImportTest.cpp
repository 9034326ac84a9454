// `roster import` of people who are there already: what it plans, does and counts, from process to process.
#include "tool/ToolWorld.h"

namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;

std::string anas(const std::string& family, const std::string& more)
{
    return cardOf("N:" + family + ";Ana;;;" + more);
}

/// A world where two of the cards of "new.vcf" are there, one of them as it was before.
class ToolImportTest : public ToolTest {
protected:
    void SetUp() override
    {
        const std::string ek = simpleCard("Ek", "1");
        done("import "
            + world.write("old.vcf", anas("Lima", "\nTITLE:Chief\nTEL;TYPE=HOME:1\nNOTE:one") + ek));
        file = world.write("new.vcf",
            anas("Lima", "\nTITLE:Boss\nTEL;TYPE=HOME:2\nNOTE:two\nNICKNAME:l") + ek + anas("Nunes", "")
                + "BEGIN:VCARD\nVERSION:3.0\nEND:VCARD\n");
    }

    /// Added, updated, same, skipped, refused.
    static std::vector<int> countsOf(const Json& result)
    {
        std::vector<int> counts;
        for (const char* key : {"added", "updated", "same", "skipped", "refused"})
            counts.push_back(result.value(key, -1));
        return counts;
    }

    std::string file;
};

TEST_F(ToolImportTest, APlanSaysWhatWouldBecomeOfEachCard)
{
    const Json before = world.cards();
    const auto planned = world.tool("import --plan " + file);
    EXPECT_EQ(planned.status, 1) << "one card is refused";
    for (const char* part : {": card 1: update Ana Lima (", "): JobTitle, Nickname, Note, Phone\n",
             "    loses JobTitle: Chief, replaced by Boss\n", "    loses Phone (home): 1, replaced by 2\n",
             ": card 2: same Ana Ek (", ": card 3: add Ana Nunes\n", ": card 4: refuse ",
             "1 card would be added, 1 updated, 1 there already, 1 refused; nothing was written\n"})
        EXPECT_THAT(planned.out, HasSubstr(part));
    EXPECT_EQ(world.cards(), before);
}

TEST_F(ToolImportTest, APlanForProgramsHasEveryChange)
{
    const Json plan = world.json("import --plan " + file), first = plan["cards"][0];
    EXPECT_THAT(countsOf(plan), ElementsAre(1, 1, 1, 0, 1));
    EXPECT_EQ(first["action"], "update");
    EXPECT_EQ(first["fields"], Json({"JobTitle", "Nickname", "Note", "Phone"}));
    EXPECT_EQ(first["changes"], Json::parse(R"([
            {"property":"JobTitle","what":"replaced","before":"Chief","after":"Boss","lost":true},
            {"property":"Nickname","what":"added","after":"l","lost":false},
            {"property":"Note","what":"extended","before":"one","after":"one\rtwo","lost":false},
            {"property":"Phone","label":"_$!<Home>!$_","what":"replaced","before":"1","after":"2","lost":true}])"));
    EXPECT_EQ(plan["cards"][3]["action"], "refuse");
    EXPECT_FALSE(plan["cards"][3]["reason"].get<std::string>().empty());
}

TEST_F(ToolImportTest, UpdatesOnceAndIsTheSameThen)
{
    EXPECT_THAT(countsOf(world.json("import " + file)), ElementsAre(1, 1, 1, 0, 1));
    const Json lima = world.json("show Lima");
    EXPECT_EQ(lima["properties"]["JobTitle"], "Boss");
    EXPECT_EQ(lima["properties"]["Note"], "one\rtwo");
    EXPECT_EQ(entriesIn(lima, "Phone"), "<Home>=2*");
    EXPECT_THAT(countsOf(world.json("import " + file)), ElementsAre(0, 0, 3, 0, 1));
    EXPECT_EQ(world.cards().size(), 3U);
}

TEST_F(ToolImportTest, HandlesDuplicatesAsAskedOrPreferred)
{
    const struct {
        std::string line;
        std::vector<int> counts;
        std::string title;
        std::size_t people;
    } cases[] = {
        {"import --duplicates keep ", {1, 0, 1, 1, 1}, "Chief", 3},
        {"import --duplicates replace ", {0, 1, 2, 0, 1}, "Boss", 3},
        {"--default ZRDontAutoMerge=true import --duplicates update ", {0, 0, 3, 0, 1}, "Boss", 3},
        {"--default ZRDontAutoMerge=true import ", {3, 0, 0, 0, 1}, "Boss", 6},
        {"import --duplicates both ", {3, 0, 0, 0, 1}, "Boss", 9},
    };
    for (const auto& [line, counts, title, people] : cases) {
        SCOPED_TRACE(line);
        EXPECT_EQ(countsOf(world.json(line + file)), counts);
        const Json cards = world.cards();
        EXPECT_EQ(cards.size(), people);
        for (const auto& card : cards)
            EXPECT_TRUE(card["name"] != "Ana Lima" || card["properties"]["JobTitle"] == title) << card;
    }
}

// A group that is made for an import stays when everybody in it was there already.
TEST_F(ToolImportTest, PutsWhoIsThereIntoTheGroup)
{
    EXPECT_EQ(done("import --group Guests " + world.path("old.vcf")).out, "0 cards added, 2 there already\n");
    EXPECT_EQ(names("list --group Guests"), "Ana Ek, Ana Lima");
}

} // namespace
