// The words: every one that is shown has an English name, and properties have a type.
#include "core/BuiltInProperties.h"
#include "core/ZRConstants.h"
#include "core/ZRLabels.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

const std::pair<std::string, std::string> kWords[] = {
#define ZR_WORD(constant, text) {#constant, ::constant},
#include "core/Vocabulary.def"
};

TEST(Vocabulary, ReadsInEnglishWithoutItsMarks)
{
    for (const auto& [constant, word] : kWords) {
        const bool isShown = constant.ends_with("Property") || constant.ends_with("Label")
            || constant.ends_with("PersonFlags") || constant.starts_with("kZRAddress");
        if (!isShown || constant.ends_with("DictionaryKey"))
            continue;
        const std::string text = ZRLocalizedPropertyOrLabel(word);
        EXPECT_FALSE(text.empty()) << constant;
        EXPECT_EQ(text.find("_$!<"), std::string::npos) << constant << " reads " << text;
        EXPECT_EQ(text.find("ZR"), std::string::npos) << constant << " reads " << text;
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
        {"ZRPerson", 33, "first", 0},
        {"ZRSubscribedPerson", 33, "UID", 1},
        {"ZRGroup", 7, "SearchElement", 0},
        {"ZRSubscribedGroup", 7, "LabeledReadSharingACL", 257},
        {"ZRSmartGroup", 10, "GroupName", 1},
        {"ZRSmartGroup", 10, "SearchElement", 7},
        {"ZRInfo", 12, "Synced", 2},
        {"ZRRecord", 0, "UID", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(builtInTypeOfProperty(c.recordClass, c.property), c.type) << c.recordClass << c.property;
        EXPECT_EQ(builtInPropertyTypes(c.recordClass).size(), c.count) << c.recordClass;
    }
}

} // namespace
