// What each property of a card becomes.
#include "CardText.h"
#include "platform/run/Log.h"

#include <gtest/gtest.h>

#include <vector>

using namespace cardtext;

namespace {

struct Case {
    std::string lines;
    std::string expected;
};

void expectAll(
    const std::vector<Case>& cases, const VCardReaderContext& context = VCardReaderContext::standard())
{
    for (const auto& [lines, expected] : cases)
        EXPECT_EQ(read(card(lines), context), expected) << testing::PrintToString(lines);
}

TEST(Handlers, OfNames)
{
    expectAll({
        {"N:Lima;Ana;Rosa;Dr.;Jr.\n", "First=Ana\nLast=Lima\nMiddle=Rosa\nSuffix=Jr.\nTitle=Dr."},
        {"n:Lima;;;;\n", "Last=Lima"},
        {"N:Lima\n", "Last=Lima"},
        {"N:Lima;Ana;Rosa;Dr.;Jr.;more;and more\n",
            "First=Ana\nLast=Lima\nMiddle=Rosa\nSuffix=Jr.\nTitle=Dr."},
        {"N:Li\\;ma;A\\,na\n", "First=A,na\nLast=Li;ma"},
        {"N:Lima;Ana\nN:Ek;Bo\n", "First=Bo\nLast=Ek"},
        // The formatted name counts only when there is no other.
        {"FN:Ana Lima\n", "Last=Ana Lima"},
        {"FN:Ana Lima\nN:Lima;Ana\n", "First=Ana\nLast=Lima"},
        {"FN:Ana Lima\nORG:Acme\n", "Organization=Acme"},
        {"N:;;;;\nFN:Ana Lima\n", ""},
        {"N:\nFN:Ana Lima\n", ""},
        {"N;CHARSET=ISO-8859-1:\xE9\nFN:Ana\n", "Last=é"},
        {"N;CHARSET=x:a\nFN:Ana\n", "Last=Ana"},
        {"FN:\n", ""},
        {"NICKNAME:Nan\n", "Nickname=Nan"},
        {"X-MAIDENNAME:Ek\n", "MaidenName=Ek"},
        {"X-MAIDENNAME:Ek;Ny\n", "MaidenName=Ek\nNote=X-MAIDENNAME: Ny"},
        {"X-PHONETIC-FIRST-NAME:A\nX-PHONETIC-MIDDLE-NAME:B\nX-PHONETIC-LAST-NAME:C\n",
            "FirstPhonetic=A\nLastPhonetic=C\nMiddlePhonetic=B"},
        {"X-PHONETIC-FIRST-NAME:\nTITLE:\n", ""},
        {"TITLE:Clerk\n", "JobTitle=Clerk"},
        {"ORG:Acme;Sales;North\n", "Organization=Acme\nZRDepartment=Sales"},
        {"ORG:;Sales\n", "ZRDepartment=Sales"},
        {"ORG:Acme;\n", "Organization=Acme"},
    });
}

TEST(Handlers, OfNotesAndUnknownLines)
{
    expectAll({
        {"NOTE:one\\ntwo\n", "Note=one\ntwo"},
        {"NOTE:one\nNOTE:two\n", "Note=two"},
        {"NOTE:one;two\n", "Note=one"},
        {"NOTE:\n", ""},
        // What comes of an unknown name depends on its length.
        {"X:v\n", ""},
        {"XX:v\n", ""},
        {"QQQ:v\n", "Note=QQQ: v"},
        {"QQQX:v\n", ""},
        {"QQQXX:v\n", "Note=QQQXX: v"},
        {"QQQQQQ:v\n", "Note=QQQQQQ: v"},
        {"QQQQQQX:v\n", ""},
        {"QQQQQQXX:v\n", ""},
        {"QQQQQQQQQ:v\n", "Note=QQQQQQQQQ: v"},
        {"X-SOMETHING-VERY-LONG-INDEED:v;w\n", "Note=X-SOMETHING-VERY-LONG-INDEED: v"},
        {"item1.X-a.b-c:v\n", "Note=b-c: v"},
        {"item1.X-ABC:v\n", "Note=X-ABC: v"},
        {"QQQ:\nYYY: \n", ""},
        {"NOTE:n\nQQQ:1\nyyy;TYPE=HOME:2\n", "Note=n\nQQQ: 1\nyyy: 2"},
        {"QQQ:1\nNOTE:n\n", "Note=n\nQQQ: 1"},
        // Some say nothing to a person.
        {"LOGO:1\nCATEGORIES:2\nSOUND:3\nlabel:4\nPRODID:5\nSORT-STRING:6\nUID:7\nREV:8\n", ""},
        {"GEO:1;2\nROLE:Boss\nAGENT:x\n", "Note=GEO: 1\nAGENT: x"},
    });
}

TEST(Handlers, OfTelephones)
{
    std::vector<Case> cases = {
        {"TEL:1;2\n", "Phone=[Other=1, Other=2]"},
        {"TEL;HOME:1;;2\n", "Phone=[Home=1, Home=2]"},
        {"TEL:\n", ""},
        {"TEL;TYPE=pref:1\nTEL;TYPE=WORK:2\n", "Phone=[Other=1, Work=2]"},
    };
    const std::pair<const char*, const char*> labels[] = {{"HOME", "Home"}, {"WORK", "Work"},
        {"FAX", "WorkFAX"}, {"HOME,FAX", "HomeFAX"}, {"FAX,WORK", "WorkFAX"}, {"WORK,HOME", "Home"},
        {"WORK,HOME,FAX", "HomeFAX"}, {"HOME,HOME,FAX", "HomeFAX"}, {"MAIN,HOME", "Main"},
        {"HOME,CELL", "Mobile"}, {"FAX,pager,CELL", "Pager"}, {"VOICE", "Other"}, {"HOMES", "Other"}};
    for (const auto& [types, label] : labels)
        cases.push_back({"TEL;TYPE=" + std::string(types) + ":1\n", "Phone=[" + std::string(label) + "=1]"});
    expectAll(cases);
}

TEST(Handlers, OfAddressesInTheNet)
{
    expectAll({
        {"EMAIL:a@example.com\n", "Email=[Work=a@example.com]"},
        {"EMAIL;HOME:a@example.com;b@example.com\n", "Email=[Home=a@example.com, Home=b@example.com]"},
        {"EMAIL;TYPE=INTERNET,WORK,HOME:a\n", "Email=[Work=a]"},
        {"EMAIL;TYPE=home;WORK:a\n", "Email=[Home=a]"},
        {"EMAIL:\n", ""},
        {"X-AIM;HOME:a\nX-MSN:b\nX-ICQ:c\nX-JABBER:d\nX-YAHOO:e\n",
            "AIMInstant=[Home=a]\nICQInstant=[Work=c]\nJabberInstant=[Work=d]\nMSNInstant=[Work=b]\n"
            "YahooInstant=[Work=e]"},
        // One address under two names is one; behind a repeated one nothing of the line is taken.
        {"X-YAHOO:e\nX-YAHOO-ID:e\n", "YahooInstant=[Work=e]"},
        {"X-AIM:a;b;a;c\nX-AIM:d\n", "AIMInstant=[Work=a, Work=b, Work=d]"},
        {"X-AIM:\nX-AIM:a\n", "AIMInstant=[Work=a]"},
        {"URL:http://example.com/?a;b\n", "URLs=[HomePage=http://example.com/?a;b]"},
        {"URL;WORK:http://example.com/a b\n", "URLs=[Work=http://example.com/a%20b]"},
        {"URL:http://example.com/ü%20x\n", "URLs=[HomePage=http://example.com/%C3%BC%20x]"},
        {"URL:\nURL: \n", ""},
        {"CALURI:http://example.com/a;b\n", "calendarURIs=[Work=http://example.com/a;b]"},
        {"CALURI;HOME:\n", ""},
    });
}

TEST(Handlers, OfPostalAddresses)
{
    expectAll({
        {"ADR;HOME:Box 1;Back;2 Elm St;Town;CA;90001;Utopia\n",
            "Address=[Home={City=Town, Country=Utopia, CountryCode=us, State=CA, Street=Box 1\nBack\n2 Elm "
            "St, "
            "ZIP=90001}]"},
        {"ADR:;;2 Elm St;;;;\n", "Address=[Work={CountryCode=us, Street=2 Elm St}]"},
        {"ADR:;;2 Elm St\n", "Address=[Work={CountryCode=us, Street=2 Elm St}]"},
        {"ADR:;;;Town\n", "Address=[Work={City=Town, CountryCode=us, Street=}]"},
        // Fewer than three fields have no street, and so no address comes of them.
        {"ADR:Box 1;Back\n", ""},
        {"ADR:2 Elm St\n", ""},
        {"ADR:;;a;b;c;d;e;f;g\n",
            "Address=[Work={City=b, Country=e, CountryCode=us, State=c, Street=a, ZIP=d}]"},
        {"ADD;HOME:2 Elm St;Back;Town;CA;90001;Utopia\n",
            "Address=[Home={City=Town, Country=Utopia, State=CA, Street=2 Elm St\nBack, ZIP=90001}]"},
        {"ADD:2 Elm St\n", ""},
        {"ADD:2 Elm St;\n", "Address=[Work={Street=2 Elm St}]"},
        {"item1.ADR:;;a\nitem1.X-ZRADR:de\n", "Address=[Work={CountryCode=de, Street=a}]"},
        {"item1.X-ZRADR:de;fr\nitem1.ADR:;;a\nitem1.X-ZRLabel:Barn\n",
            "Address=[Barn={CountryCode=de, Street=a}]"},
        {"item1.ADD:a;\nitem1.X-ZRADR:de\nitem1.X-ZRLabel:Barn\n", "Address=[Work={Street=a}]"},
        {"item1.ADR:;;a\nitem2.X-ZRADR:de\n", "Address=[Work={CountryCode=us, Street=a}]"},
    });
}

TEST(Handlers, OfLabels)
{
    expectAll({
        {"item1.TEL;HOME:1\nitem1.X-ZRLabel:Boat house\n", "Phone=[Boat house=1]"},
        {"item1.X-ZRLABEL:Boat house\nitem1.TEL;HOME:1\n", "Phone=[Boat house=1]"},
        {"item1.TEL:1\nitem1.X-ZRLabel:_$!<Other>!$_\n", "Phone=[Other=1]"},
        {"item1.TEL;HOME:1\nitem1.X-ZRLabel:\n", "Phone=[Home=1]"},
        {"item1.TEL;HOME:1\nX-ZRLabel:Boat\n", "Phone=[Home=1]"},
        {"item1.TEL;HOME:1\nitem1.X-ZRLabel:A\nitem1.X-ZRLabel:B\n", "Phone=[B=1]"},
        {"a.b.TEL;HOME:1\nb.X-ZRLabel:X\na.X-ZRLabel:Y\n", "Phone=[Home=1]"},
        {"item1.X-ZRDATE:1970-05-01\nitem1.X-ZRLabel:First sail\n", "ZRDate=[First sail=@10411200]"},
        {"item1.X-ZRRELATEDNAMES:Bo\nitem1.X-ZRLabel:_$!<Brother>!$_\n", "ZRRelatedNames=[Brother=Bo]"},
        {"X-ZRRELATEDNAMES:Bo\nX-ZRRELATEDNAMES:\n", "ZRRelatedNames=[Other=Bo]"},
        {"item1.URL;HOME:x\nitem1.X-ZRLabel:Blog\n", "URLs=[Blog=x]"},
        {"item1.X-AIM:x\nitem1.X-ZRLabel:Play\n", "AIMInstant=[Play=x]"},
        {"item1.CALURI:x\nitem1.X-ZRLabel:Club\n", "calendarURIs=[Club=x]"},
    });
}

TEST(Handlers, OfDates)
{
    expectAll({
        {"BDAY:19700501\n", "Birthday=@10411200"},
        {"BDAY:1970-05-01\n", "Birthday=@10411200"},
        {"BDAY:-1970-05-01\n", "Birthday=@10411200"},
        {"BDAY:1970-05-01T01:00:00Z\n", "Birthday=@10371600"},
        {"BDAY:Fri, May 1, 1970\n", "Birthday=@10411200"},
        {"BDAY:\nBDAY:-\nBDAY:soon\nBDAY:1970-99-01\nBDAY:never, ever\n", ""},
        {"BDAY:1970-05-01\nBDAY:bad\n", "Birthday=@10411200"},
        {"X-ZRDATE:19700501;1971-05-01\n", "ZRDate=[Other=@10411200]"},
        {"X-ZRDATE:-19700501\nX-ZRDATE:bad\nX-ZRDATE:\n", "ZRDate=[Other=@10411200]"},
        {"X-ZRDATE:Fri, May 1, 1970\n", ""},
    });
}

TEST(Handlers, OfFlags)
{
    expectAll({
        {"X-ZRShowAs:COMPANY\n", "ZRPersonFlags=1"},
        {"X-ZRShowAs:company;x\n", "ZRPersonFlags=1"},
        {"X-ZRShowAs:PERSON\nX-ZRShowAs:\n", ""},
        {"X-ZROrder:LAST\n", "ZRPersonFlags=16"},
        {"X-ZROrder:FIRST\n", "ZRPersonFlags=0"},
        {"X-ZRShowAs:COMPANY\nX-ZROrder:LAST\n", "ZRPersonFlags=17"},
        {"X-ZROrder:LAST\nX-ZROrder:FIRST\n", "ZRPersonFlags=16"},
        {"X-ZROrder:\n", ""},
    });
    struct LastNameFirst : VCardReaderContext {
        std::int64_t defaultNameOrdering() const override { return 16; }
        std::string defaultCountryCode() const override { return "jp"; }
    };
    expectAll({{"X-ZROrder:LAST\n", "ZRPersonFlags=0"}, {"X-ZROrder:FIRST\n", "ZRPersonFlags=32"},
                  {"ADR:;;a\n", "Address=[Work={CountryCode=jp, Street=a}]"}},
        LastNameFirst());
}

TEST(Handlers, OfPicturesAndTemporaryValues)
{
    struct WithPictures : VCardReaderContext {
        platform::Value builtInPicture(std::string_view name) const override
        {
            return name == "Parrot" ? platform::Value::data("TIFF") : platform::Value();
        }
    };
    const std::pair<std::string, std::string> cases[] = {
        {"PHOTO;BASE64:QUJD\n REVG\n", "ABCDEF"},
        {"PHOTO;ENCODING=b;TYPE=JPEG:QUJD\n", "ABC"},
        {"PHOTO;VALUE=uri:http://example.com/a.jpg\n", ""},
        {"PHOTO;BASE64:QUJD\nPHOTO:x\n", ""},
        {"X-ZRPhoto:Parrot\n", "TIFF"},
        {"X-ZRPhoto:Whale\n", ""},
    };
    for (const auto& [lines, image] : cases) {
        Setter setter;
        const WithPictures context;
        EXPECT_TRUE(readInto(setter, card(lines), context)) << lines;
        EXPECT_EQ(setter.image.asBytes(), image) << lines;
        EXPECT_EQ(setter.text(), "") << lines;
    }
    Setter setter;
    readInto(setter, card("X-ZRUID:1234:ZRPerson\n"));
    EXPECT_EQ(setter.temporary, "ZRTempVCardUIDKey=1234:ZRPerson");
}

// Without a person's name an organization makes a company of the card.
TEST(Handlers, OfAnOrganizationMakeACompanyOfANamelessCard)
{
    for (const auto& [name, expected] :
        {std::pair<std::optional<std::string>, const char*>{"Ana", "Organization=Acme\nZRPersonFlags=16"},
            {"", "Organization=Acme\nZRPersonFlags=17"},
            {std::nullopt, "Organization=Acme\nZRPersonFlags=17"}}) {
        Setter setter;
        setter.name = name;
        readInto(setter, card("ORG:Acme\nX-ZROrder:LAST\n"));
        EXPECT_EQ(setter.text(), expected);
    }
}

TEST(Handlers, ThatFailLogAndLoseTheirLine)
{
    platform::LogCapture log;
    EXPECT_EQ(read(card("NICKNAME:\nTITLE:x\n")), "JobTitle=x");
    EXPECT_EQ(read("BEGIN:VCARD\nVERSION;CHARSET=x:\xE9\nVERSION:\xE9\nTITLE:x\nEND:VCARD\n"), "JobTitle=x");
    EXPECT_EQ(log.lines(),
        (std::vector<std::string>{
            "Malformed NICKNAME", "x is an invalid encoding", "Malformed VERSION", "Malformed VERSION"}));
}

TEST(Handlers, GiveEachEntryAnIdentifierAndTheFirstThePrimaryPlace)
{
    ZRVCardDictionaryValueSetter setter;
    readInto(setter, card("TEL:1\nTEL;TYPE=PREF:2\n"));
    const auto phones = setter.valueForProperty("Phone")["Phone"];
    const auto* entries = phones.as<ZRMultiValue>();
    ASSERT_TRUE(entries);
    EXPECT_EQ(entries->primaryIdentifier(), entries->identifierAtIndex(0));
    EXPECT_NE(entries->identifierAtIndex(0), entries->identifierAtIndex(1));
}

} // namespace
