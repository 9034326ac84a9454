// Whether every translation says what the English table says, and nothing else.
#include "platform/files/Resources.h"
#include "platform/value/Unicode.h"

#include <gmock/gmock.h>

#include <set>

namespace platform {
namespace {

/// What a translation begins with that lacks no text.
constexpr std::string_view kClaim = "# Complete:";

/// Of "strings/<language>/<table>.strings", the bytes by the name; those of the English table instead.
std::string bytesOf(std::string_view name) { return resource(name, "").value_or(""); }
std::string englishOf(std::string_view name)
{
    return bytesOf("strings/en" + std::string(name.substr(name.find('/', sizeof "strings/"))));
}

std::vector<std::string_view> tables()
{
    auto names = embeddedResourceNames();
    std::erase_if(names, [](std::string_view name) { return !name.starts_with("strings/"); });
    return names;
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

TEST(Translations, HaveTheKeysAndPlaceholdersOfTheEnglishTable)
{
    int complete = 0;
    for (const auto table : tables()) {
        const auto texts = parseStringTable(bytesOf(table)), english = parseStringTable(englishOf(table));
        for (const auto& [key, text] : texts) {
            ASSERT_TRUE(english.contains(key)) << table << ": " << key;
            EXPECT_EQ(placeholders(text), placeholders(english.at(key))) << table << ": " << key;
        }
        const bool isComplete = bytesOf(table).starts_with(kClaim);
        complete += isComplete;
        EXPECT_TRUE(!isComplete || texts.size() == english.size()) << table;
    }
    // Two tables of sixteen languages besides English.
    EXPECT_GE(complete, 2 * 16);
}

TEST(Translations, AreUtf8WithATextForEachKeyOnItsOwnLine)
{
    for (const auto table : tables()) {
        const std::string bytes = bytesOf(table);
        EXPECT_TRUE(propertylist::isUTF8(bytes)) << table;
        std::set<std::string> seen;
        for (std::string_view rest = bytes; !rest.empty();) {
            const auto line = rest.substr(0, rest.find('\n'));
            rest.remove_prefix(std::min(line.size() + 1, rest.size()));
            const auto one = parseStringTable(line);
            EXPECT_TRUE(line.empty() || line.starts_with('#') || one.size() == 1) << table << ": " << line;
            for (const auto& [key, text] : one)
                EXPECT_TRUE(seen.insert(key).second && !text.empty()) << table << ": " << line;
        }
    }
}

} // namespace
} // namespace platform
