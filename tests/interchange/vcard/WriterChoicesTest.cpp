// What stands in a vCard beside a person's own fields, and what the user leaves out of it.
#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "interchange/import/ZRvCardController.h"
#include "interchange/vcard/VCardText.h"
#include "interchange/vcard/WriterWorld.h"
#include "interchange/vcard/ZRPersonVCardAdditions.h"
#include "platform/text/Dates.h"

#include <gmock/gmock.h>

#include <set>

namespace test {
namespace {

using testing::HasSubstr;

class WriterChoices : public WriterTest {
protected:
    const Ref<ZRPerson> ana = person(roster, {{kZRLastNameProperty, "Lima"}, {kZRNoteProperty, "one\ntwo"}});
};

TEST_F(WriterChoices, LeavesNotesAndPhotosOutUntilTheyAreWanted)
{
    ana->setImageData(Value::data("\x89PNG\r\n\x1A\n"));
    const std::string note = "NOTE:one\\ntwo\r\n", photo30 = "PHOTO;BASE64:\r\n  iVBORw0KGgo=\r\n",
                      photo40 = "PHOTO:data:image/png;base64,iVBORw0KGgo=\r\n";
    const auto notesAndPhotosIn = [](const std::string& card) {
        const auto from = std::min(card.find("NOTE"), card.find("PHOTO")),
                   to = std::min(card.find("X-ZRUID"), std::min(card.find("PRODID"), card.find("END:")));
        return from == card.npos ? "" : card.substr(from, to - from);
    };
    const auto expectByPreference = [&](const std::string& v30, const std::string& v21) {
        EXPECT_EQ(notesAndPhotosIn(ana->_vCardRepresentationAsString()), v30);
        EXPECT_EQ(notesAndPhotosIn(ana->_21vCardRepresentationAsData()), v21) << "2.1 never has a photo";
    };
    expectByPreference("", "");
    ZRPerson::setIncludeNotesInVCards(true);
    expectByPreference(note, note);
    ZRPerson::setIncludePhotosInVCards(true);
    expectByPreference(note + photo30, note);

    // What a caller asks for stands above the preferences.
    const struct {
        ZRVCardOptions options;
        std::string v30, v21, v40;
    } cases[] = {
        {0, "", "", ""},
        {kZRVCardWithNote, note, note, note},
        {kZRVCardWithPhoto, photo30, "", photo40},
        {kZRVCardWithNote | kZRVCardWithPhoto, note + photo30, note, note + photo40},
    };
    for (const auto& [options, v30, v21, v40] : cases) {
        SCOPED_TRACE(options);
        EXPECT_EQ(notesAndPhotosIn(ana->_vCardRepresentationAsStringUsingImageCache(Value(), options)), v30);
        EXPECT_EQ(notesAndPhotosIn(ana->_21vCardRepresentationAsData(options)), v21);
        EXPECT_EQ(notesAndPhotosIn(version40(*ana, options)), v40);
    }
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
    for (const char* const name : {"Sea; boats, and: more", "Ärzte"})
        group(name)->addMember(*ana);
    roster->save();
    EXPECT_THAT(ana->_vCardRepresentationAsString(),
        HasSubstr("FN:Lima\r\nCATEGORIES:Sea; boats, and: more,Ärzte\r\nX-ZRUID"));
    EXPECT_THAT(ana->_21vCardRepresentationAsData(), HasSubstr("FN:Lima\r\nEND:VCARD\r\n"))
        << "2.1 has no character set for names of groups, so a line that is not ASCII is left out";
    group("")->addMember(*ana);
    roster->save();
    EXPECT_THAT(version40(*ana), HasSubstr("CATEGORIES:Sea; boats\\, and: more,Ärzte\r\nPRODID"))
        << "4.0 names no group without a name";
}

TEST_F(WriterChoices, WritesACountryOfTheRosterForAnAddressWithoutOne)
{
    ana->setValue(multiValue({{Value::dictionary({{"City", "Ulm"}}), "Barn"}}), kZRAddressProperty);
    roster->setDefaultCountryCode("at");
    EXPECT_THAT(ana->_vCardRepresentationAsString(),
        HasSubstr("item1.ADR;type=HOME;type=pref:;;;Ulm;;;\r\nitem1.X-ZRLabel:Barn\r\nitem1.X-ZRADR:at\r\n"));
}

TEST_F(WriterChoices, KeepsPrivateFieldsOfMeToItself)
{
    const auto phones = multiValue({{"1", kZRPhoneHomeLabel}, {"2", kZRPhoneWorkLabel}});
    const Value birthday = *platform::noonOf({1970, 5, 1});
    ana->setValue(phones, kZRPhoneProperty);
    ana->setValue(birthday, kZRBirthdayProperty);
    const auto bo = person(roster, {{kZRPhoneProperty, phones}, {kZRBirthdayProperty, birthday}});
    roster->setMe(ana);
    const auto* const entries = phones.as<ZRMultiValue>();
    const std::string home = std::string(kZRPhoneProperty) + "." + entries->identifierAtIndex(0);
    const auto makePrivate = [&](bool isPrivate) {
        ZRPerson::setVCardField(home, isPrivate);
        ZRPerson::setVCardField(kZRBirthdayProperty, isPrivate);
    };
    const auto isHidden = [](const ZRPerson& person) {
        std::set<bool> hidden;
        for (const auto& card : {person._vCardRepresentationAsString(), person._21vCardRepresentationAsData(),
                 version40(person)}) {
            EXPECT_THAT(card, HasSubstr(":2\r\n")) << "an entry that is not private";
            hidden.insert(card.find(":1\r\n") == card.npos);
            hidden.insert(card.find("BDAY") == card.npos);
        }
        EXPECT_EQ(hidden.size(), 1U) << "versions and properties must agree";
        return *hidden.begin();
    };
    makePrivate(true);
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
    EXPECT_FALSE(ana->_showField(kZRPhoneProperty, entries->identifierAtIndex(0)));
    EXPECT_TRUE(ana->_showField(kZRPhoneProperty, entries->identifierAtIndex(1)));
    EXPECT_TRUE(bo->_showField(kZRBirthdayProperty));
    roster->setMe(bo);
    EXPECT_FALSE(isHidden(*bo)) << "another Me begins with nothing private";
    makePrivate(true);
    EXPECT_TRUE(isHidden(*bo));
    EXPECT_FALSE(isHidden(*ana)) << "not Me any more";

    makePrivate(false);
    EXPECT_FALSE(isHidden(*bo));
    makePrivate(true);
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
    EXPECT_EQ(ZRRecord::copyPasteboardStringForRecords({ana}), ana->_vCardRepresentationAsString());
    ana->setValue("\xFF", kZRJobTitleProperty);
    EXPECT_EQ(ana->vCardRepresentation(), std::nullopt);
}

TEST_F(WriterChoices, WritesAPersonThatIsGoneAsAnEmptyCard)
{
    roster->removeRecord(ana);
    roster->save();
    const auto id = ana->uniqueId().substr(0, 36);
    EXPECT_THAT(ana->_vCardRepresentationAsString(),
        testing::AllOf(testing::StartsWith("BEGIN:VCARD\r\nVERSION:3.0\r\nN:;;;;\r\nX-ZRUID:" + id),
            testing::EndsWith("END:VCARD\r\n")));
    EXPECT_THAT(
        version40(*ana), testing::StartsWith("BEGIN:VCARD\r\nVERSION:4.0\r\nFN:\r\nN:;;;;\r\nPRODID"));
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
