// The nickname's marks, and what stands for retired classes.
#include "core/ZRDeprecatedObject.h"
#include "core/ZRFrameworkBundle.h"
#include "core/ZRNicknameFormatter.h"
#include "platform/run/Log.h"
#include "platform/value/Value.h"

#include <gmock/gmock.h>

namespace {

using platform::Value;

TEST(NicknameFormatter, PutsMarksAroundANickname)
{
    const ZRNicknameFormatter formatter("<<", ">>");
    EXPECT_EQ(formatter.stringForObjectValue("Bo"), "<<Bo>>");
    EXPECT_EQ(formatter.stringForObjectValue(""), "");
    EXPECT_EQ(formatter.stringForObjectValue({}), std::nullopt);
    EXPECT_EQ(formatter.stringForObjectValue(5), std::nullopt);
    EXPECT_NE(ZRNicknameFormatter().stringForObjectValue("Bo"), "Bo");
}

TEST(NicknameFormatter, TakesMarksOffAtTheEndsOnly)
{
    const ZRNicknameFormatter formatter("<<", ">>");
    const std::pair<const char*, const char*> cases[] = {{"<<Bo>>", "Bo"}, {"<<Bo", "Bo"}, {"Bo>>", "Bo"},
        {"<<<<Bo>>>>", "<<Bo>>"}, {"B<<o>>!", "B<<o>>!"}, {"<Bo>", "<Bo>"}, {">>Bo<<", ">>Bo<<"}, {"", ""},
        {"<<>>", ""}};
    for (const auto& [typed, nickname] : cases) {
        std::string found = "before", error = "before";
        EXPECT_TRUE(formatter.getObjectValue(found, typed, &error)) << typed;
        EXPECT_EQ(found, nickname) << typed;
        EXPECT_EQ(error, "") << typed;
    }
}

TEST(DeprecatedObject, WarnsAndThenAnswersNothing)
{
    platform::LogCapture log;
    const auto object = ZRDeprecatedObject::alloc("ZROldController");
    EXPECT_THAT(log.lines(), testing::ElementsAre("Warning: ZROldController is no longer supported."));
    EXPECT_EQ(object->perform<int>("count"), 0);
    EXPECT_FALSE(object->perform<bool>("save", 1, "x"));
    EXPECT_EQ(object->perform<const char*>("name"), nullptr);
    EXPECT_TRUE(object->perform<Value>("value").isAbsent());
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST(FrameworkBundle, FindsResourcesAndTexts)
{
    const ZRBundle& bundle = ZRFrameworkBundle();
    EXPECT_TRUE(bundle.resource("strings/en/ZRStrings", "strings"));
    EXPECT_FALSE(bundle.resource("Missing", "plist"));
    EXPECT_EQ(bundle.localizedString("NO_NAME", "ZRStrings"), "No Name");
    EXPECT_EQ(bundle.localizedString("NO_SUCH_KEY", "ZRStrings"), "NO_SUCH_KEY");
    EXPECT_EQ(bundle.localizedString("NO_SUCH_KEY", "ZRStrings", "else"), "else");
}

} // namespace
