// Preferences are shared: what one process writes the others read, and nobody's write is lost.
#include "platform/files/Preferences.h"

#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/files/UserDefaults.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Log.h"
#include "platform/value/PropertyList.h"
#include "support/Forked.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace platform;
using namespace test;
using testing::ElementsAre;

namespace {

Preferences& preferences() { return Preferences::shared(); }

/// Each test has a domain of its own.
class PreferencesTest : public testing::Test {
protected:
    std::string domain = testing::UnitTest::GetInstance()->current_test_info()->name();
    std::string file = Directories::current()->configHome() + "/" + domain + ".plist";
};

TEST_F(PreferencesTest, KeepEveryKindOfValue)
{
    const auto value =
        Value::dictionary({{"flag", true}, {"count", 3}, {"ratio", 0.5}, {"day", Date{86400.25}},
            {"list", Value::array({"a", "é"})}, {"bytes", Value::data(std::string_view("\0\xff", 2))}});
    EXPECT_TRUE(preferences().set(domain, "all", value));
    EXPECT_TRUE(inForkedChild([&] { return preferences().get(domain, "all") == value; }));
    EXPECT_TRUE(preferences().get(domain, "all")["flag"].isBoolean());
    EXPECT_EQ(modeOf(file), 0600U);
}

TEST_F(PreferencesTest, ForgetWhatIsRemoved)
{
    for (const char* key : {"a", "b", "c"})
        ASSERT_TRUE(preferences().set(domain, key, 1));
    EXPECT_TRUE(preferences().remove(domain, "b"));
    EXPECT_TRUE(preferences().set(domain, "c", NullMarker{}));
    EXPECT_TRUE(preferences().remove(domain, "never"));
    EXPECT_THAT(preferences().keys(domain), ElementsAre("a"));
    EXPECT_TRUE(preferences().get(domain, "b").isAbsent());
}

TEST_F(PreferencesTest, SeeWhatAnotherProcessWroteSince)
{
    ASSERT_TRUE(preferences().set(domain, "key", "ours"));
    EXPECT_TRUE(inForkedChild([&] { return bool(preferences().set(domain, "key", "them")); }));
    EXPECT_EQ(preferences().get(domain, "key"), Value("them"));
    ASSERT_TRUE(removeFile(file));
    EXPECT_TRUE(preferences().get(domain, "key").isAbsent());
}

// Same length, same time, and with bad luck the same inode: only the open file tells them apart.
TEST_F(PreferencesTest, SeeAWriteThatLooksLikeTheOneBefore)
{
    const timespec then[2] = {{1000, 0}, {1000, 0}};
    for (int i = 0; i < 20; ++i) {
        const auto text = "v" + std::to_string(10 + i);
        const auto bytes = encodePropertyList(Value::dictionary({{"key", text}}), PropertyListFormat::xml);
        // The second write may get the inode that the first one freed.
        ASSERT_TRUE(writeFileAtomically(file, "between"));
        ASSERT_TRUE(writeFileAtomically(file, *bytes));
        ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), then, 0), 0);
        EXPECT_EQ(preferences().get(domain, "key"), Value(text));
    }
}

TEST_F(PreferencesTest, LoseNoKeyOfTwoProcessesThatWriteAtOnce)
{
    constexpr int kEach = 40;
    const auto writeAll = [&](const std::string& who) {
        bool written = true;
        for (int i = 0; i < kEach; ++i)
            written = written && preferences().set(domain, who + std::to_string(i), i);
        return written;
    };
    const auto child = forkAmongSleepers();
    if (child == 0)
        _exit(writeAll("child") ? 0 : 1);
    EXPECT_TRUE(writeAll("parent"));
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(preferences().keys(domain).size(), 2U * kEach);
}

TEST_F(PreferencesTest, LeaveADamagedFileAlone)
{
    for (const char* damaged : {"bplist00 cut off", "", "<plist><array/></plist>"}) {
        put(file, damaged);
        const LogCapture log;
        EXPECT_TRUE(preferences().get(domain, "key").isAbsent()) << damaged;
        EXPECT_FALSE(preferences().synchronize(domain)) << damaged;
        EXPECT_FALSE(preferences().set(domain, "key", 1)) << damaged;
        EXPECT_EQ(bytesOf(file), damaged);
        EXPECT_TRUE(log.contains(file)) << damaged;
    }
}

TEST_F(PreferencesTest, RefuseWhatNoFileCanHold)
{
    ASSERT_TRUE(preferences().set(domain, "key", 1));
    EXPECT_FALSE(preferences().set(domain, "key", Value::array({NullMarker{}})));
    EXPECT_EQ(preferences().get(domain, "key"), Value(1));
}

TEST_F(PreferencesTest, PutTheArgumentsAboveTheFile)
{
    ASSERT_TRUE(preferences().set(domain, "key", "file"));
    preferences().setArgument("key", "argument");
    EXPECT_EQ(preferences().get(domain, "key"), Value("argument"));
    EXPECT_EQ(ZRUserDefaults::objectForKey("key", domain), Value("argument"));
    EXPECT_EQ(preferences().dictionary(domain)["key"], Value("file"));
    preferences().setArgument("key", {});
    EXPECT_EQ(preferences().get(domain, "key"), Value("file"));
}

TEST_F(PreferencesTest, TellObserversOfEachChangeOnly)
{
    std::vector<std::string> heard;
    auto token = preferences().observe([&](const std::string& where, const std::string& key) {
        // An observer may read, and write, from here.
        heard.push_back(where + "." + key + "=" + preferences().get(where, key).description());
    });
    ASSERT_TRUE(preferences().set(domain, "a", 1));
    ASSERT_TRUE(preferences().set(domain, "a", 1));
    ASSERT_TRUE(preferences().set(domain, "a", true));
    token.cancel();
    ASSERT_TRUE(preferences().set(domain, "a", 2));
    EXPECT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard.front(), domain + ".a=1");
}

TEST(PreferenceTruth, ReadsNumbersAndWords)
{
    const std::pair<Value, bool> cases[] = {{true, true}, {false, false}, {2, true}, {0.0, false},
        {"YES", true}, {"yes", true}, {"true", true}, {"TRUE", true}, {"1", true}, {" +007", true},
        {"0", false}, {"00", false}, {"NO", false}, {"no", false}, {"", false}, {"off", false},
        {Value(), false}, {NullMarker{}, false}, {Value::array({1}), false}};
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(preferenceIsTrue(value), expected) << value.description();
}

TEST(UserDefaultsTest, AskArgumentsThenTheProgramsFileThenTheRegistered)
{
    auto& defaults = UserDefaults::standard();
    EXPECT_EQ(defaults.domain(), "platform_files_test");
    const auto answers = [&] {
        return std::pair(defaults.boolForKey("flag"), defaults.stringForKey("text"));
    };
    EXPECT_EQ(answers(), std::pair(false, std::string()));
    defaults.registerDefaults(Value::dictionary({{"flag", true}, {"text", "one"}}));
    defaults.registerDefaults(Value::dictionary({{"text", "two"}, {"number", 2}}));
    EXPECT_EQ(answers(), std::pair(true, std::string("two")));
    defaults.setBool(false, "flag");
    defaults.setObject("17", "text");
    EXPECT_EQ(answers(), std::pair(false, std::string("17")));
    Preferences::shared().setArgument("text", "-4");
    EXPECT_EQ(answers(), std::pair(false, std::string("-4")));
    EXPECT_EQ(defaults.integerForKey("text"), -4);
    EXPECT_EQ(defaults.integerForKey("number"), 2);
    Preferences::shared().setArgument("text", {});
    defaults.removeObjectForKey("text");
    defaults.removeObjectForKey("flag");
    EXPECT_EQ(answers(), std::pair(true, std::string("two")));
}

TEST(ZRUserDefaultsTest, KeepTheirThreeDomainsApart)
{
    const std::pair<Ref<ZRUserDefaults>, const char*> all[] = {
        {ZRUserDefaults::rosterPreferences(), "org.quillon.Roster"},
        {ZRUserDefaults::rosterManagerPreferences(), "org.quillon.Roster.zrd"},
        {ZRUserDefaults::iisSupportPreferences(), "org.quillon.IISSupport"}};
    for (const auto& [defaults, domain] : all)
        defaults->setObject(domain, "key");
    for (const auto& [defaults, domain] : all) {
        EXPECT_EQ(defaults->objectForKey("key"), Value(domain));
        EXPECT_EQ(ZRUserDefaults::objectForKey("key", domain), Value(domain));
        EXPECT_TRUE(fileExists(Directories::current()->configHome() + "/" + domain + ".plist"));
    }
    EXPECT_EQ(ZRUserDefaults::rosterPreferences(), ZRUserDefaults::rosterPreferences());
}

TEST(ZRUserDefaultsTest, TellFalseFromMissing)
{
    const auto defaults = makeRef<ZRUserDefaults>("org.quillon.test");
    bool exists = true;
    EXPECT_FALSE(defaults->boolForKey("flag", &exists));
    EXPECT_FALSE(exists);
    defaults->setBool(false, "flag");
    EXPECT_FALSE(defaults->boolForKey("flag", &exists));
    EXPECT_TRUE(exists);
    defaults->removeObjectForKey("flag");
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_FALSE(defaults->boolForKey("flag", &exists));
    EXPECT_FALSE(exists);
}

} // namespace
