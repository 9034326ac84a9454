// What a person looks like as a vCard: every byte of it, in both versions.
#include "core/ZRConstants.h"
#include "interchange/vcard/VCardCharsets.h"
#include "interchange/vcard/WriterWorld.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/text/Dates.h"

#include <gtest/gtest.h>

namespace test {
namespace {

using Properties = std::vector<std::pair<std::string_view, Value>>;

/// One card: what is set, and the lines between VERSION and the id or the end.
struct Case {
    const char* what;
    Properties properties;
    Lines version30, version21;
};

const std::vector<Case>& cases()
{
    static const auto* const all = new std::vector<Case>{
        {"nothing at all", {}, {"N:;;;;"}, {"N:;;;;"}},
        {"every part of a name",
            {{kZRFirstNameProperty, "Ana"}, {kZRLastNameProperty, "Lima"}, {kZRMiddleNameProperty, "Rita"},
                {kZRTitleProperty, "Dr."}, {kZRSuffixProperty, "Jr."}},
            {"N:Lima;Ana;Rita;Dr.;Jr.", "FN:Dr. Ana Rita Lima Jr."},
            {"N:Lima;Ana;Rita;Dr.;Jr.", "FN:Dr. Ana Rita Lima Jr."}},
        {"further names",
            {{kZRLastNameProperty, "Ito"}, {kZRNicknameProperty, "Ishi"}, {kZRMaidenNameProperty, "Sato"},
                {kZRFirstNamePhoneticProperty, "a"}, {kZRMiddleNamePhoneticProperty, "b"},
                {kZRLastNamePhoneticProperty, "c"}},
            {"N:Ito;;;;", "FN:Ito", "NICKNAME:Ishi", "X-MAIDENNAME:Sato", "X-PHONETIC-FIRST-NAME:a",
                "X-PHONETIC-MIDDLE-NAME:b", "X-PHONETIC-LAST-NAME:c"},
            {"N:Ito;;;;", "FN:Ito", "NICKNAME:Ishi", "X-MAIDENNAME:Sato", "X-PHONETIC-FIRST-NAME:a",
                "X-PHONETIC-MIDDLE-NAME:b", "X-PHONETIC-LAST-NAME:c"}},
        {"empty texts give no line",
            {{kZRNicknameProperty, ""}, {kZRMaidenNameProperty, ""}, {kZRJobTitleProperty, ""},
                {kZROrganizationProperty, ""}, {kZRDepartmentProperty, ""}},
            {"N:;;;;"}, {"N:;;;;"}},
        {"characters that mean something",
            {{kZRLastNameProperty, "a;b,c:d\\e"}, {kZRJobTitleProperty, "one\r\ntwo\rthree\nfour"}},
            {R"(N:a\;b\,c\:d\e;;;;)", R"(FN:a\;b\,c\:d\e)", R"(TITLE:one\n\ntwo\nthree\nfour)"},
            {R"(N:a\;b\,c\:d\e;;;;)", R"(FN:a\;b\,c\:d\e)", R"(TITLE:one\n\ntwo\nthree\nfour)"}},
        {"a company",
            {{kZROrganizationProperty, "Lima, Inc"}, {kZRDepartmentProperty, "R;D"},
                {kZRPersonFlags, Value(1)}},
            {"N:;;;;", R"(FN:Lima\, Inc)", R"(ORG:Lima\, Inc;R\;D)", "X-ZRShowAs:COMPANY"},
            {"N:;;;;", R"(FN:Lima\, Inc)", R"(ORG:Lima\, Inc;R\;D)"}},
        {"a department alone", {{kZRDepartmentProperty, "Sales"}}, {"N:;;;;", "ORG:;Sales"},
            {"N:;;;;", "ORG:;Sales"}},
        {"an empty organization alone is one", {{kZROrganizationProperty, ""}}, {"N:;;;;", "ORG:;"},
            {"N:;;;;", "ORG:;"}},
        {"the other order of names",
            {{kZRLastNameProperty, "Lima"}, {kZRFirstNameProperty, "Ana"}, {kZRPersonFlags, Value(16)}},
            {"N:Lima;Ana;;;", "FN:Lima Ana", "X-ZROrder:LAST"}, {"N:Lima;Ana;;;", "FN:Lima Ana"}},
        {"both orders, and a company without a name",
            {{kZRLastNameProperty, "Lima"}, {kZRPersonFlags, Value(1 + 16 + 32)}},
            {"N:Lima;;;;", "FN:Lima", "X-ZRShowAs:COMPANY", "X-ZROrder:FIRST"}, {"N:Lima;;;;", "FN:Lima"}},
        {"e-mail addresses, of which the second is the primary one",
            {{kZRLastNameProperty, "L"},
                {kZREmailProperty, multiValue({{"h@x", kZREmailHomeLabel}, {"w@x", kZREmailWorkLabel}}, 1)}},
            {"N:L;;;;", "FN:L", "EMAIL;type=INTERNET;type=HOME:h@x",
                "EMAIL;type=INTERNET;type=WORK;type=pref:w@x"},
            {"N:L;;;;", "FN:L", "EMAIL;INTERNET;HOME:h@x", "EMAIL;INTERNET;WORK:w@x"}},
        {"an e-mail address as the name", {{kZREmailProperty, multiValue({{"a@x", kZREmailHomeLabel}})}},
            {"N:;;;;", "FN:a@x", "EMAIL;type=INTERNET;type=HOME;type=pref:a@x"},
            {"N:;;;;", "FN:a@x", "EMAIL;INTERNET;HOME:a@x"}},
        {"labels without a type, built in and of one's own",
            {{kZRLastNameProperty, "L"},
                {kZREmailProperty, multiValue({{"o@x", kZROtherLabel}, {"c@x", "boat; work"}})}},
            {"N:L;;;;", "FN:L", "item1.EMAIL;type=INTERNET;type=pref:o@x", "item1.X-ZRLabel:_$!<Other>!$_",
                "item2.EMAIL;type=INTERNET:c@x", R"(item2.X-ZRLabel:boat\; work)"},
            {"N:L;;;;", "FN:L", "EMAIL;INTERNET:o@x", "EMAIL;INTERNET:c@x"}},
        {"telephones of every type",
            {{kZRLastNameProperty, "L"},
                {kZRPhoneProperty,
                    multiValue(
                        {{"1", kZRPhoneWorkLabel}, {"2", kZRPhoneHomeLabel}, {"3", kZRPhoneMobileLabel},
                            {"4", kZRPhoneMainLabel}, {"5", kZRPhoneWorkFAXLabel},
                            {"6", kZRPhoneHomeFAXLabel}, {"7", kZRPhonePagerLabel}},
                        4)}},
            {"N:L;;;;", "FN:L", "TEL;type=WORK:1", "TEL;type=HOME:2", "TEL;type=CELL:3", "TEL;type=MAIN:4",
                "TEL;type=WORK;type=FAX;type=pref:5", "TEL;type=HOME;type=FAX:6", "TEL;type=PAGER:7"},
            {"N:L;;;;", "FN:L", "TEL;WORK:1", "TEL;HOME:2", "TEL;CELL:3", "TEL;MAIN:4", "TEL;WORK;FAX:5",
                "TEL;HOME;FAX:6", "TEL;PAGER:7"}},
        {"a telephone with a label of one's own",
            {{kZRLastNameProperty, "L"}, {kZRPhoneProperty, multiValue({{"+1 555;9", "Boat"}})}},
            {"N:L;;;;", "FN:L", R"(item1.TEL;type=pref:+1 555\;9)", "item1.X-ZRLabel:Boat"},
            {"N:L;;;;", "FN:L", R"(TEL:+1 555\;9)"}},
        {"an address at home",
            {{kZRLastNameProperty, "L"},
                {kZRAddressProperty,
                    multiValue({{address({{"Street", "1, High Street"}, {"City", "Ayr"}, {"State", "KA"},
                                     {"ZIP", "KA7"}, {"Country", "Scotland"}, {"CountryCode", "gb"}}),
                        kZRAddressHomeLabel}})}},
            {"N:L;;;;", "FN:L", R"(item1.ADR;type=HOME;type=pref:;;1\, High Street;Ayr;KA;KA7;Scotland)",
                "item1.X-ZRADR:gb"},
            {"N:L;;;;", "FN:L", R"(ADR;HOME:;;1\, High Street;Ayr;KA;KA7;Scotland)"}},
        {"streets with line ends, and an address without one",
            {{kZRLastNameProperty, "L"},
                {kZRAddressProperty,
                    multiValue(
                        {{address({{"Street", "a\rb\rc"}, {"CountryCode", "de"}}), kZRAddressWorkLabel},
                            {address({{"Street", "a\nb"}, {"CountryCode", "de"}}), kZRAddressWorkLabel},
                            {address({{"Street", "a\r\nb"}, {"CountryCode", "de"}}), kZRAddressWorkLabel},
                            {address({{"City", "Ulm"}, {"CountryCode", "de"}}), kZRAddressWorkLabel}})}},
            {"N:L;;;;", "FN:L", R"(item1.ADR;type=WORK;type=pref:;a;b\nc;;;;)", "item1.X-ZRADR:de",
                R"(item2.ADR;type=WORK:;;a\nb;;;;)", "item2.X-ZRADR:de", R"(item3.ADR;type=WORK:;a;\nb;;;;)",
                "item3.X-ZRADR:de", "item4.ADR;type=WORK:;;;Ulm;;;", "item4.X-ZRADR:de"},
            {"N:L;;;;", "FN:L", R"(ADR;WORK:;a;b\nc;;;;)", R"(ADR;WORK:;;a\nb;;;;)", R"(ADR;WORK:;a;\nb;;;;)",
                "ADR;WORK:;;;Ulm;;;"}},
        {"numbers of groups run through the card",
            {{kZRLastNameProperty, "L"}, {kZREmailProperty, multiValue({{"a@x", "Boat"}})},
                {kZRAddressProperty,
                    multiValue({{address({{"City", "Ulm"}, {"CountryCode", "de"}}), kZRAddressHomeLabel},
                                   {address({{"City", "Bonn"}, {"CountryCode", "de"}}), "Barn"}},
                        1)},
                {kZRURLsProperty, multiValue({{"http://x", kZRHomePageLabel}})}},
            {"N:L;;;;", "FN:L", "item1.EMAIL;type=INTERNET;type=pref:a@x", "item1.X-ZRLabel:Boat",
                "item2.ADR;type=HOME:;;;Ulm;;;", "item2.X-ZRADR:de",
                "item3.ADR;type=HOME;type=pref:;;;Bonn;;;", "item3.X-ZRLabel:Barn", "item3.X-ZRADR:de",
                R"(item4.URL;type=pref:http\://x)", "item4.X-ZRLabel:_$!<HomePage>!$_"},
            {"N:L;;;;", "FN:L", "EMAIL;INTERNET:a@x", "ADR;HOME:;;;Ulm;;;", "ADR:;;;Bonn;;;",
                R"(URL;type=pref:http\://x)"}},
        {"URLs and calendars",
            {{kZRLastNameProperty, "L"},
                {kZRURLsProperty,
                    multiValue({{"http://x/?a;b", kZRWorkLabel}, {"http://y", kZRHomeLabel}}, 1)},
                {kZRCalendarURIsProperty, multiValue({{"http://c", kZRWorkLabel}})}},
            {"N:L;;;;", "FN:L", R"(URL;type=WORK:http\://x/?a\;b)", R"(URL;type=HOME;type=pref:http\://y)",
                R"(CALURI;type=WORK;type=pref:http\://c)"},
            {"N:L;;;;", "FN:L", R"(URL;type=WORK:http\://x/?a\;b)", R"(URL;type=HOME;type=pref:http\://y)"}},
        {"a birthday", {{kZRLastNameProperty, "L"}, {kZRBirthdayProperty, day(1970, 5, 1)}},
            {"N:L;;;;", "FN:L", "BDAY;value=date:1970-05-01"},
            {"N:L;;;;", "FN:L", "BDAY;value=date:1970-05-01"}},
        {"days before 1970 and in an early year",
            {{kZRLastNameProperty, "L"}, {kZRBirthdayProperty, day(1604, 2, 29)},
                {kZROtherDatesProperty,
                    multiValue({{day(33, 4, 3), kZRAnniversaryLabel}, {day(9999, 12, 31), "End"}})}},
            {"N:L;;;;", "FN:L", "BDAY;value=date:1604-02-29", "item1.X-ZRDATE;type=pref:0033-04-03",
                "item1.X-ZRLabel:_$!<Anniversary>!$_", "item2.X-ZRDATE:9999-12-31", "item2.X-ZRLabel:End"},
            {"N:L;;;;", "FN:L", "BDAY;value=date:1604-02-29", "X-ZRDATE;type=pref:0033-04-03",
                "X-ZRDATE:9999-12-31"}},
        {"messaging, where one service stands twice",
            {{kZRLastNameProperty, "L"}, {kZRICQInstantProperty, multiValue({{"5", kZRICQHomeLabel}})},
                {kZRYahooInstantProperty, multiValue({{"4", kZRYahooWorkLabel}, {"4b", "Boat"}})},
                {kZRMSNInstantProperty, multiValue({{"3", kZRMSNHomeLabel}})},
                {kZRJabberInstantProperty, multiValue({{"2", kZRJabberHomeLabel}})},
                {kZRAIMInstantProperty, multiValue({{"1", kZRAIMHomeLabel}})}},
            {"N:L;;;;", "FN:L", "X-AIM;type=HOME;type=pref:1", "X-JABBER;type=HOME;type=pref:2",
                "X-MSN;type=HOME;type=pref:3", "X-YAHOO;type=WORK;type=pref:4", "item1.X-YAHOO:4b",
                "item1.X-ZRLabel:Boat", "X-YAHOO-ID;type=WORK;type=pref:4", "item2.X-YAHOO-ID:4b",
                "item2.X-ZRLabel:Boat", "X-ICQ;type=HOME;type=pref:5"},
            {"N:L;;;;", "FN:L", "X-AIM;type=HOME;type=pref:1", "X-JABBER;type=HOME;type=pref:2",
                "X-MSN;type=HOME;type=pref:3", "X-YAHOO;type=WORK;type=pref:4", "X-YAHOO:4b",
                "X-YAHOO-ID;type=WORK;type=pref:4", "X-YAHOO-ID:4b", "X-ICQ;type=HOME;type=pref:5"}},
        {"related names",
            {{kZRLastNameProperty, "L"},
                {kZRRelatedNamesProperty, multiValue({{"Eva", kZRMotherLabel}, {"Bo", kZRHomeLabel}})}},
            {"N:L;;;;", "FN:L", "item1.X-ZRRELATEDNAMES;type=pref:Eva", "item1.X-ZRLabel:_$!<Mother>!$_",
                "X-ZRRELATEDNAMES;type=HOME:Bo"},
            {"N:L;;;;", "FN:L", "X-ZRRELATEDNAMES;type=pref:Eva", "X-ZRRELATEDNAMES;type=HOME:Bo"}},
        {"a value longer than any line",
            {{kZRLastNameProperty, "L"}, {kZRJobTitleProperty, std::string(300, 'x')}},
            {"N:L;;;;", "FN:L", "TITLE:" + std::string(300, 'x')},
            {"N:L;;;;", "FN:L", "TITLE:" + std::string(300, 'x')}},
        {"text beyond ASCII",
            {{kZRLastNameProperty, "Müller"}, {kZRFirstNameProperty, "Łucja"},
                {kZRAIMInstantProperty, multiValue({{"für 2€", kZRAIMHomeLabel}})}},
            {"N:Müller;Łucja;;;", "FN:Łucja Müller", "X-AIM;type=HOME;type=pref:für 2€"},
            {"N;CHARSET=UTF-8:Müller;Łucja;;;", "FN;CHARSET=UTF-8:Łucja Müller",
                "X-AIM;type=HOME;type=pref;CHARSET=windows-1252:f\xFCr 2\x80"}},
    };
    return *all;
}

std::string version30(const std::string& body, const ZRPerson& person)
{
    std::string id = person.uniqueId();
    id.insert(id.find(':'), "\\");
    return "BEGIN:VCARD\r\nVERSION:3.0\r\n" + body + "X-ZRUID:" + id + "\r\nEND:VCARD\r\n";
}

std::string version21(const std::string& body)
{
    return "BEGIN:VCARD\r\nVERSION:2.1\r\n" + body + "END:VCARD\r\n";
}

class Writer : public testing::Test {
protected:
    void SetUp() override
    {
        ZRRoster::setShouldCreateEmptyDatabase(true);
        roster = ZRRoster::emptyMemoryBackedRoster();
        ASSERT_TRUE(roster);
        preferences->setObject("windows-1252", kZR21vCardEncoding);
    }
    void TearDown() override
    {
        for (const char* key : {kZR21vCardEncoding, "ZRIncludePhotosInVCard", "ZRIncludeNotesInVCard",
                 "ZRPrivateVCardFieldsEnabled", "ZRPrivateVCardFields"})
            preferences->removeObjectForKey(key);
    }

    Ref<ZRRoster> roster;
    const Ref<ZRUserDefaults> preferences = ZRUserDefaults::rosterPreferences();
};

TEST_F(Writer, WritesEveryByteOfBothVersions)
{
    for (const Case& card : cases()) {
        const auto written = person(roster, card.properties);
        EXPECT_EQ(written->_vCardRepresentationAsString(), version30(joined(card.version30), *written))
            << card.what;
        EXPECT_EQ(written->_21vCardRepresentationAsData(), version21(joined(card.version21))) << card.what;
    }
}

// Lines of single values prefer the user's set, lines of entries ISO Latin 1.
TEST(WriterCharsets, AreTriedInTwoOrders)
{
    const struct {
        std::string preferred, text;
        std::string ofLine, lineBytes, ofData, dataBytes;
    } cases[] = {
        {"windows-1252", "plain", "", "plain", "", "plain"},
        {"windows-1252", "é", "windows-1252", "\xE9", "LATIN1", "\xE9"},
        {"windows-1252", "€", "windows-1252", "\x80", "windows-1252", "\x80"},
        {"koi8-r", "Я", "koi8-r", "\xF1", "koi8-r", "\xF1"},
        {"koi8-r", "é", "LATIN1", "\xE9", "LATIN1", "\xE9"},
        {"koi8-r", "€", "QUILLONROMAN", "\xDB", "QUILLONROMAN", "\xDB"},
        {"", "π", "QUILLONROMAN", "\xB9", "QUILLONROMAN", "\xB9"},
        {"windows-1252", "张", "UTF-8", "张", "UTF-8", "张"},
        {"Shift_JIS", "日", "Shift_JIS", "\x93\xFA", "Shift_JIS", "\x93\xFA"},
        {"Shift_JIS", "表", "UTF-8", "表", "UTF-8", "表"},
        {"no such set", "é", "LATIN1", "\xE9", "LATIN1", "\xE9"},
    };
    for (const auto& [preferred, text, ofLine, lineBytes, ofData, dataBytes] : cases) {
        std::string line = "TITLE";
        encodedLineForValue(line, text, preferred);
        EXPECT_EQ(line, "TITLE" + (ofLine.empty() ? "" : ";CHARSET=" + ofLine) + ":" + lineBytes + "\r\n")
            << preferred << ": " << text;
        std::optional<std::string> name;
        EXPECT_EQ(encodedDataForValue(text, name, preferred), dataBytes) << preferred << ": " << text;
        EXPECT_EQ(name.value_or(""), ofData) << preferred << ": " << text;
    }
}

} // namespace
} // namespace test
