// The cards that come as examples: every one is read, whatever its script, version and picture.
#include "CardText.h"
#include "interchange/Corpus.h"

#include <gtest/gtest.h>

#include <map>

using namespace cardtext;

namespace {

std::vector<Setter> cardsOf(const std::string& file)
{
    std::vector<Setter> cards;
    const std::string data = test::contentsOf(test::kExampleCards / file);
    const auto parser = ZRVCardParser::initWithData(data);
    while (parser && !parser->atEnd())
        if (Setter setter; parser->importToValueSetter(setter))
            cards.push_back(std::move(setter));
        else
            ADD_FAILURE() << file << ", card " << cards.size() + 1 << ": " << parser->failureReason();
    return cards;
}

TEST(ExampleCards, AreAllRead)
{
    std::map<std::string, std::size_t> counts;
    for (const auto& entry : std::filesystem::directory_iterator(test::kExampleCards))
        counts[entry.path().filename()] = cardsOf(entry.path().filename()).size();
    const std::map<std::string, std::size_t> expected = {{"companies.vcf", 4}, {"east-asia.vcf", 5},
        {"europe.vcf", 7}, {"families.vcf", 3}, {"friends.vcf", 6}, {"greek-cyrillic.vcf", 4},
        {"hebrew-arabic.vcf", 4}, {"messaging.vcf", 2}, {"old-phone.vcf", 5}, {"photos.vcf", 3},
        {"thai-vietnamese.vcf", 3}, {"utf16.vcf", 2}};
    EXPECT_EQ(counts, expected);
}

TEST(ExampleCards, KeepTheirText)
{
    const std::pair<std::pair<const char*, std::size_t>, const char*> cases[] = {
        {{"friends.vcf", 2},
            "Address=[Summer cottage={City=Leeds, Country=United Kingdom, CountryCode=gb, State=West "
            "Yorkshire, "
            "Street=4 Mill Lane, ZIP=LS1 4AP}]\nFirst=Clara\nLast=Marsh\nMaidenName=Tidewell\n"
            "Phone=[Home=(555) 0102, Summer cottage=+1 555 0103]"},
        {{"old-phone.vcf", 1},
            "Address=[Home={City=Lübeck, Country=Germany, CountryCode=us, Street=Große Straße 5, "
            "ZIP=23552}]\n"
            "First=Jörg\nLast=Müller\nPhone=[WorkFAX=+49 40 555012, HomeFAX=+49 40 555013]"},
        {{"old-phone.vcf", 2},
            "First=Íñigo\nJobTitle=Comprador\nLast=García\nNote=Llamar después de las 5.\nHabla inglés.\n"
            "Organization=Vinos del Norte\nZRDepartment=Ventas"},
        {{"old-phone.vcf", 3},
            "Birthday=@312811200\nFirst=Ольга\nLast=Ковалёва\nPhone=[Mobile=+7 495 555 0114]"},
        {{"east-asia.vcf", 0},
            "Address=[Home={City=中央区, Country=日本, CountryCode=us, State=東京都, Street=銀座1-2-3, "
            "ZIP=104-0061}]\nFirst=花子\nFirstPhonetic=はなこ\nLast=山田\nLastPhonetic=やまだ\n"
            "Phone=[Mobile=+81 90 5555 0160]\nZRPersonFlags=16"},
        {{"families.vcf", 0},
            "First=Maya\nLast=Sandoval\nZRDate=[Anniversary=@1276948800]\n"
            "ZRRelatedNames=[Spouse=Teo Sandoval, Child=Rosa Sandoval]"},
        {{"utf16.vcf", 1}, "Email=[Home=zoe@example.com]\nFirst=Zoë 😀\nLast=Ωmega"},
    };
    for (const auto& [place, text] : cases) {
        const auto cards = cardsOf(place.first);
        ASSERT_GT(cards.size(), place.second);
        EXPECT_EQ(cards[place.second].text(), text) << place.first;
    }
}

TEST(ExampleCards, KeepTheirPictures)
{
    const auto cards = cardsOf("photos.vcf");
    ASSERT_EQ(cards.size(), 3u);
    for (const std::size_t jpeg : {0u, 2u}) {
        EXPECT_TRUE(cards[jpeg].image.asBytes().starts_with("\xFF\xD8\xFF\xE0")) << jpeg;
        EXPECT_TRUE(cards[jpeg].image.asBytes().ends_with("\xFF\xD9")) << jpeg;
    }
    EXPECT_TRUE(cards[1].image.asBytes().starts_with("\x89PNG\r\n\x1A\n"));
    EXPECT_TRUE(cards[1].image.asBytes().ends_with(std::string_view("IEND\xAE\x42\x60\x82", 8)));
}

} // namespace
