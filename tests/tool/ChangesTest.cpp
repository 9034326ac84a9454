// What `roster add`, `edit` and `remove` do by the words of a command line, and what they refuse.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;
using testing::HasSubstr;

class ChangesTest : public PeopleWorld {
protected:
    /// "label=value" of each entry, the primary one with a star.
    std::string entries(const std::string& name, const std::string& property) const
    {
        const Json card = world.json({"show", name});
        std::string text;
        for (const auto& entry : card.at("properties").value(property, Json::array()))
            text += (text.empty() ? "" : " ") + entry.at("label").get<std::string>() + "="
                + (entry.at("value").is_string() ? entry.at("value").get<std::string>()
                                                 : entry.at("value").dump())
                + (entry.contains("primary") ? "*" : "");
        return text;
    }
};

TEST_F(ChangesTest, SetAndTakeOutEntries)
{
    struct Case {
        std::vector<std::string> words;
        const char* property;
        const char* entries;
    };
    // One after the other, on the card of Ana Lima.
    const Case cases[] = {
        {{"--set", "Email;home=new@home.example"}, "Email",
            "_$!<Home>!$_=new@home.example* _$!<Work>!$_=lima@works.example"},
        {{"--set", "email;HOME+=a@b.c", "--set", "Email;Boat=d@e.f"}, "Email",
            "_$!<Home>!$_=new@home.example* _$!<Work>!$_=lima@works.example _$!<Home>!$_=a@b.c Boat=d@e.f"},
        {{"--set", "Email;boat=g@h.i"}, "Email",
            "_$!<Home>!$_=new@home.example* _$!<Work>!$_=lima@works.example _$!<Home>!$_=a@b.c Boat=g@h.i"},
        {{"--unset", "Email;home=A@B.C", "--unset", "Email=g@h.i"}, "Email",
            "_$!<Home>!$_=new@home.example* _$!<Work>!$_=lima@works.example"},
        {{"--unset", "Email;home"}, "Email", "_$!<Work>!$_=lima@works.example*"},
        {{"--set", "Email=only@one.example"}, "Email", "_$!<Work>!$_=only@one.example*"},
        // What is taken out goes first.
        {{"--set", "Email;mine=x@y.z", "--unset", "Email"}, "Email", "mine=x@y.z*"},
        {{"--set", "AIMInstant=ana"}, "AIMInstant", "_$!<Work>!$_=ana*"},
        {{"--set", "Phone;_$!<Mobile>!$_=555", "--set", "Phone;mobile+=556"}, "Phone",
            "_$!<Home>!$_=+49 (0)30 12-34 56* _$!<Mobile>!$_=555 _$!<Mobile>!$_=556"},
        {{"--set", "ZRDate;anniversary=12 Dec 1999"}, "ZRDate", "_$!<Anniversary>!$_=1999-12-12*"},
        {{"--unset", "ZRDate=1999-12-12"}, "ZRDate", ""},
        {{"--set", "Address.city;home=Braga", "--unset", "Address.ZIP;home", "--unset", "Address.Country"},
            "Address", R"(_$!<Home>!$_={"City":"Braga","CountryCode":"pt","Street":"Rua 1"}*)"},
        {{"--set", "Address.City;work=Faro", "--set", "Address.Street;work=A=B"}, "Address",
            R"(_$!<Home>!$_={"City":"Braga","CountryCode":"pt","Street":"Rua 1"}* _$!<Work>!$_={"City":"Faro","Street":"A=B"})"},
        {{"--unset", "Address;home", "--set", "Address.City;work+=Beja", "--set", "Address.ZIP;work=7800"},
            "Address",
            R"(_$!<Work>!$_={"City":"Faro","Street":"A=B"}* _$!<Work>!$_={"City":"Beja","ZIP":"7800"})"},
    };
    for (const auto& [words, property, wanted] : cases) {
        SCOPED_TRACE(testing::PrintToString(words));
        std::vector<std::string> all{"edit", "Ana", "Lima"};
        all.insert(all.end(), words.begin(), words.end());
        done(all);
        EXPECT_EQ(entries("Ana Lima", property), wanted);
    }
}

TEST_F(ChangesTest, SetAndTakeOutSingleValues)
{
    const Json card = world.json({"edit", "Lima", "--set", "nickname=Nana", "--set", "Birthday=2 May 1971",
        "--set", "ZRPersonFlags=1", "--set", "Organization=Lima; Sons = Co", "--unset", "First"});
    EXPECT_EQ(card["properties"]["Nickname"], "Nana");
    EXPECT_EQ(card["properties"]["Birthday"], "1971-05-02");
    EXPECT_EQ(card["name"], "Lima; Sons = Co");
    EXPECT_FALSE(card["properties"].contains("First"));
    EXPECT_THAT(done({"edit", "Lima", "--set", "Nickname=Nana"}).out, HasSubstr("Nothing changed in Lima;"));
}

TEST_F(ChangesTest, AddACard)
{
    EXPECT_THAT(done({"add", "--set", "First=Eva", "--set", "Phone;mobile=555"}).out,
        testing::MatchesRegex("Added Eva \\([0-9A-F]{8}\\)\n"));
    EXPECT_EQ(entries("Eva", "Phone"), "_$!<Mobile>!$_=555*");
    expectRefusal({"add", "--set", "First=Nobody", "--set", "Shoe=43"}, 2, "no property 'Shoe'");
    EXPECT_EQ(world.cards().size(), 6U);
}

TEST_F(ChangesTest, RefuseWhatMakesNoSenseAndChangeNothing)
{
    const Json before = world.cards();
    struct Case {
        std::vector<std::string> words;
        int status;
        const char* told;
    };
    const Case cases[] = {
        {{"--set", "Nickname=x", "--set", "Shoe=43"}, 2, "no property 'Shoe'; they have AIMInstant, Address"},
        {{"--set", "Nickname"}, 2, "wants PROPERTY=VALUE"},
        {{"--set", "Nickname="}, 2, "--unset takes one out"},
        {{"--set", "Nickname;home=x"}, 2, "has one value, without a label"},
        {{"--set", "Nickname+=x"}, 2, "has one value"},
        {{"--set", "Nickname=x", "--set", "Nickname=y"}, 2, "is set twice"},
        {{"--set", "Email;home=x", "--set", "Email;home=y"}, 2, "+= adds one more"},
        {{"--set", "Email;=x"}, 2, "work, home, SkyLocker, other or one of your own"},
        {{"--set", "Email.City=x"}, 2, "Email has no parts"},
        {{"--set", "Birthday=soon"}, 2, "'soon' is no day; write one as 1970-05-01"},
        {{"--set", "ZRPersonFlags=many"}, 2, "'many' is no number"},
        {{"--set", "UID=x"}, 2, "kept by the roster itself"},
        {{"--set", "Address;home=Rua 1"}, 2, "is set by its parts, as Address.City: Street, City"},
        {{"--set", "Address.Floor;home=3"}, 2, "no 'Floor'; its parts are Street"},
        {{"--unset", "Nobody"}, 2, "no property 'Nobody'"},
        {{"--unset", "MaidenName"}, 1, "the card has no MaidenName"},
        {{"--unset", "Nickname=Nina"}, 1, "the card has no such Nickname"},
        {{"--unset", "Email;boat"}, 1, "the card has no such entry"},
        {{"--unset", "Email;home=lima@works.example"}, 1, "the card has no such entry"},
        {{"--unset", "Address.State;home"}, 1, "the card has no such part"},
        {{"--unset", "Address;home=Porto"}, 2, "taken out whole"},
    };
    for (const auto& [words, status, told] : cases) {
        std::vector<std::string> all{"edit", "Ana Lima"};
        all.insert(all.end(), words.begin(), words.end());
        expectRefusal(all, status, told);
    }
    expectRefusal({"edit", "Ana", "--set", "Nickname=x"}, 1, "cards have 'Ana'");
    expectRefusal({"edit", "Nobody", "--set", "Nickname=x"}, 1, "no card has 'Nobody'");
    EXPECT_EQ(world.cards(), before);
}

TEST_F(ChangesTest, RemoveOnlyWhatIsNamedExactly)
{
    const auto id = world.json({"show", "Analund"})["id"].get<std::string>();
    done({"add", "--set", "First=BEN", "--set", "Last=Ék"});
    expectRefusal({"remove", "Lima"}, 1, "no card is called 'Lima'; it is in the cards:");
    expectRefusal({"remove", "Ana Lima", "Nobody"}, 1, "no card is called 'Nobody'");
    expectRefusal({"remove", "Ben Ek"}, 1, "2 cards are called 'Ben Ek'; say which by its id:");
    EXPECT_EQ(world.cards().size(), 6U);
    EXPECT_THAT(done({"remove", "ana lima", "Ana Lima"}).out,
        testing::MatchesRegex("Removed Ana Lima \\([0-9A-F]{8}\\)\n"));
    EXPECT_EQ(world.json({"remove", id.substr(0, 8), "chloe dubois"})["removed"].size(), 2U);
    EXPECT_EQ(names({"list", "--sort", "first"}), "Anvil Works, Ben Ek, BEN Ék");
}

} // namespace
