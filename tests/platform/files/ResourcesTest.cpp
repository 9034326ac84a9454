// What the library carries, what may stand in for it, and which language is shown.
#include "platform/files/Resources.h"

#include "platform/files/Directories.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <map>

using namespace platform;
using namespace test;
using testing::ElementsAre;
using testing::Pair;

namespace {

/// Puts a file where it stands in for a resource, and takes it away again.
class StandIn {
public:
    StandIn(const std::string& library, const std::string& name, const std::string& bytes)
        : _path(library + "/Roster/" + name)
    {
        put(_path, bytes);
    }
    ~StandIn() { std::filesystem::remove(_path); }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

private:
    std::string _path;
};

TEST(ResourcesTest, AreCarriedInTheLibraryByteForByte)
{
    const std::filesystem::path folder = ROSTER_RESOURCES;
    const auto names = embeddedResourceNames();
    EXPECT_THAT(names, testing::Contains("strings/en/ZRStrings.strings"));
    for (const auto name : names)
        EXPECT_EQ(resource(name, ""), bytesOf(folder / name)) << name;
    EXPECT_EQ(resource("strings/en/Missing", "strings"), std::nullopt);
}

TEST(ResourcesTest, AreReplacedByTheUsersFilesAndThenTheSystems)
{
    const auto libraries = Directories::current()->libraries();
    ASSERT_EQ(libraries.size(), 2U);
    const StandIn system(libraries[1], "strings/en/ZRStrings.strings", "system");
    EXPECT_EQ(resource("strings/en/ZRStrings", "strings"), "system");
    const StandIn user(libraries[0], "strings/en/ZRStrings.strings", "user");
    EXPECT_EQ(resource("strings/en/ZRStrings", "strings"), "user");
}

TEST(StringTableFormat, IsReadLineByLine)
{
    const struct {
        const char* text;
        std::map<std::string, std::string, std::less<>> expected;
    } cases[] = {
        {"a=b\nc=d", {{"a", "b"}, {"c", "d"}}},
        {"\xEF\xBB\xBF# no = text\r\n\r\na=b\r\n", {{"a", "b"}}},
        {"_$!<Home>!$_=Zuhause", {{"_$!<Home>!$_", "Zuhause"}}},
        {"a=", {{"a", ""}}},
        {"a=b=c", {{"a", "b=c"}}},
        {"a\\=b=c\\=d\\\\", {{"a=b", "c=d\\"}}},
        {"a=one\\ntwo\\tthree", {{"a", "one\ntwo\tthree"}}},
        {"a= b \n", {{"a", " b "}}},
        {"a=1\na=2", {{"a", "2"}}},
        {"no separator\na=b\\", {{"a", "b\\"}}},
        {"", {}},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(parseStringTable(text), expected) << text;
}

TEST(StringTablesTest, FallBackToEnglishThenTheDefaultThenTheKey)
{
    const StandIn german(
        Directories::current()->dataHome(), "strings/de/ZRStrings.strings", "NO_NAME=Kein Name\n");
    const StringTables tables({"de_AT", "de"});
    EXPECT_EQ(tables.string("NO_NAME", "ZRStrings"), "Kein Name");
    EXPECT_EQ(tables.string("START_NICKNAME", "ZRStrings"), "“");
    EXPECT_EQ(tables.string("MISSING", "ZRStrings", "default"), "default");
    EXPECT_EQ(tables.string("MISSING", "ZRStrings"), "MISSING");
    EXPECT_EQ(tables.string("NO_NAME", "NoSuchTable"), "NO_NAME");
    EXPECT_EQ(StringTables({"tlh"}).string("NO_NAME", "ZRStrings"), "No Name");
    EXPECT_EQ(
        StringTables({"tlh", "zh_TW", "zh"}).string("ADDRESS_POSTAL_CODE", "ZRAddressLabels"), "郵遞區號");
    // Who wants English first is not shown another language behind it.
    EXPECT_EQ(StringTables({"en", "de"}).string("NO_NAME", "ZRStrings"), "No Name");
}

TEST(UserLanguages, FollowTheEnvironment)
{
    using Variables = std::map<std::string, const char*>;
    const std::pair<Variables, std::vector<std::string>> cases[] = {
        {{{"LANG", "pt_BR.UTF-8"}}, {"pt_BR", "pt"}},
        {{{"LANG", "de_DE@euro"}, {"LC_MESSAGES", "fr_FR"}}, {"fr_FR", "fr"}},
        {{{"LANG", "de"}, {"LC_MESSAGES", "fr"}, {"LC_ALL", "it"}}, {"it"}},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "fr:de_AT::de"}}, {"fr", "de_AT", "de"}},
        {{{"LANG", "C"}, {"LANGUAGE", "fr"}}, {}},
        {{{"LANG", "C.UTF-8"}}, {}},
        {{{"LANG", "POSIX"}, {"LANGUAGE", "fr"}}, {}},
        {{{"LANG", "C.UTF-8"}, {"LANGUAGE", "fr"}}, {"fr"}},
        {{{"LC_ALL", "C"}, {"LANG", "de_DE"}, {"LANGUAGE", "fr"}}, {}},
        {{{"LC_ALL", ""}, {"LANG", "de_DE.ISO-8859-1"}}, {"de_DE", "de"}},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "de_AT:fr"}}, {"de_AT", "de", "fr"}},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "it:C:fr"}}, {"it"}},
        {{{"LANG", "de_DE"}, {"LANGUAGE", "sr_RS.UTF-8@latin"}}, {"sr_RS", "sr"}},
        {{{"LANG", "tlh_AQ.UTF-8"}}, {"tlh_AQ", "tlh"}},
        {{{"LANG", "zh_HK.UTF-8"}}, {"zh_HK", "zh_TW", "zh"}},
        {{{"LANGUAGE", "sv"}}, {}},
        {{{"LANG", "../../etc"}}, {}},
        {{}, {}},
    };
    for (const auto& [variables, expected] : cases) {
        const auto value = [&names = variables](
                               const char* name) { return names.contains(name) ? names.at(name) : nullptr; };
        const ScopedVariable all("LC_ALL", value("LC_ALL")), messages("LC_MESSAGES", value("LC_MESSAGES")),
            lang("LANG", value("LANG")), language("LANGUAGE", value("LANGUAGE"));
        EXPECT_EQ(userLanguages(), expected) << testing::PrintToString(variables);
    }
}

} // namespace
