// `roster import` of people who are there already: what it plans, does and counts, from process to process.
#include "tool/ToolWorld.h"

#include <gmock/gmock.h>

namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;

std::string card(const std::string& name, const std::string& more)
{
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:" + name + ";Ana;;;\r\n" + more + "END:VCARD\r\n";
}

/// A world where two of the cards of "new.vcf" are there, one of them as it was before.
class ToolImportTest : public testing::Test {
protected:
    void SetUp() override
    {
        const std::string ek = card("Ek", "TEL;TYPE=HOME:1\r\n");
        world.tool({"import",
            world.write("old.vcf", card("Lima", "TITLE:Chief\r\nTEL;TYPE=HOME:1\r\nNOTE:one\r\n") + ek)});
        file = world.write("new.vcf",
            card("Lima", "TITLE:Boss\r\nTEL;TYPE=HOME:2\r\nNOTE:two\r\nNICKNAME:l\r\n") + ek
                + card("Nunes", "") + "BEGIN:VCARD\r\nVERSION:3.0\r\nEND:VCARD\r\n");
    }

    /// A field of the card called that; empty where there is none.
    std::string field(const std::string& name, const std::string& pointer) const
    {
        for (const auto& card : world.cards())
            if (card["name"] == name)
                return card["properties"].value(Json::json_pointer(pointer), std::string());
        return "no card";
    }

    /// Added, updated, same, skipped, refused.
    static std::vector<int> countsOf(const Json& result)
    {
        std::vector<int> counts;
        for (const char* key : {"added", "updated", "same", "skipped", "refused"})
            counts.push_back(result.value(key, -1));
        return counts;
    }

    ToolWorld world;
    std::string file;
};

TEST_F(ToolImportTest, APlanSaysWhatWouldBecomeOfEachCard)
{
    const Json before = world.cards();
    const auto planned = world.tool({"import", "--plan", file});
    EXPECT_EQ(planned.status, 1) << "one card is refused";
    EXPECT_THAT(planned.out, HasSubstr(": card 1: update Ana Lima ("));
    EXPECT_THAT(planned.out, HasSubstr("): JobTitle, Nickname, Note, Phone\n"));
    EXPECT_THAT(planned.out, HasSubstr("    loses JobTitle: Chief, replaced by Boss\n"));
    EXPECT_THAT(planned.out, HasSubstr("    loses Phone (home): 1, replaced by 2\n"));
    EXPECT_THAT(planned.out, HasSubstr(": card 2: same Ana Ek ("));
    EXPECT_THAT(planned.out, HasSubstr(": card 3: add Ana Nunes\n"));
    EXPECT_THAT(planned.out, HasSubstr(": card 4: refuse "));
    EXPECT_THAT(planned.out,
        HasSubstr("1 card would be added, 1 updated, 1 there already, 1 refused; nothing was written\n"));
    EXPECT_EQ(world.cards(), before);
}

TEST_F(ToolImportTest, APlanForProgramsHasEveryChange)
{
    const Json plan = world.json({"import", "--plan", file}), first = plan["cards"][0];
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
    EXPECT_THAT(countsOf(world.json({"import", file})), ElementsAre(1, 1, 1, 0, 1));
    EXPECT_EQ(field("Ana Lima", "/JobTitle"), "Boss");
    EXPECT_EQ(field("Ana Lima", "/Note"), "one\rtwo");
    EXPECT_EQ(field("Ana Lima", "/Phone/0/value"), "2");
    EXPECT_THAT(countsOf(world.json({"import", file})), ElementsAre(0, 0, 3, 0, 1));
    EXPECT_EQ(world.cards().size(), 3U);
}

TEST_F(ToolImportTest, HandlesDuplicatesAsAskedOrPreferred)
{
    const struct {
        std::vector<std::string> words;
        std::vector<int> counts;
        std::string title;
        std::size_t people;
    } cases[] = {
        {{"import", "--duplicates", "keep", file}, {1, 0, 1, 1, 1}, "Chief", 3},
        {{"import", "--duplicates", "replace", file}, {0, 1, 2, 0, 1}, "Boss", 3},
        {{"--default", "ZRDontAutoMerge=true", "import", "--duplicates", "update", file}, {0, 0, 3, 0, 1},
            "Boss", 3},
        {{"--default", "ZRDontAutoMerge=true", "import", file}, {3, 0, 0, 0, 1}, "Boss", 6},
        {{"import", "--duplicates", "both", file}, {3, 0, 0, 0, 1}, "Boss", 9},
    };
    for (const auto& [words, counts, title, people] : cases) {
        SCOPED_TRACE(testing::PrintToString(words));
        EXPECT_EQ(countsOf(world.json(words)), counts);
        EXPECT_EQ(field("Ana Lima", "/JobTitle"), title);
        EXPECT_EQ(world.cards().size(), people);
    }
    EXPECT_EQ(world.tool({"import", "--duplicates", "guess", file}).status, 2);
}

// A group that is made for an import stays when everybody in it was there already.
TEST_F(ToolImportTest, PutsWhoIsThereIntoTheGroup)
{
    const auto ended = world.tool({"import", "--group", "Guests", world.path("old.vcf")});
    EXPECT_EQ(ended.out, "0 cards added, 2 there already\n");
    EXPECT_EQ(world.json({"list", "--group", "Guests"}).size(), 2U);
}

} // namespace
