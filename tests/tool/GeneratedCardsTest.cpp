// A thousand generated cards in both versions, field by field against the table that they were made from.
#include "platform/value/Base64.h"
#include "tool/ToolWorld.h"

#include <map>
#include <sstream>

namespace {

using namespace test;

/// Where the fields of a row of the table are in the properties of a card; those with "-" are looked at apart
/// or not in it.
const Words columns = {"-uid", "First", "Last", "Middle", "Title", "-name", "Organization", "ZRDepartment",
    "JobTitle", "Email/0/value", "Email/1/value", "Phone/0/value", "Phone/1/value", "Address/0/value/Street",
    "Address/0/value/City", "Address/0/value/State", "Address/0/value/ZIP", "Address/0/value/Country", "Note",
    "Birthday", "-label", "Phone/2/value", "-size of photo"};

/// A row of the table, by those names.
using Row = std::map<std::string, std::string>;

std::vector<Row> tableIn(const std::string& path)
{
    std::vector<Row> table;
    std::istringstream lines(contentsOf(path));
    for (std::string line; std::getline(lines, line);) {
        Row row;
        std::istringstream fields(line);
        for (const auto& column : columns)
            std::getline(fields, row[column], '\t');
        std::string& note = row["Note"];
        for (std::size_t at = 0; (at = note.find("\\n", at)) != note.npos;)
            note.replace(at, 2, "\n");
        table.push_back(std::move(row));
    }
    return table;
}

/// The photos of a file of version 3.0, by the UID of their card.
std::map<std::string, std::string> photosIn(const std::string& path)
{
    std::map<std::string, std::string> photos;
    std::string lastUid, header = "PHOTO;ENCODING=b;TYPE=JPEG:", photo;
    std::istringstream lines(contentsOf(path));
    for (std::string line; std::getline(lines, line);) {
        line.erase(line.find_last_not_of('\r') + 1);
        if (line.starts_with("UID:"))
            lastUid = line.substr(4);
        else if (line.starts_with(header))
            photo = line.substr(header.size());
        else if (!photo.empty() && line.starts_with(' '))
            photo += line.substr(1);
        else if (!photo.empty())
            photos[lastUid] =
                platform::propertylist::bytesFromBase64(std::exchange(photo, {})).value_or("no Base64");
    }
    return photos;
}

std::string at(const Json& object, const std::string& pointer)
{
    const Json::json_pointer path(pointer);
    return object.contains(path) ? object.at(path).get<std::string>() : std::string();
}

class GeneratedCardsTest : public testing::TestWithParam<const char*> { };

TEST_P(GeneratedCardsTest, ComeOutAsTheyWereMade)
{
    const std::string generator = sharedFolder("perf") + "/gen.py";
    const ToolWorld world;
    if (run({{"/usr/bin/python3", generator, "1000", world.path("")}}).status != 0)
        GTEST_SKIP() << "no generator of cards at " << generator;
    const auto imported = world.tool("import " + world.path(std::string("v1000_") + GetParam() + ".vcf"));
    ASSERT_EQ(imported.status, 0) << imported.err;

    std::map<std::string, Json> cards;
    for (auto& card : world.cards())
        cards[at(card, "/properties/Email/0/value")] = card;
    const auto table = tableIn(world.path("v1000.tsv"));
    auto photos = photosIn(world.path("v1000_30.vcf"));
    ASSERT_EQ(table.size(), 1000U);
    ASSERT_EQ(cards.size(), 1000U);
    for (auto row : table) {
        SCOPED_TRACE(row["Email/0/value"]);
        const Json& card = cards[row["Email/0/value"]];
        ASSERT_TRUE(card.is_object());
        for (const auto& [column, value] : row)
            if (!column.starts_with('-')) {
                EXPECT_EQ(at(card, "/properties/" + column), value) << column;
            }
        const std::string& photo = photos[row["-uid"]];
        ASSERT_EQ(std::to_string(photo.size()), row["-size of photo"]);
        EXPECT_TRUE(world.picture(card) == photo) << "photo";
    }
}

INSTANTIATE_TEST_SUITE_P(BothVersions, GeneratedCardsTest, testing::Values("30", "21"));

} // namespace
