// The list of templates is edited, kept in preferences and shared by the formatters of a process.
#include "core/ZRFailure.h"
#include "format/ZRPhoneFormatter.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/Log.h"
#include "store/RosterWorld.h"

#include <gmock/gmock.h>

#include <fstream>

namespace {

using platform::makeRef;
using platform::Ref;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;
using Formats = std::vector<std::string>;

/// What a new process makes of a number, in the home that it finds.
const test::Role showing("show a number", [](const test::Words& words) {
    test::openShared()->setDefaultCountryCode("us");
    platform::LogCapture log;
    const auto text = ZRPhoneFormatter::sharedPhoneFormatter()->stringForObjectValue(words.at(0));
    return *text + (log.lines().empty() ? "" : " | " + log.lines().front());
});

class PhoneFormatList : public testing::Test {
protected:
    static Value stored(const std::string& key)
    {
        return ZRUserDefaults::rosterPreferences()->objectForKey(key);
    }
    static void store(const std::string& key, const Value& value)
    {
        ZRUserDefaults::rosterPreferences()->setObject(value, key);
    }
    static Ref<ZRPhoneFormatter> bound(const std::string& name)
    {
        auto formatter = makeRef<ZRPhoneFormatter>();
        formatter->setFormatAutosaveName(name);
        return formatter;
    }
    static Ref<ZRPhoneFormatter> with(const std::string& name, const Formats& formats)
    {
        store(name + "-PhoneFormatter", Value::array({formats.begin(), formats.end()}));
        return bound(name);
    }
};

TEST_F(PhoneFormatList, IsEditedInPlace)
{
    using Formatter = ZRPhoneFormatter;
    const struct {
        const char* what;
        void (*edit)(Formatter&);
        Formats after;
    } cases[] = {
        {"add", [](Formatter& list) { list.addFormat(" \t#-# \n"); }, {"a", "b", "c", "#-#"}},
        {"add non-ASCII white space", [](Formatter& list) { list.addFormat("\xC2\xA0#\xE2\x80\x83"); },
            {"a", "b", "c", "#"}},
        {"insert", [](Formatter& list) { list.insertFormat_atIndex(" # ", 1); }, {"a", " # ", "b", "c"}},
        {"insert at the end", [](Formatter& list) { list.insertFormat_atIndex("", 3); }, {"a", "b", "c", ""}},
        {"remove", [](Formatter& list) { list.removeFormatAtIndex(1); }, {"a", "c"}},
        {"remove all", [](Formatter& list) { list.removeAllFormats(); }, {}},
        {"replace", [](Formatter& list) { list.replaceFormatAtIndex(2, " # "); }, {"a", "b", "#"}},
        {"replace by nothing", [](Formatter& list) { list.replaceFormatAtIndex(2, {}); }, {"a", "b", "c"}},
        {"move down", [](Formatter& list) { list.moveFormatAtIndex(0, 2); }, {"b", "a", "c"}},
        {"move down by one", [](Formatter& list) { list.moveFormatAtIndex(0, 1); }, {"a", "b", "c"}},
        {"move to the end", [](Formatter& list) { list.moveFormatAtIndex(0, 3); }, {"b", "c", "a"}},
        {"move past the end", [](Formatter& list) { list.moveFormatAtIndex(0, 99); }, {"b", "c", "a"}},
        {"move up", [](Formatter& list) { list.moveFormatAtIndex(2, 0); }, {"c", "a", "b"}},
        {"move nowhere", [](Formatter& list) { list.moveFormatAtIndex(9, 9); }, {"a", "b", "c"}},
    };
    for (const auto& [what, edit, after] : cases) {
        const auto formatter = with("edits", {"a", "b", "c"});
        edit(*formatter);
        EXPECT_EQ(formatter->formats(), after) << what;
        EXPECT_EQ(stored("edits-PhoneFormatter"), Value::array({after.begin(), after.end()})) << what;
    }
}

TEST_F(PhoneFormatList, RefusesAnIndexPastItsEnd)
{
    const auto formatter = with("bounds", {"a"});
    EXPECT_THROW(formatter->insertFormat_atIndex("#", 2), ZRInvalidArgument);
    EXPECT_THROW(formatter->removeFormatAtIndex(1), ZRInvalidArgument);
    EXPECT_THROW(formatter->replaceFormatAtIndex(-1, "#"), ZRInvalidArgument);
    EXPECT_THROW(formatter->moveFormatAtIndex(1, 0), ZRInvalidArgument);
    EXPECT_THAT(formatter->formats(), ElementsAre("a"));
}

TEST_F(PhoneFormatList, WithoutANameIsKeptNowhere)
{
    const auto formatter = makeRef<ZRPhoneFormatter>();
    formatter->addFormat("#");
    formatter->setEdited(true);
    EXPECT_EQ(formatter->description(),
        "ZRPhoneFormatter-(null) enabled YES edited YES " + Value::array({"#"}).description());
    EXPECT_TRUE(stored("-PhoneFormatter").isAbsent());
    EXPECT_TRUE(stored("-Edited").isAbsent());
}

TEST_F(PhoneFormatList, StartsFromTheDefaultCountry)
{
    const auto roster = test::openShared();
    for (const char* country : {"de", "us"}) {
        roster->setDefaultCountryCode(country);
        const std::string name = std::string("fresh-") + country;
        const auto formatter = bound(name);
        const auto& list = ZRPhoneFormatter::phoneFormatsDictionary()[country].asArray().front();
        EXPECT_FALSE(formatter->formats().empty());
        EXPECT_EQ(stored(name + "-PhoneFormatter"), list) << country;
        EXPECT_EQ(stored(name + "-Enabled"), Value(true));
        EXPECT_EQ(stored(name + "-Edited"), Value(false));
    }
    // A country whose numbers nobody knows leaves everything as typed.
    roster->setDefaultCountryCode("aq");
    EXPECT_EQ(bound("fresh-aq")->stringForObjectValue("5551234"), "5551234");
    roster->setDefaultCountryCode("us");
}

TEST_F(PhoneFormatList, ReadsBackWhatWasStored)
{
    store("back-Enabled", false);
    store("back-Edited", true);
    const auto formatter = with("back", {"###", "#"});
    EXPECT_THAT(formatter->formats(), ElementsAre("###", "#"));
    EXPECT_FALSE(formatter->enabled());
    EXPECT_TRUE(formatter->edited());
    EXPECT_EQ(formatter->formatAutosaveName(), "back");

    // Switches that are not stored stay as they are.
    store("other-PhoneFormatter", Value::array({"##", 5, "#"}));
    formatter->setFormatAutosaveName("other");
    EXPECT_THAT(formatter->formats(), ElementsAre("##", "#"));
    EXPECT_FALSE(formatter->enabled());
    EXPECT_TRUE(formatter->edited());
}

TEST_F(PhoneFormatList, StoredEmptyAndEditedBecomesTheDefaultAgain)
{
    test::openShared();
    store("emptied-Edited", true);
    const auto formatter = with("emptied", {});
    EXPECT_FALSE(formatter->edited());
    EXPECT_EQ(stored("emptied-Edited"), Value(false));
    EXPECT_FALSE(formatter->formats().empty());
}

TEST_F(PhoneFormatList, ReachesTheOtherFormattersOfItsName)
{
    const auto one = with("shared", {"###"}), other = bound("shared"), stranger = with("stranger", {"#"});
    int told = 0;
    auto listening = platform::NotificationCenter::shared().subscribe(
        kZRPhoneFormatChangedNotification, one.get(), [&](const platform::Notification&) { ++told; });
    one->addFormat("##");
    EXPECT_EQ(told, 1);
    EXPECT_THAT(other->formats(), ElementsAre("###", "##"));
    EXPECT_EQ(other->stringForObjectValue("1-2"), "12");
    one->setEnabled(false);
    one->setEnabled(false);
    EXPECT_EQ(told, 2) << "nothing changed the second time";
    EXPECT_EQ(other->stringForObjectValue("1-2"), "1-2");
    one->setEdited(true);
    one->setEdited(true);
    EXPECT_EQ(told, 3);
    EXPECT_FALSE(other->edited()) << "read when the name is set, and not again";
    EXPECT_THAT(stranger->formats(), ElementsAre("#"));
    listening.cancel();
}

TEST_F(PhoneFormatList, ComesFromTheUsersOwnResourceWhereThereIsOne)
{
    const std::pair<const char*, const char*> cases[] = {
        {"<plist><dict><key>us</key><array><array><string>#.#.#</string></array></array></dict></plist>",
            "1.2.3"},
        {"<plist><array/></plist>", "123"}, {"<plist><dict><key>us</key><string/></dict></plist>", "123"},
        {"torn", "123 | ZRPhoneFormats.plist: "}};
    for (const auto& [resource, shown] : cases) {
        const test::Home home;
        test::fs::create_directories(home.rosterDirectory());
        std::ofstream(home.rosterDirectory() / "ZRPhoneFormats.plist") << resource;
        const auto outcome = home.play("show a number", {"123"});
        EXPECT_EQ(outcome.status, 0) << outcome.log;
        EXPECT_THAT(outcome.answer, testing::StartsWith(shown)) << resource;
    }
}

} // namespace
