// A line is read into its parts and written back.
#include "interchange/vcard/prepare/Property.h"

#include <gmock/gmock.h>

namespace vcard::prepare {
namespace {

TEST(Property, IsTakenApartAndPrintedAgain)
{
    const struct {
        const char* line;
        const char* parts;
        const char* printed;
        Transfer transfer = Transfer::plain;
    } cases[] = {
        {"FN:a:b", "|FN|a:b", "FN:a:b"},
        {"item1.TEL;TYPE=HOME,WORK;PREF:1", "item1|TEL|TYPE=HOME,WORK|=PREF|1",
            "item1.TEL;TYPE=HOME,WORK;PREF:1"},
        {" a . N ; X = 1 :v", "a|N|X=1|v", "a.N;X=1:v"},
        {"ADR;HOME;;:v", "|ADR|=HOME|v", "ADR;HOME:v"},
        // Quotes hide separators, when they are closed.
        {"ADR;LABEL=\"a;b:c\";X=1:v", "|ADR|LABEL=\"a;b:c\"|X=1|v", "ADR;LABEL=\"a;b:c\";X=1:v"},
        {"X;A=\"b;C=d:v", "|X|A=\"b|C=d|v", "X;A=\"b;C=d:v"},
        {"N;ENCODING=quoted-printable:v", "|N|ENCODING=quoted-printable|v", "N;ENCODING=quoted-printable:v",
            Transfer::quotedPrintable},
        {"N;Quoted-Printable:v", "|N|=Quoted-Printable|v", "N;Quoted-Printable:v", Transfer::quotedPrintable},
        {"PHOTO;encoding=\"b\":v", "|PHOTO|encoding=\"b\"|v", "PHOTO;encoding=\"b\":v", Transfer::base64},
        {"PHOTO;GIF;base64:v", "|PHOTO|=GIF|=base64|v", "PHOTO;GIF;base64:v", Transfer::base64},
        {"X;B:v", "|X|=B|v", "X;B:v"},
        {":", "||", ":"},
    };
    Property property;
    for (const auto& [line, expected, printed, transfer] : cases) {
        ASSERT_TRUE(property.parse(line)) << line;
        auto parts = std::string(property.group) + "|" + std::string(property.name) + "|";
        for (const auto& parameter : property.parameters)
            parts += std::string(parameter.name) + "=" + std::string(parameter.value) + "|";
        EXPECT_EQ(parts + std::string(property.value), expected) << line;
        EXPECT_EQ(property.text(), printed) << line;
        EXPECT_EQ(property.transfer, transfer) << line;
        EXPECT_EQ(declaredTransfer(std::string_view(line).substr(0, valueColon(line))), transfer) << line;
    }
    EXPECT_FALSE(property.parse("FN"));
}

TEST(Property, ForgetsTheLineBefore)
{
    Property property;
    property.parse("a.N;CHARSET=x;BASE64:v");
    property.parse("FN:w");
    EXPECT_EQ(property.text(), "FN:w");
    EXPECT_EQ(property.transfer, Transfer::plain);
    EXPECT_EQ(property.charset, "");
}

} // namespace
} // namespace vcard::prepare
