// What becomes of a card that is edited as text: what was changed, and nothing else.
#include "tool/FullCard.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <map>

namespace {

using namespace test;
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
                facts[name + entry.at("id").get<std::string>()] = name + " "
                    + entry.at("label").get<std::string>() + " " + entry.at("value").dump()
                    + (entry.contains("primary") ? " primary" : "");
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

class EditorTest : public testing::Test {
protected:
    void SetUp() override
    {
        addFullCard(world.roster());
        before = everythingOf(world, "Lima");
    }

    /// Runs it with an editor that is a shell script; "$1" in it is the file.
    Ended run(const std::vector<std::string>& words, const std::string& script) const
    {
        auto start = world.start(words);
        start.environment = {{"EDITOR", "/bin/sh " + world.write("editor", script)}, {"VISUAL", ""},
            {"TMPDIR", world.path("")}};
        return test::run(start);
    }
    Ended edit(const std::string& script) const { return run({"edit", "Lima"}, script); }

    std::vector<std::string> changes() const { return differences(before, everythingOf(world, "Lima")); }
    /// The texts that were kept.
    std::vector<std::string> kept() const
    {
        std::vector<std::string> texts;
        for (const auto& entry : std::filesystem::directory_iterator(world.path("")))
            if (entry.path().filename().string().starts_with("roster-"))
                texts.push_back(contentsOf(entry.path().string() + "/card.vcf"));
        return texts;
    }

    ToolWorld world;
    Json before;
};

// The card has all properties, custom ones of every type, a picture, a group that reaches it by entries of
// its choice, and fields that Me keeps from others.
TEST_F(EditorTest, ChangesOnePhoneOfACardThatHasEverything)
{
    const auto ended = edit("sed -i 's/555 0101/555 0199/' \"$1\"");
    ASSERT_EQ(ended.status, 0) << ended.err;
    EXPECT_THAT(ended.out, HasSubstr("Changed Dr. Ana"));
    EXPECT_THAT(changes(), testing::ElementsAre("~Phone _$!<Mobile>!$_ \"+1 555 0199\" primary"));
    EXPECT_THAT(kept(), testing::IsEmpty());
}

TEST_F(EditorTest, AppliesWhatDiffersAndNothingElse)
{
    struct Case {
        const char* script;
        std::vector<std::string> changes;
    };
    const Case cases[] = {
        {"s/^NICKNAME:.*/NICKNAME:Nana/", {"~Nickname \"Nana\""}},
        {"/^NICKNAME/d", {"-Nickname \"Nana\""}},
        {"s/six /seven/", {R"(~Note "One\nTwo; three\\four, \"five\"\n\nseven")"}},
        {"s/^N:Lima;Ana/N:Lima;Eva/", {"~First \"Eva\"", "~name \"Dr. Eva Maria Lima PhD\""}},
        {"s/12-34 56/12-34 57/", {"~Phone _$!<Home>!$_ \"+49 (0)30 12-34 57\""}},
        {"s/type=CELL;type=pref/type=PAGER;type=pref/", {"~Phone _$!<Pager>!$_ \"+1 555 0101\" primary"}},
        {"s/^TEL;type=HOME/TEL;type=HOME:555 0777\\n&/", {"+Phone _$!<Home>!$_ \"555 0777\""}},
        // The group's choice goes with its entry.
        {"/555 0102/d", {"-Phone _$!<WorkFAX>!$_ \"555 0102\"", "~reach \"+1 555 0101\""}},
        // The parts of an address that no text tells stay, and none is gained.
        {"s/Porto/Braga/",
            {R"(~Address _$!<Home>!$_ {"City":"Braga","Country":"Portugal","CountryCode":"pt",)"
             R"("Street":"Rua 1\nCasa 2","ZIP":"4000","x.floor":"3"})"}},
        {"0,/;Av/s//;Rua/", {R"(~Address _$!<Work>!$_ {"City":"Lisboa","Street":"Rua; 9"} primary)"}},
        {"s/^BDAY.*/BDAY;value=date:1971-05-02/", {"~Birthday \"1971-05-02\""}},
        // Of the flags the bits that no text tells stay.
        {"s/^X-ZROrder.*/X-ZRShowAs:COMPANY/", {"~ZRPersonFlags 33", R"(~name "Works; & Co, \"Ltd\"")"}},
        {"s/ana@im/nia@im/",
            {"~AIMInstant _$!<Home>!$_ \"nia@im\"", "~ICQInstant _$!<Home>!$_ \"nia@im\"",
                "~JabberInstant _$!<Home>!$_ \"nia@im\"", "~MSNInstant _$!<Home>!$_ \"nia@im\"",
                "~YahooInstant _$!<Home>!$_ \"nia@im\""}},
        // What has no place goes to the note, as in an import.
        {"s/^END/X-COLOUR:red\\n&/", {R"(~Note "One\nTwo; three\\four, \"five\"\n\nseven\nX-COLOUR: red")"}},
    };
    for (const auto& [script, wanted] : cases) {
        SCOPED_TRACE(script);
        const auto ended = edit(std::string("sed -i '") + script + "' \"$1\"");
        EXPECT_EQ(ended.status, 0) << ended.err;
        EXPECT_THAT(changes(), testing::ElementsAreArray(wanted));
        before = everythingOf(world, "Lima");
    }
}

TEST_F(EditorTest, KeepsTheOrderOfTheLines)
{
    ASSERT_EQ(edit("sed -i '/^ORG/h;/^ORG/d;/^TITLE/G;/555 0101/{h;d};/555 0102/G' \"$1\"").status, 0);
    const Json phones = everythingOf(world, "Lima")["properties"]["Phone"];
    EXPECT_EQ(phones[1]["value"], "555 0102");
    EXPECT_EQ(phones[2]["value"], "+1 555 0101");
    EXPECT_EQ(phones[2]["primary"], true);
    EXPECT_THAT(changes(), testing::IsEmpty());
}

TEST_F(EditorTest, ChangesNothingWhenTheTextSaysTheSame)
{
    for (const char* script :
        {"true", ": > \"$1\"", "printf '\\n\\n' >> \"$1\"", "sed -i 's/$/\\r/' \"$1\""}) {
        SCOPED_TRACE(script);
        const auto ended = edit(script);
        EXPECT_EQ(ended.status, 0) << ended.err;
        EXPECT_THAT(ended.out, HasSubstr("Nothing changed"));
    }
    EXPECT_THAT(changes(), testing::IsEmpty());
    EXPECT_THAT(kept(), testing::IsEmpty());
}

// Somebody who typed for an hour must not lose it to a slip.
TEST_F(EditorTest, KeepsATextThatItCannotTake)
{
    struct Case {
        const char* script;
        const char* told;
    };
    const Case cases[] = {
        {"sed -i 's/^BDAY.*/BDAY:soon/' \"$1\"", "BDAY: is no calendar day"},
        {"sed -i '3s/^/just some words\\n/' \"$1\"", "line 3: just some words: a line without a colon"},
        {"sed -i '/^END/d' \"$1\"", "the data end inside the card"},
        {"cat \"$1\" \"$1\" > \"$1.2\"; mv \"$1.2\" \"$1\"", "the text holds 2 cards"},
        {"echo nonsense > \"$1\"", "line 1: nonsense"},
        {"echo NICKNAME:Nana >> \"$1\"; exit 3", "ended with status 3"},
    };
    std::size_t count = 0;
    for (const auto& [script, told] : cases) {
        SCOPED_TRACE(script);
        const auto ended = edit(script);
        EXPECT_EQ(ended.status, 1);
        EXPECT_THAT(ended.err, HasSubstr(told));
        EXPECT_THAT(ended.err, HasSubstr("your text is in " + world.path("roster-")));
        EXPECT_EQ(kept().size(), ++count);
    }
    EXPECT_THAT(changes(), testing::IsEmpty());
    EXPECT_THAT(kept(), testing::Contains("nonsense\n"));
    EXPECT_EQ(edit("false").status, 1);
    EXPECT_EQ(kept().size(), count) << "nothing was typed";
}

TEST_F(EditorTest, TakesInWhatAnotherProcessChangesMeanwhile)
{
    const std::string other = std::string(ROSTER_TOOL) + " --roster " + world.roster() + " edit Lima --set "
        + "Nickname=Nana --set 'Phone;home=555 0001' --unset 'Phone;boat' --set 'Phone;home+=555 0002'";
    const auto ended = edit(other + " > /dev/null; sed -i 's/555 0101/555 0199/;/^TITLE/d' \"$1\"");
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_THAT(changes(),
        testing::UnorderedElementsAre("-JobTitle \"Chief\\\\of \\\\n all\"", "-Phone boat \"555 0103\"",
            "+Phone _$!<Home>!$_ \"555 0002\"", "~Nickname \"Nana\"", "~Phone _$!<Home>!$_ \"555 0001\"",
            "~Phone _$!<Mobile>!$_ \"+1 555 0199\" primary"));
}

TEST_F(EditorTest, MakesACard)
{
    const auto added = run({"--json", "add"}, "sed -i 's/^N:.*/N:Ek;Ben/;s/^TEL;type=CELL:/&555/' \"$1\"");
    const Json card = Json::parse(added.out, nullptr, false);
    ASSERT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(card["name"], "Ben Ek");
    EXPECT_EQ(card["properties"]["Phone"][0]["label"], "_$!<Mobile>!$_");
    // What was left empty is not there.
    EXPECT_EQ(card["properties"].size(), 5U) << card;
    const auto none = run({"add"}, "true");
    EXPECT_EQ(none.status, 0);
    EXPECT_THAT(none.err, HasSubstr("nothing added"));
    EXPECT_EQ(world.cards().size(), 2U);
}

TEST_F(EditorTest, WantsAnEditorOrToBeTold)
{
    auto start = world.start({"edit", "Lima"});
    start.environment = {{"EDITOR", ""}, {"VISUAL", ""}};
    const auto ended = test::run(start);
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.err, HasSubstr("--set and --unset, or name an editor"));
}

} // namespace
