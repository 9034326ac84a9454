// Who is in the roster of these tests.
#include "tool/PeopleWorld.h"

#include <algorithm>

namespace test {

namespace {

constexpr char people[] =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lima;Ana;;;\r\nNICKNAME:Nia\r\n"
    "EMAIL;TYPE=HOME:ana@home.example\r\nEMAIL;TYPE=WORK:lima@works.example\r\n"
    "TEL;TYPE=HOME:+49 (0)30 12-34 56\r\nBDAY:1970-05-01\r\n"
    "ADR;TYPE=HOME:;;Rua 1;Porto;;4000;Portugal\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Ek;Ben;;;\r\nEMAIL;TYPE=WORK:anaesthesia@ek.example\r\n"
    "NOTE:Met Ana in Porto\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Dubois;Chloé;;;\r\n"
    "EMAIL;TYPE=WORK:chloe@dubois.example\r\nTITLE:Banana seller\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Analund;Dan;;;\r\n"
    "EMAIL;TYPE=HOME:dan@analund.example\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;;;;\r\nORG:Anvil Works\r\nX-ZRShowAs:COMPANY\r\n"
    "TEL;TYPE=WORK:555 0199\r\nEND:VCARD\r\n";

} // namespace

void PeopleWorld::SetUp() { done({"import", world.write("people.vcf", people)}); }

std::string PeopleWorld::namesIn(const Json& records)
{
    std::string text;
    for (const auto& record : records)
        text += (text.empty() ? "" : ", ") + record.at("name").get<std::string>();
    return text;
}

Ended PeopleWorld::done(const std::vector<std::string>& words) const
{
    auto ended = world.tool(words);
    EXPECT_EQ(ended.status, 0) << testing::PrintToString(words) << "\n" << ended.out << ended.err;
    return ended;
}

void PeopleWorld::expectRefusal(
    const std::vector<std::string>& words, int status, const std::string& text) const
{
    const auto ended = world.tool(words);
    SCOPED_TRACE(testing::PrintToString(words) + "\n" + ended.out + ended.err);
    EXPECT_EQ(ended.status, status);
    EXPECT_EQ(ended.out, "");
    EXPECT_THAT(ended.err, testing::HasSubstr(text));
    EXPECT_EQ(std::ranges::count(ended.err, '\n'), 1);
}

} // namespace test
