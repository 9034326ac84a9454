// Whether every translation says what the English table says, and nothing else.
#include "platform/files/Resources.h"
#include "platform/value/Unicode.h"

#include <gmock/gmock.h>

#include <map>
#include <set>

namespace platform {
namespace {

using Texts = std::map<std::string, std::string, std::less<>>;

/// What a translation begins with that lacks no text.
constexpr std::string_view kClaim = "# Complete:";

struct Table {
    std::string_view resource;
    std::string language, name;
    std::string bytes;
    Texts texts;
};

/// "strings/<language>/<table>.strings"
std::vector<Table> allTables()
{
    std::vector<Table> tables;
    for (const auto resourceName : embeddedResourceNames()) {
        if (!resourceName.starts_with("strings/"))
            continue;
        const auto language = resourceName.substr(8, resourceName.find('/', 8) - 8);
        const auto name = resourceName.substr(9 + language.size());
        const auto bytes = resource(resourceName, "").value_or("");
        tables.push_back(
            {resourceName, std::string(language), std::string(name), bytes, parseStringTable(bytes)});
    }
    return tables;
}

/// "%@", "%d" and the like, in their order.
std::vector<std::string> placeholders(std::string_view text)
{
    std::vector<std::string> found;
    for (auto at = text.find('%'); at != std::string_view::npos && at + 1 < text.size();
         at = text.find('%', at + 2))
        found.emplace_back(text.substr(at, 2));
    return found;
}

std::set<std::string> keysOf(const Texts& texts)
{
    std::set<std::string> keys;
    for (const auto& [key, text] : texts)
        keys.insert(key);
    return keys;
}

class Translations : public testing::Test {
protected:
    const std::vector<Table> tables = allTables();

    const Texts& english(const std::string& name) const
    {
        for (const auto& table : tables)
            if (table.language == "en" && table.name == name)
                return table.texts;
        static const Texts none;
        return none;
    }
};

TEST_F(Translations, HaveTheKeysOfTheEnglishTable)
{
    int complete = 0;
    for (const auto& table : tables) {
        const auto keys = keysOf(table.texts), known = keysOf(english(table.name));
        const bool isComplete = table.bytes.starts_with(kClaim);
        complete += isComplete;
        EXPECT_TRUE(!isComplete || keys == known) << table.resource;
        EXPECT_THAT(known, testing::IsSupersetOf(keys)) << table.resource;
    }
    // Two tables of sixteen languages besides English.
    EXPECT_GE(complete, 2 * 16);
}

TEST_F(Translations, KeepThePlaceholdersOfTheEnglishText)
{
    for (const auto& table : tables)
        for (const auto& [key, text] : table.texts)
            EXPECT_EQ(placeholders(text), placeholders(english(table.name).at(key)))
                << table.resource << " " << key;
}

TEST_F(Translations, AreUtf8WithATextForEachKeyOnItsOwnLine)
{
    for (const auto& table : tables) {
        EXPECT_TRUE(propertylist::isUTF8(table.bytes)) << table.resource;
        std::set<std::string> seen;
        for (std::string_view rest = table.bytes; !rest.empty();) {
            const auto line = rest.substr(0, rest.find('\n'));
            rest.remove_prefix(std::min(line.size() + 1, rest.size()));
            const auto one = parseStringTable(line);
            EXPECT_TRUE(line.empty() || line.starts_with('#') || one.size() == 1)
                << table.resource << ": " << line;
            for (const auto& [key, text] : one)
                EXPECT_TRUE(seen.insert(key).second && !text.empty()) << table.resource << ": " << line;
        }
    }
}

TEST(TranslatedTexts, AreThoseOfTheUsersLanguage)
{
    const struct {
        std::vector<std::string> languages;
        const char* text;
    } cases[] = {
        {{"de_AT", "de"}, "Postleitzahl"},
        {{"tlh", "fr"}, "Code postal"},
        {{"zh_HK", "zh_TW", "zh"}, "郵遞區號"},
        {{"zh_CN", "zh"}, "邮政编码"},
        {{"pt_BR", "pt"}, "CEP"},
        {{"tlh"}, "Postal Code"},
        {{}, "Postal Code"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(StringTables(c.languages).string("ADDRESS_POSTAL_CODE", "ZRAddressLabels"), c.text)
            << testing::PrintToString(c.languages);
}

} // namespace
} // namespace platform
