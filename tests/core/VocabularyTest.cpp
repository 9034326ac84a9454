// The words: the exported constants, the literals and the English names belong together.
#include "core/BuiltInProperties.h"
#include "core/ZRConstants.h"
#include "core/ZRLabels.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

struct Word {
    std::string constant;
    std::string exported;
    std::string literal;
};

const Word kWords[] = {
#define ZR_WORD(constant, text) {#constant, ::constant, std::string(zr::constant)},
#include "core/Vocabulary.def"
};

// The texts are a format: other programs have them in their files.
TEST(Vocabulary, KeepsTheTextsThatAreStored)
{
    const std::map<std::string, std::string> stored = {
        {"kZRFirstNameProperty", "First"},
        {"kZRModificationDateProperty", "Modification"},
        {"kZROtherDatesProperty", "ZRDate"},
        {"kZRCalendarURIsProperty", "calendarURIs"},
        {"kZRLargeImageProperty", "org.quillon.ZRLargeImageProperty"},
        {"kZRReadWriteSharingACLProperty", "LabeledReadWriteSharingACL"},
        {"kZRSmartGroupModifiedUIDsProperty", "SmartGroupModUIDs"},
        {"kZRICQHomeLabel", "_$!<Home>!$_"},
        {"kZRPhoneWorkFAXLabel", "_$!<WorkFAX>!$_"},
        {"kZRPhoneHandsetLabel", "Handset"},
        {"kZRAIMSkyLockerLabel", "SkyLocker"},
        {"kZRAddressCountryCodeKey", "CountryCode"},
        {"ZRBuildInLabelsRelatedRecords", "ZRBuildInLabelsRelatedRecords"},
        {"kZRDatabaseChangedNotificationPriv", "ZRDatabaseChangedNotificationPriv"},
        {"kZRSenderProcessID", "ZRSenderProcessID"},
        {"kZRPreserveModificationDate", "kZRPreserveModificationDate"},
    };
    std::size_t found = 0;
    for (const Word& word : kWords) {
        EXPECT_EQ(word.exported, word.literal) << word.constant;
        const auto expected = stored.find(word.constant);
        if (expected == stored.end())
            continue;
        EXPECT_EQ(word.exported, expected->second) << word.constant;
        ++found;
    }
    EXPECT_EQ(found, stored.size());
}

TEST(Vocabulary, ReadsInEnglishWithoutItsMarks)
{
    for (const Word& word : kWords) {
        const bool isShown = word.constant.ends_with("Property") || word.constant.ends_with("Label")
            || word.constant.ends_with("PersonFlags") || word.constant.starts_with("kZRAddress");
        if (!isShown || word.constant.ends_with("DictionaryKey"))
            continue;
        const std::string text = ZRLocalizedPropertyOrLabel(word.literal);
        EXPECT_FALSE(text.empty()) << word.constant;
        EXPECT_EQ(text.find("_$!<"), std::string::npos) << word.constant << " reads " << text;
        EXPECT_EQ(text.find("ZR"), std::string::npos) << word.constant << " reads " << text;
    }
}

TEST(BuiltInProperties, HaveATypeInTheClassesThatHaveThem)
{
    const struct {
        const char* recordClass;
        std::size_t count;
        const char* property;
        ZRPropertyType type;
    } cases[] = {
        {"ZRPerson", 33, "Email", 257},
        {"ZRPerson", 33, "Address", 262},
        {"ZRPerson", 33, "ZRDate", 260},
        {"ZRPerson", 33, "Birthday", 4},
        {"ZRPerson", 33, "ZRPersonFlags", 2},
        {"ZRPerson", 33, "org.quillon.ZRImageProperty", 0},
        {"ZRPerson", 33, "first", 0},
        {"ZRSubscribedPerson", 33, "UID", 1},
        {"ZRGroup", 7, "GroupName", 1},
        {"ZRGroup", 7, "SearchElement", 0},
        {"ZRSubscribedGroup", 7, "LabeledReadSharingACL", 257},
        {"ZRSmartGroup", 10, "GroupName", 1},
        {"ZRSmartGroup", 10, "SearchElement", 7},
        {"ZRSmartGroup", 10, "SmartGroupModUIDs", 5},
        {"ZRInfo", 12, "LastSkyLockerAccount", 1},
        {"ZRInfo", 12, "Synced", 2},
        {"ZRMailRecent", 5, "Email", 1},
        {"ZRMailRecent", 5, "MailLastDates", 5},
        {"ZRLog", 1, "DeletedUID", 1},
        {"ZRSubscription", 5, "isAll", 2},
        {"ZRGroupContents", 3, "distribution", 6},
        {"ZRDataType", 3, "Type", 2},
        {"ZRRecord", 0, "UID", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(builtInTypeOfProperty(c.recordClass, c.property), c.type) << c.recordClass << c.property;
        EXPECT_EQ(builtInPropertyTypes(c.recordClass).size(), c.count) << c.recordClass;
    }
}

} // namespace
