// What `roster search` finds by terms and rules, and how it says what it asks.
#include "tool/PeopleWorld.h"

namespace {

using namespace test;
using testing::HasSubstr;

using SearchTest = PeopleWorld;

TEST_F(SearchTest, FindsByTermsAndRules)
{
    done("group make Friends");
    done("group add Friends Lima Ek");
    for (const auto& [place, line, wanted] : lineCasesIn("searches.txt")) {
        SCOPED_TRACE(place + " " + line);
        const auto ended = world.tool("--json search " + line);
        EXPECT_EQ(namesIn(Json::parse(ended.out, nullptr, false)), wanted.empty() ? "" : wanted.front());
        EXPECT_EQ(ended.status, wanted.empty() ? 1 : 0) << ended.err;
    }
}

TEST_F(SearchTest, PrintsALineAPerson)
{
    EXPECT_THAT(done("search --where 'First = Ben'").out, testing::MatchesRegex("[0-9A-F]{8}  Ben Ek\n"));
}

TEST_F(SearchTest, ExplainsHowTheStoreIsAsked)
{
    const std::string text = done("search --explain --where 'Email;work contains works'").out;
    for (const char* part : {"element    ", "contains substring insensitive",
             "predicate  0 != SUBQUERY(emailAddresses, $rmo, ($rmo.address CONTAINS[c] \"works\")",
             "sql        SELECT ", "plan       "})
        EXPECT_THAT(text, HasSubstr(part));
    const Json json = world.json("search --explain ana");
    EXPECT_EQ(json["classes"][0]["class"], "ZRPerson");
    EXPECT_EQ(json["classes"][0]["predicate"], "contactIndex.stringForIndexing CONTAINS \"ana\"");
    // What the store cannot be asked says so.
    EXPECT_THAT(done("search --explain --where 'ZRPersonFlags has-bits 1'").out,
        HasSubstr("every record is looked at"));
}

} // namespace
