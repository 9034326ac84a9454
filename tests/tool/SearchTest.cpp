// What `roster search` finds by terms and rules, and how it says what it asks.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;
using testing::HasSubstr;

using SearchTest = PeopleWorld;

TEST_F(SearchTest, FindsByTermsAndRules)
{
    done({"group", "make", "Friends"});
    done({"group", "add", "Friends", "Lima", "Ek"});
    struct Case {
        std::vector<std::string> words;
        std::string names;
    };
    const Case cases[] = {
        {{"ana"}, "Dan Analund, Chloé Dubois, Ben Ek, Ana Lima"},
        {{"ana", "porto"}, "Ben Ek, Ana Lima"},
        {{"--sort", "first", "--limit", "1", "porto"}, "Ana Lima"},
        {{"--first", "a"}, "Ana Lima"},
        {{"--where", "First = ana"}, "Ana Lima"},
        {{"--where", "First == ana"}, ""},
        {{"--where", "first == Ana"}, "Ana Lima"},
        {{"--where", "Last ends-exactly is"}, "Chloé Dubois"},
        {{"--where", "Email;work contains works"}, "Ana Lima"},
        {{"--where", "Email;home contains works"}, ""},
        {{"--where", "Email;_$!<Work>!$_ begins anaes"}, "Ben Ek"},
        {{"--where", "Address.City = porto"}, "Ana Lima"},
        {{"--where", "Address.City;work = porto"}, ""},
        {{"--where", "Address contains porto"}, "Ana Lima"},
        {{"--where", "Note contains \"in Porto\""}, "Ben Ek"},
        {{"--where", "Card lacks ana"}, "Anvil Works"},
        {{"--where", "Birthday == 1970-05-01"}, "Ana Lima"},
        {{"--where", "Birthday < 1970-05-01"}, ""},
        {{"--where", "Birthday is present"}, "Ana Lima"},
        {{"--where", "Creation within 1 day", "--limit", "1"}, "Dan Analund"},
        {{"--where", "Creation not-within 1 day"}, ""},
        {{"--where", "Group member-of Friends"}, "Ben Ek, Ana Lima"},
        {{"--where", "Group not-member-of any", "--where", "Email is present"}, "Dan Analund, Chloé Dubois"},
        {{"--where", "ZRPersonFlags has-bits 1"}, "Anvil Works"},
        {{"--where", "First = Ben", "--where", "First = Dan"}, ""},
        {{"--any", "--where", "First = Ben", "--where", "First = Dan"}, "Dan Analund, Ben Ek"},
        {{"porto", "--any", "--where", "First = Ben", "--where", "First = Dan"}, "Ben Ek"},
    };
    for (const auto& [words, wanted] : cases) {
        SCOPED_TRACE(testing::PrintToString(words));
        std::vector<std::string> all{"--json", "search"};
        all.insert(all.end(), words.begin(), words.end());
        const auto ended = world.tool(all);
        EXPECT_EQ(namesIn(Json::parse(ended.out, nullptr, false)), wanted) << ended.out << ended.err;
        EXPECT_EQ(ended.status, wanted.empty() ? 1 : 0);
    }
}

TEST_F(SearchTest, PrintsALineAPerson)
{
    const auto ended = done({"search", "--where", "First = Ben"});
    EXPECT_THAT(ended.out, testing::MatchesRegex("[0-9A-F]{8}  Ben Ek\n"));
}

TEST_F(SearchTest, ExplainsHowTheStoreIsAsked)
{
    const std::string text = done({"search", "--explain", "--where", "Email;work contains works"}).out;
    for (const char* part : {"element    ", "contains substring insensitive",
             "predicate  0 != SUBQUERY(emailAddresses, $rmo, ($rmo.address CONTAINS[c] \"works\")",
             "sql        SELECT ", "plan       "})
        EXPECT_THAT(text, HasSubstr(part));
    const Json json = world.json({"search", "--explain", "ana"});
    EXPECT_EQ(json["classes"][0]["class"], "ZRPerson");
    EXPECT_EQ(json["classes"][0]["predicate"], "contactIndex.stringForIndexing CONTAINS \"ana\"");
    // What the store cannot be asked says so.
    EXPECT_THAT(done({"search", "--explain", "--where", "ZRPersonFlags has-bits 1"}).out,
        HasSubstr("every record is looked at"));
}

TEST_F(SearchTest, RefusesRulesThatMeanNothing)
{
    expectRefusal({"search"}, 2, "what to look for");
    expectRefusal({"search", "nobody"}, 1, "no card matches");
    expectRefusal({"search", "--where", "First"}, 2, "PROPERTY OPERATOR VALUE");
    expectRefusal({"search", "--where", "Shoe = 43"}, 2, "no property 'Shoe'");
    expectRefusal({"search", "--where", "Birthday = soon"}, 2, "'soon' is no day");
    expectRefusal({"search", "--where", "Creation within a while"}, 2, "'a while' is no interval");
    expectRefusal({"search", "--where", "Group member-of Nobody"}, 1, "no group 'Nobody'");
    expectRefusal({"search", "--where", "Group contains x"}, 2, "member-of");
    expectRefusal({"search", "--where", "First member-of x"}, 2, "only Group");
    expectRefusal({"search", "--where", "Card begins x"}, 2, "contains or lacks");
    expectRefusal({"search", "--where", "First is here"}, 2, "absent or present");
}

} // namespace
