// What stands in a vCard beside a person's own fields, and what the user leaves out of it.
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRMultiValue.h"
#include "interchange/import/ZRvCardController.h"
#include "interchange/vcard/VCardText.h"
#include "interchange/vcard/WriterWorld.h"
#include "interchange/vcard/ZRPersonVCardAdditions.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/text/Dates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace test {
namespace {

using testing::HasSubstr;
using testing::Not;

class WriterChoices : public testing::Test {
protected:
    void SetUp() override
    {
        roster = openShared();
        ana = person(roster, {{kZRLastNameProperty, "Lima"}, {kZRNoteProperty, "one\ntwo"}});
    }
    void TearDown() override
    {
        removeAllRecords(*roster);
        for (const char* key : {"ZRIncludePhotosInVCard", "ZRIncludeNotesInVCard", "ZRUse21vCardFormat",
                 "ZRPrivateVCardFieldsEnabled", "ZRPrivateVCardFields"})
            preferences->removeObjectForKey(key);
    }

    Ref<ZRGroup> group(const char* name)
    {
        const auto made = ZRGroup::initWithRoster(roster);
        made->setValue(name, kZRGroupNameProperty);
        return made;
    }

    Ref<ZRRoster> roster;
    Ref<ZRPerson> ana;
    const Ref<ZRUserDefaults> preferences = ZRUserDefaults::rosterPreferences();
};

TEST_F(WriterChoices, LeavesNotesAndPhotosOutUntilTheyAreWanted)
{
    ana->setImageData(Value::data("picture"));
    const std::string note = "NOTE:one\\ntwo\r\n", photo = "PHOTO;BASE64:\r\n  cGljdHVyZQ==\r\n";

    EXPECT_THAT(ana->_vCardRepresentationAsString(), Not(HasSubstr("NOTE")));
    EXPECT_THAT(ana->_vCardRepresentationAsString(), Not(HasSubstr("PHOTO")));
    EXPECT_THAT(ana->_21vCardRepresentationAsData(), Not(HasSubstr("NOTE")));

    ZRPerson::setIncludeNotesInVCards(true);
    EXPECT_TRUE(ZRPerson::includeNotesInVCards());
    EXPECT_THAT(ana->_vCardRepresentationAsString(), HasSubstr(note));
    EXPECT_THAT(ana->_vCardRepresentationAsString(), Not(HasSubstr("PHOTO")));
    EXPECT_THAT(ana->_21vCardRepresentationAsData(), HasSubstr(note));

    ZRPerson::setIncludePhotosInVCards(true);
    EXPECT_TRUE(ZRPerson::includePhotosInVCards());
    EXPECT_THAT(ana->_vCardRepresentationAsString(), HasSubstr(note + photo));
    EXPECT_THAT(ana->_21vCardRepresentationAsData(), Not(HasSubstr("PHOTO"))) << "2.1 never has one";

    // What a caller asks for stands above the preferences.
    const auto with = [&](ZRVCardOptions options) {
        return ana->_vCardRepresentationAsStringUsingImageCache(Value(), options);
    };
    EXPECT_THAT(with(0), Not(HasSubstr("NOTE")));
    EXPECT_THAT(with(0), Not(HasSubstr("PHOTO")));
    EXPECT_THAT(with(kZRVCardWithPhoto), HasSubstr(photo));
    EXPECT_THAT(with(kZRVCardWithNote), HasSubstr(note));
    EXPECT_THAT(ana->_21vCardRepresentationAsData(0), Not(HasSubstr("NOTE")));
    ana->setImageData(Value());
}

TEST_F(WriterChoices, BreaksPhotosIntoLinesThatBeginWithBlanks)
{
    const std::string line = "QUFB", whole = [&] {
        std::string codes;
        for (int i = 0; i < 19; ++i)
            codes += line;
        return codes;
    }();
    const struct {
        std::size_t bytes;
        std::string text;
    } cases[] = {
        {1, "  QQ=="},
        {2, "  QUE="},
        {3, "  QUFB"},
        {54, "  " + whole.substr(0, 72)},
        {55, "  " + whole.substr(0, 72) + "QQ==\n  "},
        {57, "  " + whole + "\n  "},
        {58, "  " + whole + "\n  QQ=="},
        {114, "  " + whole + "\n  " + whole + "\n  "},
    };
    for (const auto& [bytes, text] : cases) {
        ana->setImageData(Value::data(std::string(bytes, 'A')));
        EXPECT_THAT(ana->_vCardRepresentationAsStringUsingImageCache(Value(), kZRVCardWithPhoto),
            HasSubstr("FN:Lima\r\nPHOTO;BASE64:\r\n" + text + "\r\nX-ZRUID"))
            << bytes;
    }
    ana->setImageData(Value());
    EXPECT_EQ(zrEncodeBase64Data("\xFF\xFF\xFE", false, true, '='), "///+");
    EXPECT_EQ(zrEncodeBase64Data("\xFF\xFF\xFE\xFF", false, false, '.'), ",,,+,w..");
}

TEST_F(WriterChoices, NamesTheGroupsOfAPerson)
{
    group("Empty");
    group("Sea; boats, and: more")->addMember(*ana);
    group("Ärzte")->addMember(*ana);
    roster->save();
    EXPECT_THAT(ana->_vCardRepresentationAsString(),
        HasSubstr("FN:Lima\r\nCATEGORIES:Sea; boats, and: more,Ärzte\r\nX-ZRUID"));
    EXPECT_THAT(ana->_21vCardRepresentationAsData(), HasSubstr("FN:Lima\r\nEND:VCARD\r\n"))
        << "2.1 has no character set for names of groups, so a line that is not ASCII is left out";
}

TEST_F(WriterChoices, WritesACountryOfTheRosterForAnAddressWithoutOne)
{
    ana->setValue(multiValue({{Value::dictionary({{"City", "Ulm"}}), "Barn"}}), kZRAddressProperty);
    roster->setDefaultCountryCode("at");
    EXPECT_THAT(ana->_vCardRepresentationAsString(),
        HasSubstr("item1.ADR;type=HOME;type=pref:;;;Ulm;;;\r\nitem1.X-ZRLabel:Barn\r\nitem1.X-ZRADR:at\r\n"));
    preferences->removeObjectForKey("ZRDefaultAddressCountryCode");
}

TEST_F(WriterChoices, KeepsPrivateFieldsOfMeToItself)
{
    const auto phones = multiValue({{"1", kZRPhoneHomeLabel}, {"2", kZRPhoneWorkLabel}});
    const Value birthday = *platform::noonOf({1970, 5, 1});
    ana->setValue(phones, kZRPhoneProperty);
    ana->setValue(birthday, kZRBirthdayProperty);
    const auto bo = person(roster, {{kZRPhoneProperty, phones}, {kZRBirthdayProperty, birthday}});
    roster->setMe(ana);
    const std::string home =
        std::string(kZRPhoneProperty) + "." + phones.as<ZRMultiValue>()->identifierAtIndex(0);

    const auto isHidden = [](const ZRPerson& person) {
        const std::string v30 = person._vCardRepresentationAsString(),
                          v21 = person._21vCardRepresentationAsData();
        EXPECT_THAT(v30, HasSubstr("TEL;type=WORK")) << "an entry that is not private";
        EXPECT_EQ(v30.find(":1\r\n") == v30.npos, v21.find(":1\r\n") == v21.npos);
        EXPECT_EQ(v30.find(":1\r\n") == v30.npos, v30.find("BDAY") == v30.npos);
        EXPECT_EQ(v21.find(":1\r\n") == v21.npos, v21.find("BDAY") == v21.npos);
        return v30.find("BDAY") == v30.npos;
    };
    ZRPerson::setVCardField(home, true);
    ZRPerson::setVCardField(kZRBirthdayProperty, true);
    EXPECT_TRUE(ZRPerson::vcardFieldisPrivate(home));
    EXPECT_FALSE(isHidden(*ana)) << "it must be switched on";
    EXPECT_TRUE(ana->_showField(kZRBirthdayProperty));

    ZRPerson::setPrivateVCardEnabled(true);
    EXPECT_TRUE(isHidden(*ana));
    EXPECT_FALSE(isHidden(*bo)) << "others have nothing private";
    roster->save();
    roster->prefetchDataForRecords({ana, bo});
    EXPECT_TRUE(isHidden(*ana)) << "saved, and fetched with others";
    EXPECT_FALSE(isHidden(*bo));
    EXPECT_FALSE(ana->_showField(kZRBirthdayProperty));
    EXPECT_FALSE(ana->_showField(kZRPhoneProperty, phones.as<ZRMultiValue>()->identifierAtIndex(0)));
    EXPECT_TRUE(ana->_showField(kZRPhoneProperty, phones.as<ZRMultiValue>()->identifierAtIndex(1)));
    EXPECT_TRUE(bo->_showField(kZRBirthdayProperty));
    roster->setMe(bo);
    EXPECT_FALSE(isHidden(*bo)) << "another Me begins with nothing private";
    ZRPerson::setVCardField(home, true);
    ZRPerson::setVCardField(kZRBirthdayProperty, true);
    EXPECT_TRUE(isHidden(*bo));
    EXPECT_FALSE(isHidden(*ana)) << "not Me any more";

    ZRPerson::setVCardField(home, false);
    ZRPerson::setVCardField(kZRBirthdayProperty, false);
    EXPECT_FALSE(isHidden(*bo));
    ZRPerson::setVCardField(kZRBirthdayProperty, true);
    ZRPerson::clearPrivateFields();
    EXPECT_FALSE(isHidden(*bo));
    preferences->setObject("no dictionary", "ZRPrivateVCardFields");
    EXPECT_FALSE(isHidden(*bo));
}

TEST_F(WriterChoices, WritesGroupsMemberByMember)
{
    const auto bo = person(roster, {{kZRLastNameProperty, "Ek"}});
    const auto outer = group("Outer"), inner = group("Inner");
    outer->addMember(*ana);
    inner->addMember(*ana);
    inner->addMember(*bo);
    outer->addSubgroup(*inner);
    roster->save();
    const auto names = [](const std::string& cards) {
        std::string all;
        for (std::size_t at = 0; (at = cards.find("\r\nFN:", at)) != cards.npos; at += 5)
            all += cards.substr(at + 5, cards.find("\r\n", at + 5) - at - 5) + " ";
        return all;
    };
    EXPECT_EQ(names(outer->_vCardRepresentationAsString()), "Lima Lima Ek ");
    EXPECT_EQ(outer->_vCardRepresentation(), outer->_vCardRepresentationAsString());
    EXPECT_EQ(names(outer->_21vCardRepresentationAsData()), "Lima Lima Ek ");
    EXPECT_EQ(names(ZRvCardController::vCardRepresentationOfRecords({inner, ana})), "Lima Ek Lima ");
    preferences->setBool(true, kZRUse21vCardFormat);
    EXPECT_EQ(ZRvCardController::vCardRepresentationOfRecords({ana}), ana->_21vCardRepresentationAsData());
}

TEST_F(WriterChoices, GivesDataOnlyOfUnicode)
{
    EXPECT_EQ(ana->vCardRepresentation(), ana->_vCardRepresentationAsString());
    ana->setValue("\xFF", kZRJobTitleProperty);
    EXPECT_EQ(ana->vCardRepresentation(), std::nullopt);
}

TEST_F(WriterChoices, WritesThePasteboardsCards)
{
    EXPECT_EQ(ZRRecord::copyPasteboardStringForRecords({ana}), ana->_vCardRepresentationAsString());
}

TEST_F(WriterChoices, WritesAPersonThatIsGoneAsAnEmptyCard)
{
    const std::string id = ana->uniqueId();
    roster->removeRecord(ana);
    roster->save();
    const std::string card = ana->_vCardRepresentationAsString();
    EXPECT_TRUE(card.starts_with("BEGIN:VCARD\r\nVERSION:3.0\r\nN:;;;;\r\nX-ZRUID:" + id.substr(0, 36)))
        << card;
    EXPECT_TRUE(card.ends_with("END:VCARD\r\n"));
}

TEST_F(WriterChoices, WritesLinesOfOnePropertyForCallers)
{
    ana->setValue(multiValue({{"http://x", "Boat"}, {"http://y", kZRWorkLabel}}), kZRURLsProperty);
    std::string v30, v21, data;
    std::int64_t group = 7;
    locked(*roster, ZRAccess::read, [&]() ZR_NTS {
        ZRPersonVCardAdditions(*ana, v30).propertyLineForGenericABProperty(
            kZRURLsProperty, "URL", false, group);
        ZRPersonVCardAdditions(*ana, v21).propertyLineForGenericABProperty(
            kZRURLsProperty, "URL", true, group);
        ZRPersonVCardAdditions(*ana, data).propertyLineForGenericABProperty21(kZRURLsProperty, "URL", "");
    });
    EXPECT_EQ(v30, "item7.URL;type=pref:http\\://x\r\nitem7.X-ZRLabel:Boat\r\nURL;type=WORK:http\\://y\r\n");
    EXPECT_EQ(v21, "URL;type=pref:http\\://x\r\nURL;type=WORK:http\\://y\r\n");
    EXPECT_EQ(data, v21);
    EXPECT_EQ(group, 8);
}

} // namespace
} // namespace test
