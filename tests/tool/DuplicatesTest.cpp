// What `roster duplicates` lists and merges, and what `roster merge` makes of chosen cards.
#include "tool/ToolWorld.h"

#include "generate/Cards.h"
#include "generate/Planted.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <set>

namespace {

using namespace test;
using testing::HasSubstr;
using testing::Not;

constexpr char kPicture[] = "/9j/4AAQSkZJRgABAQAAAQABAAD";

/// A card of those lines.
std::string cardOf(const std::vector<std::string>& lines)
{
    std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
    for (const auto& line : lines)
        text += line + "\r\n";
    return text + "END:VCARD\r\n";
}

class DuplicatesTest : public testing::Test {
protected:
    /// Imports the cards as they are: whatever they are like, each is one of the roster.
    void import(const std::vector<std::vector<std::string>>& cards)
    {
        std::string text;
        for (const auto& lines : cards)
            text += cardOf(lines);
        done({"import", "--duplicates", "both", world.write("cards.vcf", text)});
    }

    Ended done(const std::vector<std::string>& words)
    {
        const auto ended = world.tool(words);
        EXPECT_EQ(ended.status, 0) << testing::PrintToString(words) << "\n" << ended.out << ended.err;
        return ended;
    }

    /// "name + name" of each bucket of that kind, with "; " between them.
    static std::string namesIn(const Json& buckets)
    {
        std::string text;
        for (const auto& bucket : buckets) {
            text += text.empty() ? "" : "; ";
            for (const auto& card : bucket.at("cards"))
                text +=
                    (text.empty() || text.ends_with("; ") ? "" : " + ") + card.at("name").get<std::string>();
        }
        return text;
    }

    /// The ids of the cards of that name, in the order of a list.
    std::vector<std::string> idsOf(const std::string& name)
    {
        std::vector<std::string> ids;
        for (const auto& card : world.cards())
            if (card.at("name") == name)
                ids.push_back(card.at("id"));
        return ids;
    }

    Json only(const std::string& name)
    {
        const auto ids = idsOf(name);
        EXPECT_EQ(ids.size(), 1U) << name;
        return ids.empty() ? Json() : world.json({"show", ids.front()});
    }

    /// All cards without the moment of their last change: the history leaves it at one that a merge has
    /// touched and not changed.
    Json cardsButForChange()
    {
        Json cards = world.cards();
        for (auto& card : cards)
            card.at("properties").erase("Modification");
        return cards;
    }

    static std::string valuesIn(const Json& card, const char* property)
    {
        std::string text;
        for (const auto& entry : card.at("properties").value(property, Json::array()))
            text += (text.empty() ? "" : ", ") + entry.at("value").get<std::string>();
        return text;
    }

    ToolWorld world;
};

const std::vector<std::vector<std::string>> kPeople = {
    {"N:Lima;Ana;;;", "TEL;TYPE=HOME:555 0101", "NOTE:old"},
    {"N:Lima;Ana;;;", "TEL;TYPE=HOME:555 0101", "NOTE:old"},
    {"N:LIMA;Ana;;;", "TEL;TYPE=HOME:555 0102", "NOTE:new",
        std::string("PHOTO;ENCODING=b;TYPE=JPEG:") + kPicture},
    {"N:Ek;Bo;;;", "TEL;TYPE=HOME:+1 (555) 0199", "TEL;TYPE=WORK:+1 555-0199"},
    {"N:Roy;Cy;;;", "EMAIL;TYPE=HOME:Home@roy.example"},
    {"N:Poe;Dee;;;", "EMAIL;TYPE=WORK:home@ROY.example", "TEL;TYPE=WORK:117"},
    {"N:Fay;Eve;;;", "TEL;TYPE=WORK:117"},
    {"TEL;TYPE=HOME:555 0111"},
    {"TEL;TYPE=HOME:555 0112"},
};

TEST_F(DuplicatesTest, AreListedByKindEachWithItsReason)
{
    import(kPeople);
    const Json all = world.json({"duplicates"});
    EXPECT_EQ(namesIn(all.at("identical")), "Ana Lima + Ana Lima");
    EXPECT_EQ(namesIn(all.at("similar")), "Ana Lima + Ana LIMA");
    EXPECT_EQ(namesIn(all.at("inner")), "Bo Ek");
    EXPECT_EQ(all["inner"][0].at("values"), Json::parse(R"([{"property":"Phone","value":"+1 555-0199"}])"));
    EXPECT_EQ(namesIn(all.at("shared")), "Cy Roy + Dee Poe");
    EXPECT_THAT(all["shared"][0].at("reason"), HasSubstr("Home@roy.example"));
    const Json one = world.json({"duplicates", "--kind", "inner", "--kind", "shared"});
    EXPECT_EQ(one.size(), 2U);
    EXPECT_EQ(one.at("inner"), all.at("inner"));
    const auto text = done({"duplicates"}).out;
    for (const auto& id : idsOf("Ana Lima"))
        EXPECT_THAT(text, HasSubstr(id + "  Ana Lima"));
    EXPECT_THAT(text, HasSubstr("Identical cards: 1"));
    EXPECT_THAT(text, HasSubstr("+1 555-0199"));
}

TEST_F(DuplicatesTest, AreMergedKindByKindAndSharedOnesOnlyWhenNamed)
{
    import(kPeople);
    const auto first =
        world.json({"duplicates"}).at("identical")[0].at("cards")[0].at("id").get<std::string>();
    const auto second =
        world.json({"duplicates"}).at("identical")[0].at("cards")[1].at("id").get<std::string>();
    done({"group", "make", "Choir"});
    done({"group", "add", "Choir", second});
    done({"me", second});

    const auto before = cardsButForChange();
    EXPECT_THAT(done({"duplicates", "--merge", "identical"}).out, HasSubstr("Merged one card into Ana Lima"));
    done({"undo"});
    EXPECT_EQ(cardsButForChange(), before);
    EXPECT_EQ(world.json({"me"}).at("id"), second);
    done({"redo"});
    EXPECT_EQ(idsOf("Ana Lima"), std::vector{first});
    EXPECT_EQ(world.json({"me"}).at("id"), first) << "Me went with the card";
    EXPECT_THAT(done({"group", "members", "Choir"}).out, HasSubstr("Ana Lima"));
    EXPECT_EQ(world.json({"show", first}).at("properties").at("Note"), "old");

    const Json merged = world.json({"duplicates", "--merge", "inner", "--merge", "similar"});
    EXPECT_EQ(merged.at("merged").size(), 2U);
    const Json ana = world.json({"show", first});
    EXPECT_EQ(ana.at("name"), "Ana LIMA");
    EXPECT_EQ(ana.at("properties").at("Note"), "old\rnew");
    EXPECT_EQ(valuesIn(ana, "Phone"), "555 0102");
    EXPECT_FALSE(world.picture(ana).empty());
    EXPECT_EQ(valuesIn(only("Bo Ek"), "Phone"), "+1 (555) 0199");

    EXPECT_EQ(namesIn(world.json({"duplicates"}).at("shared")), "Cy Roy + Dee Poe");
    EXPECT_EQ(world.tool({"duplicates", "--merge", "identical", "--merge", "similar"}).status, 1);
    done({"duplicates", "--merge", "shared"});
    EXPECT_EQ(world.tool({"duplicates"}).status, 1) << "cards without a name, and extensions, prove nothing";
    EXPECT_EQ(world.cards().size(), 6U);
}

TEST_F(DuplicatesTest, ChosenCardsBecomeOneNewCard)
{
    import({{"N:Lima;Ana;;;", "TEL;TYPE=HOME:555 0101", "NOTE:one"},
        {"N:Lima;Anna;;;", "TEL;TYPE=HOME:555 0102", "NOTE:two",
            std::string("PHOTO;ENCODING=b;TYPE=JPEG:") + kPicture},
        { "N:Ek;Bo;;;",
            "EMAIL;TYPE=HOME:bo@ek.example" }});
    for (const auto& [group, member] : {std::pair{"Choir", "Ana Lima"}, {"Crew", "Bo Ek"}}) {
        done({"group", "make", group});
        done({"group", "add", group, member});
    }
    done({"me", "Bo Ek"});
    const auto before = cardsButForChange();
    const Json made = world.json({"merge", "Anna Lima", "Ana Lima", only("Bo Ek").at("id")});
    for (const auto& card : before)
        EXPECT_NE(card.at("id"), made.at("id"));
    ASSERT_EQ(world.cards().size(), 1U);
    const Json card = only("Anna Lima");
    EXPECT_EQ(card.at("id"), made.at("id"));
    EXPECT_EQ(card.at("properties").at("Note"), "two\rone\rAna\rBo\rEk");
    EXPECT_EQ(valuesIn(card, "Phone"), "555 0102, 555-0101");
    EXPECT_EQ(valuesIn(card, "Email"), "bo@ek.example");
    EXPECT_FALSE(world.picture(card).empty());
    EXPECT_EQ(world.json({"me"}).at("id"), card.at("id"));
    for (const char* group : {"Choir", "Crew"})
        EXPECT_THAT(done({"group", "members", group}).out, HasSubstr("Anna Lima")) << group;
    done({"undo"});
    EXPECT_EQ(cardsButForChange(), before);
}

TEST_F(DuplicatesTest, RefuseWhatCannotBeMeantWithOneLine)
{
    import({{"N:Ek;Bo;;;"}, {"N:Roy;Cy;;;"}, {"N:Ek;Al;;;"}, { "N:EK;AL;;;" }});
    struct Case {
        std::vector<std::string> words;
        int status;
        const char* text;
    };
    const Case cases[] = {
        {{"merge"}, 2, "ID"},
        {{"merge", "Bo Ek"}, 2, "two cards at least"},
        {{"merge", "Bo Ek", "bo ek"}, 2, "these are one"},
        {{"merge", "Bo Ek", "Nobody"}, 1, "no card is called 'Nobody'"},
        {{"merge", "Bo Ek", "Al Ek"}, 1, "say which by its id"},
        {{"duplicates", "--merge", "all"}, 2, "all"},
        {{"duplicates", "--merge"}, 2, "--merge"},
        {{"duplicates", "--kind", "inner"}, 1, "no duplicates"},
        {{"duplicates", "--merge", "identical"}, 1, "nothing to merge"},
        {{"duplicates", "--merge", "identical", "--kind", "inner"}, 2, "one of them"},
    };
    const auto before = world.cards();
    for (const auto& [words, status, text] : cases) {
        const auto ended = world.tool(words);
        SCOPED_TRACE(testing::PrintToString(words) + "\n" + ended.out + ended.err);
        EXPECT_EQ(ended.status, status);
        EXPECT_EQ(ended.out, "");
        EXPECT_THAT(ended.err, HasSubstr(text));
        EXPECT_EQ(std::ranges::count(ended.err, '\n'), 1);
    }
    EXPECT_EQ(world.cards(), before);
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
    done({"import", "--duplicates", "both", world.write("planted.vcf", text)});
    const Json listed = world.json({"duplicates"});
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
