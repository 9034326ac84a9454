// What becomes of a card that is edited as text: what was changed, and nothing else.
#include "tool/FullCard.h"
#include "tool/ToolWorld.h"

#include <map>

namespace {

using namespace test;
using testing::AllOf;
using testing::HasSubstr;

/// A card as texts: a value by the name of its property, an entry by its identifier too.
std::map<std::string, std::string> factsOf(const Json& card)
{
    std::map<std::string, std::string> facts;
    for (const auto& [name, value] : card.items())
        if (name == "reach")
            for (const auto& choice : value.at("choices"))
                facts["reach " + choice.at("property").get<std::string>()] =
                    "reach " + choice.at("value").dump();
        else if (name != "properties")
            facts[name] = name + " " + value.dump();
    for (const auto& [name, value] : card.at("properties").items())
        if (!value.is_array() || value.empty() || !value[0].contains("id"))
            facts[name] = name + " " + value.dump();
        else
            for (const auto& entry : value)
                facts[name + entry.at("id").get<std::string>()] = name + " " + entryText(entry);
    return facts;
}

/// "+" what is new, "-" what is gone, "~" what an entry or value has become.
std::vector<std::string> differences(const Json& before, const Json& after)
{
    const auto was = factsOf(before), is = factsOf(after);
    std::vector<std::string> found;
    for (const auto& [key, text] : was)
        if (!is.contains(key))
            found.push_back("-" + text);
    for (const auto& [key, text] : is)
        if (!was.contains(key))
            found.push_back("+" + text);
        else if (was.at(key) != text)
            found.push_back("~" + text);
    return found;
}

class EditorTest : public ToolTest {
protected:
    void SetUp() override
    {
        addFullCard(world.roster());
        before = everything();
    }

    /// All that can be seen of the card: as JSON, its picture, and how its group reaches it; without the day
    /// of its last change.
    Json everything() const
    {
        Json card = world.json("show Lima");
        card.at("properties").erase("Modification");
        card["reach"] = world.json("group reach Friends Lima");
        card["picture"] = world.picture(card);
        return card;
    }

    /// Runs it with an editor that is a shell script, and wants that status; "$1" in it is the file.
    Ended run(const std::string& line, const std::string& script, int status = 0) const
    {
        auto start = world.start(line);
        start.environment = {{"EDITOR", "/bin/sh " + world.write("editor", script)}, {"VISUAL", ""},
            {"TMPDIR", world.path("")}};
        auto ended = test::run(start);
        EXPECT_EQ(ended.status, status) << script << "\n" << ended.err;
        return ended;
    }
    Ended edit(const std::string& script, int status = 0) const { return run("edit Lima", script, status); }

    std::vector<std::string> changes() const { return differences(before, everything()); }
    /// The texts that were kept.
    std::vector<std::string> kept() const
    {
        std::vector<std::string> texts;
        for (const auto& entry : std::filesystem::directory_iterator(world.path("")))
            if (entry.path().filename().string().starts_with("roster-"))
                texts.push_back(contentsOf(entry.path().string() + "/card.vcf"));
        return texts;
    }

    Json before;
};

// The card has all properties, custom ones of every type, a picture, a group that reaches it by entries of
// its choice, and fields that Me keeps from others.
TEST_F(EditorTest, AppliesWhatDiffersAndNothingElse)
{
    for (const auto& [place, script, wanted] : lineCasesIn("edits.txt")) {
        SCOPED_TRACE(place + " " + script);
        EXPECT_THAT(edit("sed -i '" + script + "' \"$1\"").out, HasSubstr("Changed "));
        EXPECT_THAT(changes(), testing::ElementsAreArray(wanted));
        before = everything();
    }
    EXPECT_THAT(kept(), testing::IsEmpty());
}

TEST_F(EditorTest, KeepsTheOrderOfTheLines)
{
    edit("sed -i '/^ORG/h;/^ORG/d;/^TITLE/G;/555 0101/{h;d};/555 0102/G' \"$1\"");
    EXPECT_EQ(entriesIn(everything(), "Phone"),
        "<Home>=+49 (0)30 12-34 56 <WorkFAX>=555 0102 <Mobile>=+1 555 0101* boat=555 0103");
    EXPECT_THAT(changes(), testing::IsEmpty());
}

TEST_F(EditorTest, ChangesNothingWhenTheTextSaysTheSame)
{
    for (const char* script : {"true", ": > \"$1\"", "printf '\\n\\n' >> \"$1\"", "sed -i 's/$/\\r/' \"$1\""})
        EXPECT_THAT(edit(script).out, HasSubstr("Nothing changed")) << script;
    EXPECT_THAT(changes(), testing::IsEmpty());
    EXPECT_THAT(kept(), testing::IsEmpty());
}

// Somebody who typed for an hour must not lose it to a slip.
TEST_F(EditorTest, KeepsATextThatItCannotTake)
{
    const std::pair<const char*, const char*> cases[] = {
        {"sed -i 's/^BDAY.*/BDAY:soon/' \"$1\"", "BDAY: is no calendar day"},
        {"sed -i '3s/^/just some words\\n/' \"$1\"", "line 3: just some words: a line without a colon"},
        {"sed -i '/^END/d' \"$1\"", "the data end inside the card"},
        {"cat \"$1\" \"$1\" > \"$1.2\"; mv \"$1.2\" \"$1\"", "the text holds 2 cards"},
        {"echo nonsense > \"$1\"", "line 1: nonsense"},
        {"echo NICKNAME:Nana >> \"$1\"; exit 3", "ended with status 3"},
    };
    std::size_t count = 0;
    for (const auto& [script, told] : cases) {
        EXPECT_THAT(edit(script, 1).err,
            AllOf(HasSubstr(told), HasSubstr("your text is in " + world.path("roster-"))));
        EXPECT_EQ(kept().size(), ++count) << script;
    }
    EXPECT_THAT(changes(), testing::IsEmpty());
    EXPECT_THAT(kept(), testing::Contains("nonsense\n"));
    edit("false", 1);
    EXPECT_EQ(kept().size(), count) << "nothing was typed";
}

TEST_F(EditorTest, TakesInWhatAnotherProcessChangesMeanwhile)
{
    const std::string other = std::string(ROSTER_TOOL) + " --roster " + world.roster() + " edit Lima --set "
        + "Nickname=Nana --set 'Phone;home=555 0001' --unset 'Phone;boat' --set 'Phone;home+=555 0002'";
    edit(other + " > /dev/null; sed -i 's/555 0101/555 0199/;/^TITLE/d' \"$1\"");
    EXPECT_THAT(changes(),
        testing::UnorderedElementsAre("-JobTitle \"Chief\\\\of \\\\n all\"", "-Phone boat=555 0103",
            "+Phone <Home>=555 0002", "~Nickname \"Nana\"", "~Phone <Home>=555 0001",
            "~Phone <Mobile>=+1 555 0199*"));
}

TEST_F(EditorTest, MakesACard)
{
    const auto added = run("--json add", "sed -i 's/^N:.*/N:Ek;Ben/;s/^TEL;type=CELL:/&555/' \"$1\"");
    const Json card = Json::parse(added.out, nullptr, false);
    EXPECT_EQ(card["name"], "Ben Ek");
    EXPECT_EQ(entriesIn(card, "Phone"), "<Mobile>=555*");
    // What was left empty is not there.
    EXPECT_EQ(card["properties"].size(), 5U) << card;
    EXPECT_THAT(run("add", "true").err, HasSubstr("nothing added"));
    EXPECT_EQ(world.cards().size(), 2U);
}

TEST_F(EditorTest, WantsAnEditorOrToBeTold)
{
    auto start = world.start("edit Lima");
    start.environment = {{"EDITOR", ""}, {"VISUAL", ""}};
    const auto ended = test::run(start);
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.err, HasSubstr("--set and --unset, or name an editor"));
}

} // namespace
