// What `roster duplicates` lists and merges, and what `roster merge` makes of chosen cards.
#include "tool/ToolWorld.h"

#include "generate/Cards.h"
#include "generate/Planted.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

using namespace test;
using testing::AllOf;
using testing::HasSubstr;

constexpr char kPicture[] = "\nPHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQSkZJRgABAQAAAQABAAD";

class DuplicatesTest : public ToolTest {
protected:
    /// Imports cards of those lines as they are: whatever they are like, each is one of the roster.
    void import(const Words& cards)
    {
        std::string text;
        for (const auto& lines : cards)
            text += cardOf(lines);
        done("import --duplicates both " + world.write("cards.vcf", text));
    }

    /// "name, name" of each bucket, with "; " between them.
    static std::string namesOf(const Json& buckets)
    {
        std::string text;
        for (const auto& bucket : buckets)
            text += (text.empty() ? "" : "; ") + namesIn(bucket.at("cards"));
        return text;
    }

    /// The only card that has that name.
    Json only(const std::string& name)
    {
        const auto card = world.json("show '" + name + "'");
        EXPECT_TRUE(card.is_object()) << name;
        return card;
    }
};

const Words kPeople = {
    "N:Lima;Ana;;;\nTEL;TYPE=HOME:555 0101\nNOTE:old",
    "N:Lima;Ana;;;\nTEL;TYPE=HOME:555 0101\nNOTE:old",
    std::string("N:LIMA;Ana;;;\nTEL;TYPE=HOME:555 0102\nNOTE:new") + kPicture,
    "N:Ek;Bo;;;\nTEL;TYPE=HOME:+1 (555) 0199\nTEL;TYPE=WORK:+1 555-0199",
    "N:Roy;Cy;;;\nEMAIL;TYPE=HOME:Home@roy.example",
    "N:Poe;Dee;;;\nEMAIL;TYPE=WORK:home@ROY.example\nTEL;TYPE=WORK:117",
    "N:Fay;Eve;;;\nTEL;TYPE=WORK:117",
    "TEL;TYPE=HOME:555 0111",
    "TEL;TYPE=HOME:555 0112",
};

TEST_F(DuplicatesTest, AreListedByKindEachWithItsReason)
{
    import(kPeople);
    const Json all = world.json("duplicates");
    EXPECT_EQ(namesOf(all.at("identical")), "Ana Lima, Ana Lima");
    EXPECT_EQ(namesOf(all.at("similar")), "Ana Lima, Ana LIMA");
    EXPECT_EQ(namesOf(all.at("inner")), "Bo Ek");
    EXPECT_EQ(all["inner"][0].at("values"), Json::parse(R"([{"property":"Phone","value":"+1 555-0199"}])"));
    EXPECT_EQ(namesOf(all.at("shared")), "Cy Roy, Dee Poe");
    EXPECT_THAT(all["shared"][0].at("reason"), HasSubstr("Home@roy.example"));
    EXPECT_EQ(world.json("duplicates --kind inner --kind shared"),
        Json({{"inner", all.at("inner")}, {"shared", all.at("shared")}}));
    const auto text = done("duplicates").out;
    for (const auto& card : all["identical"][0].at("cards"))
        EXPECT_THAT(text, HasSubstr(card.at("id").get<std::string>() + "  Ana Lima"));
    EXPECT_THAT(text, AllOf(HasSubstr("Identical cards: 1"), HasSubstr("+1 555-0199")));
}

TEST_F(DuplicatesTest, AreMergedKindByKindAndSharedOnesOnlyWhenNamed)
{
    import(kPeople);
    const Json identical = world.json("duplicates").at("identical")[0].at("cards");
    const std::string first = identical[0].at("id"), second = identical[1].at("id");
    done("group make Choir");
    done("group add Choir " + second);
    done("me " + second);

    const auto before = withoutChange(world.cards());
    EXPECT_THAT(done("duplicates --merge identical").out, HasSubstr("Merged one card into Ana Lima"));
    done("undo");
    EXPECT_EQ(withoutChange(world.cards()), before);
    EXPECT_EQ(world.json("me").at("id"), second);
    done("redo");
    expectRefusals({{"show " + second, 1, "no card has"}});
    EXPECT_EQ(world.json("me").at("id"), first) << "Me went with the card";
    EXPECT_EQ(names("group members Choir"), "Ana Lima");
    EXPECT_EQ(world.json("show " + first).at("properties").at("Note"), "old");

    EXPECT_EQ(world.json("duplicates --merge inner --merge similar").at("merged").size(), 2U);
    const Json ana = world.json("show " + first);
    EXPECT_EQ(ana.at("name"), "Ana LIMA");
    EXPECT_EQ(ana.at("properties").at("Note"), "old\rnew");
    EXPECT_EQ(entriesIn(ana, "Phone"), "<Home>=555 0102*");
    EXPECT_FALSE(world.picture(ana).empty());
    EXPECT_EQ(entriesIn(only("Bo Ek"), "Phone"), "<Home>=+1 (555) 0199*");

    EXPECT_EQ(namesOf(world.json("duplicates").at("shared")), "Cy Roy, Dee Poe");
    EXPECT_EQ(world.tool("duplicates --merge identical --merge similar").status, 1);
    done("duplicates --merge shared");
    EXPECT_EQ(world.tool("duplicates").status, 1) << "cards without a name, and extensions, prove nothing";
    EXPECT_EQ(world.cards().size(), 6U);
}

TEST_F(DuplicatesTest, ChosenCardsBecomeOneNewCard)
{
    import({"N:Lima;Ana;;;\nTEL;TYPE=HOME:555 0101\nNOTE:one",
        std::string("N:Lima;Anna;;;\nTEL;TYPE=HOME:555 0102\nNOTE:two") + kPicture,
        "N:Ek;Bo;;;\nEMAIL;TYPE=HOME:bo@ek.example"});
    for (const char* line : {"group make Choir", "group add Choir 'Ana Lima'", "group make Crew",
             "group add Crew 'Bo Ek'", "me 'Bo Ek'"})
        done(line);
    const auto before = withoutChange(world.cards());
    const std::string made =
        world.json("merge 'Anna Lima' 'Ana Lima' " + world.idOf("Bo Ek")).at("id").get<std::string>();
    for (const auto& card : before)
        EXPECT_NE(card.at("id"), made);
    EXPECT_EQ(world.cards().size(), 1U);
    const Json card = only("Anna Lima");
    EXPECT_EQ(card.at("id"), made);
    EXPECT_EQ(card.at("properties").at("Note"), "two\rone\rAna\rBo\rEk");
    EXPECT_EQ(entriesIn(card, "Phone"), "<Home>=555 0102* <Home>=555-0101");
    EXPECT_EQ(entriesIn(card, "Email"), "<Home>=bo@ek.example*");
    EXPECT_FALSE(world.picture(card).empty());
    EXPECT_EQ(world.json("me").at("id"), made);
    for (const char* group : {"Choir", "Crew"})
        EXPECT_EQ(names(std::string("group members ") + group), "Anna Lima") << group;
    done("undo");
    EXPECT_EQ(withoutChange(world.cards()), before);
}

// Second cards planted among shuffled ones: every one is found, and nothing else.
TEST_F(DuplicatesTest, PlantedOnesAreAllFoundAndNoneInvented)
{
    constexpr std::uint64_t seed = 7;
    std::string text;
    std::map<std::string, std::multiset<std::string>> planted, found;
    for (const auto& card : bench::plantedCards(seed, 2'000)) {
        bench::appendCard30(text, bench::personOf(seed, card));
        if (card.planting != bench::Planting::none)
            planted[std::string(nameOf(card.planting))].insert(bench::ownWord(card.person));
    }
    done("import --duplicates both " + world.write("planted.vcf", text));
    const Json listed = world.json("duplicates");
    for (const auto& [kind, buckets] : listed.items())
        for (const auto& bucket : buckets) {
            EXPECT_EQ(bucket.at("cards").size(), kind == "inner" ? 1U : 2U) << bucket.dump();
            std::set<std::string> words;
            for (const auto& card : bucket.at("cards")) {
                std::string name = card.at("name");
                std::ranges::transform(name, name.begin(),
                    [](char c) { return c < 0 ? c : static_cast<char>(std::tolower(c)); });
                words.insert(name.substr(name.rfind(' ') + 1));
            }
            EXPECT_EQ(words.size(), 1U) << bucket.dump();
            found[kind].insert(*words.begin());
        }
    EXPECT_EQ(planted.size(), 4U);
    EXPECT_EQ(found, planted);
}

} // namespace
