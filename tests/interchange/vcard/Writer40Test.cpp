// What a person and a group look like as vCard 4.0: every byte of it.
#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "core/ZRGroup.h"
#include "interchange/vcard/Line40.h"
#include "interchange/vcard/Names40.h"
#include "interchange/vcard/VCard40.h"
#include "interchange/vcard/WriterWorld.h"
#include "platform/text/Dates.h"
#include "platform/text/Utf.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// What is set, and the lines between VERSION and PRODID.
struct Case {
    const char* what;
    std::vector<std::pair<std::string_view, Value>> properties;
    Lines lines;
};

const std::vector<Case>& cases()
{
    static const auto* const all = new std::vector<Case>{
        {"nothing at all: FN is there", {}, {"FN:", "N:;;;;"}},
        {"every name",
            {{kZRFirstNameProperty, "Ana"}, {kZRLastNameProperty, "Lima"}, {kZRMiddleNameProperty, "Rita"},
                {kZRTitleProperty, "Dr."}, {kZRSuffixProperty, "Jr."}, {kZRNicknameProperty, "A, B"},
                {kZRMaidenNameProperty, "Sá"}, {kZRFirstNamePhoneticProperty, "a"},
                {kZRLastNamePhoneticProperty, "l"}},
            {"FN:Dr. Ana Rita Lima Jr.", "N:Lima;Ana;Rita;Dr.;Jr.", "NICKNAME:A\\, B", "X-MAIDENNAME:Sá",
                "X-PHONETIC-FIRST-NAME:a", "X-PHONETIC-LAST-NAME:l"}},
        {"what has a meaning is escaped: a colon has none, a semicolon only between fields",
            {{kZRLastNameProperty, "a;b,c:d\\e"}, {kZRJobTitleProperty, "1\r\n2\r3\n4"}},
            {R"(FN:a;b\,c:d\\e)", R"(N:a\;b\,c:d\\e;;;;)", R"(TITLE:1\n2\n3\n4)"}},
        {"a company",
            {{kZROrganizationProperty, "Lima, Inc"}, {kZRDepartmentProperty, "R;D"},
                {kZRPersonFlags, Value(1)}},
            {R"(FN:Lima\, Inc)", "N:;;;;", R"(ORG:Lima\, Inc;R\;D)", "KIND:org"}},
        {"an organization alone, and the other order",
            {{kZRLastNameProperty, "L"}, {kZROrganizationProperty, "Acme"}, {kZRPersonFlags, Value(16)}},
            {"FN:L", "N:L;;;;", "ORG:Acme", "X-ZROrder:LAST"}},
        {"telephones: types, the primary one, a label of one's own",
            {{kZRLastNameProperty, "L"},
                {kZRPhoneProperty,
                    multiValue(
                        {{"555 1", kZRPhoneHomeLabel}, {"+1-555-2", kZRPhoneWorkLabel},
                            {"+1 555 3", kZRPhoneMobileLabel}, {"+15554 ext. 12", kZRPhoneHomeFAXLabel},
                            {"5", kZRPhoneWorkFAXLabel}, {"+6 ext. x", kZRPhonePagerLabel},
                            {"7", kZRPhoneMainLabel}, {"+", "Boat; two"}, {"", kZRPhoneHomeLabel}},
                        1)}},
            {"FN:L", "N:L;;;;", "TEL;TYPE=home:555 1", "TEL;TYPE=work;PREF=1:+1-555-2",
                "TEL;TYPE=cell:+1 555 3", "TEL;TYPE=home,fax:+15554 ext. 12", "TEL;TYPE=work,fax:5",
                "TEL;TYPE=pager:+6 ext. x", "TEL;TYPE=main:7", "item1.TEL:+",
                R"(item1.X-ZRLabel:Boat\; two)"}},
        {"e-mail, addresses, and one row of groups for all",
            {{kZRLastNameProperty, "L"},
                {kZREmailProperty, multiValue({{"a,b@x", kZREmailHomeLabel}, {"c@x", "Boat"}})},
                {kZRAddressProperty,
                    multiValue({{address({{"Street", "1, High St\r\nRear"}, {"City", "Ayr"}, {"State", "KA"},
                                     {"ZIP", "KA7"}, {"Country", "Scotland"}, {"CountryCode", "gb"}}),
                                    kZRAddressWorkLabel},
                        {address({{"City", "Ulm"}, {"CountryCode", "de"}}), "Barn"}})}},
            {"FN:L", "N:L;;;;", R"(EMAIL;TYPE=home;PREF=1:a\,b@x)", "item1.EMAIL:c@x", "item1.X-ZRLabel:Boat",
                R"(item2.ADR;TYPE=work;PREF=1:;;1\, High St\nRear;Ayr;KA;KA7;Scotland)", "item2.X-ZRADR:gb",
                "item3.ADR:;;;Ulm;;;", "item3.X-ZRLabel:Barn", "item3.X-ZRADR:de"}},
        {"URIs stand as they are, or as such",
            {{kZRLastNameProperty, "L"},
                {kZRURLsProperty,
                    multiValue({{" http://x/?a;b,c", kZRWorkLabel}, {"http://y/z w", kZRHomePageLabel}})},
                {kZRCalendarURIsProperty, multiValue({{"http://c", kZRHomeLabel}})}},
            {"FN:L", "N:L;;;;", "URL;TYPE=work;PREF=1:http://x/?a;b,c", "URL:http://y/z%20w",
                "CALURI;TYPE=home;PREF=1:http://c"}},
        {"messaging by scheme",
            {{kZRLastNameProperty, "L"}, {kZRICQInstantProperty, multiValue({{"5", kZRICQHomeLabel}})},
                {kZRYahooInstantProperty, multiValue({{"4 ü", kZRYahooWorkLabel}})},
                {kZRMSNInstantProperty, multiValue({{"3", kZRMSNHomeLabel}})},
                {kZRJabberInstantProperty, multiValue({{"a@b/c:d", "Boat"}})},
                {kZRAIMInstantProperty, multiValue({{"1", kZRAIMHomeLabel}})}},
            {"FN:L", "N:L;;;;", "IMPP;TYPE=home;PREF=1:aim:1", "item1.IMPP;PREF=1:xmpp:a@b%2Fc%3Ad",
                "item1.X-ZRLabel:Boat", "IMPP;TYPE=home;PREF=1:msnim:3",
                "IMPP;TYPE=work;PREF=1:ymsgr:4%20%C3%BC", "IMPP;TYPE=home;PREF=1:icq:5"}},
        {"days in the basic form, of which one is the anniversary",
            {{kZRLastNameProperty, "L"}, {kZRBirthdayProperty, day(1604, 2, 29)},
                {kZROtherDatesProperty,
                    multiValue({{day(33, 4, 3), "End"}, {day(2001, 2, 3), kZRAnniversaryLabel},
                        {day(2002, 2, 3), kZRAnniversaryLabel}})}},
            {"FN:L", "N:L;;;;", "BDAY:16040229", "item1.X-ZRDATE;PREF=1:00330403", "item1.X-ZRLabel:End",
                "ANNIVERSARY:20010203", "item2.X-ZRDATE:20020203", "item2.X-ZRLabel:_$!<Anniversary>!$_"}},
        {"related names: a type, a type that says less than the label, none",
            {{kZRLastNameProperty, "L"},
                {kZRRelatedNamesProperty,
                    multiValue(
                        {{"Ed, B", kZRSpouseLabel}, {"Eva", kZRMotherLabel}, {"Bo", kZRManagerLabel}})}},
            {"FN:L", "N:L;;;;", R"(RELATED;TYPE=spouse;PREF=1;VALUE=text:Ed\, B)",
                "item1.RELATED;TYPE=parent;VALUE=text:Eva", "item1.X-ZRLabel:_$!<Mother>!$_",
                "item2.RELATED;VALUE=text:Bo", "item2.X-ZRLabel:_$!<Manager>!$_"}},
    };
    return *all;
}

std::string urn(const ZRRecord& record)
{
    std::string id = record.uniqueId().substr(0, 36);
    for (char& c : id)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return "urn:uuid:" + id;
}

std::string books(const ZRRecord& record)
{
    std::string rev = platform::iso8601(record.valueForProperty(kZRModificationDateProperty).asDate());
    std::erase_if(rev, [](char c) { return c == '-' || c == ':'; });
    return "PRODID:-//Roster//Roster " + ZRFrameworkBundle().version() + "//EN\r\nUID:" + urn(record)
        + "\r\nREV:" + rev + "\r\nEND:VCARD\r\n";
}

std::string version40(const ZRPerson& person, ZRVCardOptions options = 0)
{
    std::string card;
    zrAppendVCard40(person, card, options);
    return card;
}

class Writer40 : public testing::Test {
protected:
    void SetUp() override
    {
        roster = openShared();
        roster->setDefaultCountryCode("us");
    }
    void TearDown() override { removeAllRecords(*roster); }

    Ref<ZRRoster> roster;
};

TEST_F(Writer40, WritesEveryByte)
{
    for (const Case& card : cases()) {
        const auto written = person(roster, card.properties);
        roster->save();
        EXPECT_EQ(
            version40(*written), "BEGIN:VCARD\r\nVERSION:4.0\r\n" + joined(card.lines) + books(*written))
            << card.what;
    }
}

TEST_F(Writer40, HasNotesAndPicturesThatAreWantedAndTheGroupsOfThePerson)
{
    const auto ana = person(roster, {{kZRLastNameProperty, "Lima"}, {kZRNoteProperty, "one\ntwo"}});
    ana->setImageData(Value::data("\x89PNG\r\n\x1A\n"));
    for (const char* const name : {"Sea, boats; more", "", "Ärzte"}) {
        const auto group = ZRGroup::initWithRoster(roster);
        group->setValue(name, kZRGroupNameProperty);
        group->addMember(*ana);
    }
    roster->save();
    const std::string bare = version40(*ana), full = version40(*ana, kZRVCardWithNote | kZRVCardWithPhoto);
    EXPECT_THAT(bare, Not(testing::AnyOf(HasSubstr("NOTE"), HasSubstr("PHOTO"))));
    EXPECT_THAT(full,
        HasSubstr("NOTE:one\\ntwo\r\nPHOTO:data:image/png;base64,iVBORw0KGgo=\r\n"
                  "CATEGORIES:Sea\\, boats; more,Ärzte\r\n"));
    ana->setImageData(Value());
}

TEST_F(Writer40, KeepsPrivateFieldsOfMeToItself)
{
    const auto phones = multiValue({{"1", kZRPhoneHomeLabel}, {"2", kZRPhoneWorkLabel}});
    const auto ana = person(roster, {{kZRPhoneProperty, phones}, {kZRBirthdayProperty, day(1970, 5, 1)}});
    roster->setMe(ana);
    ZRPerson::setVCardField(
        std::string(kZRPhoneProperty) + "." + phones.as<ZRMultiValue>()->identifierAtIndex(0), true);
    ZRPerson::setVCardField(kZRBirthdayProperty, true);
    EXPECT_THAT(version40(*ana), testing::AllOf(HasSubstr("home;PREF=1:1\r\n"), HasSubstr("BDAY:19700501")));
    ZRPerson::setPrivateVCardEnabled(true);
    const std::string hidden = version40(*ana);
    ZRPerson::setPrivateVCardEnabled(false);
    ZRPerson::clearPrivateFields();
    EXPECT_THAT(hidden, Not(testing::AnyOf(HasSubstr(":1\r\n"), HasSubstr("BDAY"))));
    EXPECT_THAT(hidden, HasSubstr("TEL;TYPE=work:2\r\n"));
}

TEST_F(Writer40, NamesTheMembersOfAGroup)
{
    const auto ana = person(roster, {{kZRLastNameProperty, "Lima"}});
    const auto outer = ZRGroup::initWithRoster(roster), inner = ZRGroup::initWithRoster(roster);
    outer->setValue("Sea, boats", kZRGroupNameProperty);
    outer->addMember(*ana);
    outer->addMember(*ZRPerson::initWithUniqueId("odd", roster));
    outer->addSubgroup(*inner);
    roster->save();
    std::string card;
    zrAppendVCard40(*outer, card);
    EXPECT_EQ(card,
        "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Sea\\, boats\r\nMEMBER:" + urn(*ana)
            + "\r\nMEMBER:" + urn(*inner) + "\r\n" + books(*outer));
    const auto odd = ZRPerson::initWithUniqueId("odd; one", roster);
    EXPECT_THAT(version40(*odd), HasSubstr("UID;VALUE=text:odd; one\r\n"));
}

TEST_F(Writer40, WritesAPersonThatIsGoneAsAnEmptyCard)
{
    const auto ana = person(roster, {{kZRLastNameProperty, "Lima"}});
    roster->removeRecord(ana);
    roster->save();
    EXPECT_THAT(
        version40(*ana), testing::StartsWith("BEGIN:VCARD\r\nVERSION:4.0\r\nFN:\r\nN:;;;;\r\nPRODID"));
}

// A line of 75 bytes stays; a further one begins with a blank, and no character is cut.
TEST(Line40, IsFoldedBetweenCharacters)
{
    for (const char* const letter : {"x", "é", "€", "😀", "\x80"})
        for (std::size_t size = 60; size < 240; ++size) {
            std::string value = std::string(size % 4, '-'), to;
            while (value.size() < size)
                value += letter;
            vcard::Line40(to, "NOTE").text(value);
            std::string unfolded, rest = to;
            for (std::size_t end; (end = rest.find("\r\n")) != rest.npos; rest.erase(0, end + 2)) {
                const bool isFirst = unfolded.empty();
                EXPECT_TRUE(end <= 75 && (isFirst || (end > 1 && rest[0] == ' '))) << to;
                EXPECT_TRUE(*letter == '\x80' || platform::isValidUTF8(rest.substr(0, end))) << to;
                EXPECT_TRUE(rest.size() == end + 2 || end > 71) << "folded early: " << to;
                unfolded += rest.substr(isFirst ? 0 : 1, end - (isFirst ? 0 : 1));
            }
            EXPECT_EQ(unfolded, "NOTE:" + value);
        }
}

// Readers take a line that runs into the next card for two.
TEST(Line40, NeverEndsInWhatBeginsACard)
{
    std::string to;
    vcard::Line40(to, "NOTE").text("x Begin:VCard");
    EXPECT_EQ(to, "NOTE:x Begin:VCar\r\n d\r\n");
}

TEST(Pictures, AreKnownByTheirFirstBytes)
{
    const std::pair<std::string_view, const char*> cases[] = {{"\xFF\xD8\xFF\xE0", "image/jpeg"},
        {"\x89PNG\r\n\x1A\n", "image/png"}, {"GIF89a", "image/gif"}, {{"MM\0*", 4}, "image/tiff"},
        {{"II*\0", 4}, "image/tiff"}, {"BM1", "image/bmp"}, {"RIFF1234WEBP", "image/webp"},
        {"RIFF1234WAVE", "application/octet-stream"}, {"", "application/octet-stream"}};
    for (const auto& [bytes, type] : cases)
        EXPECT_EQ(vcard::mediaTypeOfPicture(bytes), type);
}

} // namespace
} // namespace test
