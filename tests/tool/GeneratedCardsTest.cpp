// A thousand generated cards in both versions, field by field against the table that they were made from.
#include "tool/ToolWorld.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace {

using namespace test;

/// The columns of the table, in its order.
enum Column {
    uid,
    first,
    last,
    middle,
    title,
    name,
    organization,
    department,
    job,
    email1,
    email2,
    phone1,
    phone2,
    street,
    city,
    region,
    zip,
    country,
    note,
    birthday,
    label,
    labelledPhone,
    photoSize,
    columns
};

using Fields = std::vector<std::string>;

std::vector<Fields> tableIn(const std::string& path)
{
    std::vector<Fields> table;
    std::istringstream lines(contentsOf(path));
    for (std::string line; std::getline(lines, line);) {
        Fields fields(1);
        for (const char c : line)
            c == '\t' ? fields.emplace_back() : fields.back() += std::string(1, c);
        for (std::size_t at = 0; (at = fields[note].find("\\n", at)) != std::string::npos;)
            fields[note].replace(at, 2, "\n");
        table.push_back(std::move(fields));
    }
    return table;
}

std::string decoded(const std::string& base64)
{
    std::string bytes;
    unsigned bits = 0, count = 0;
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (const char c : base64) {
        const auto digit = digits.find(c);
        if (digit == std::string::npos)
            break;
        bits = bits << 6U | static_cast<unsigned>(digit);
        count += 6;
        if (count >= 8)
            bytes += static_cast<char>(bits >> (count -= 8) & 0xFFU);
    }
    return bytes;
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
            photos[lastUid] = decoded(std::exchange(photo, {}));
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
    const auto imported = world.tool({"import", world.path(std::string("v1000_") + GetParam() + ".vcf")});
    ASSERT_EQ(imported.status, 0) << imported.err;

    std::map<std::string, Json> cards;
    for (auto& card : world.cards())
        cards[at(card, "/properties/Email/0/value")] = card;
    const auto table = tableIn(world.path("v1000.tsv"));
    const auto photos = photosIn(world.path("v1000_30.vcf"));
    ASSERT_EQ(table.size(), 1000U);
    ASSERT_EQ(cards.size(), 1000U);
    for (const auto& row : table) {
        ASSERT_EQ(row.size(), static_cast<std::size_t>(columns));
        SCOPED_TRACE(row[email1]);
        const Json& card = cards[row[email1]];
        const std::pair<const char*, Column> expected[] = {{"First", first}, {"Last", last},
            {"Middle", middle}, {"Title", title}, {"Organization", organization},
            {"ZRDepartment", department}, {"JobTitle", job}, {"Email/1/value", email2},
            {"Phone/0/value", phone1}, {"Phone/1/value", phone2}, {"Phone/2/value", labelledPhone},
            {"Address/0/value/Street", street}, {"Address/0/value/City", city},
            {"Address/0/value/State", region}, {"Address/0/value/ZIP", zip},
            {"Address/0/value/Country", country}, {"Note", note}, {"Birthday", birthday}};
        ASSERT_TRUE(card.is_object());
        for (const auto& [pointer, column] : expected)
            EXPECT_EQ(at(card, std::string("/properties/") + pointer), row[column]) << pointer;
        const auto photo = photos.find(row[uid]);
        ASSERT_EQ(photo == photos.end() ? "0" : std::to_string(photo->second.size()), row[photoSize]);
        EXPECT_TRUE(world.picture(card) == (photo == photos.end() ? "" : photo->second)) << "photo";
    }
}

INSTANTIATE_TEST_SUITE_P(BothVersions, GeneratedCardsTest, testing::Values("30", "21"));

} // namespace
