// Reading ahead: in order, bounded, and stopped at any moment.
#include "interchange/import/ImportWorld.h"

#include "interchange/import/CardFeed.h"
#include "interchange/import/ImportFile.h"

namespace {

using interchange::CardFeed;
using interchange::CardSource;
using test::ImportTest;

class CardFeedTest : public ImportTest { };

TEST_F(CardFeedTest, GivesTheCardsOfAllSourcesInOrder)
{
    const std::string first = cards(1000), second = cards(300);
    CardFeed feed({{"first", write("a.vcf", first), {}}, {"second", "", second}}, {});
    std::size_t count = 0;
    std::uint64_t before = 0;
    while (const auto* card = feed.next()) {
        EXPECT_EQ(card->file, count < 1000 ? 0U : 1U);
        EXPECT_EQ(card->number, count % 1000 + 1);
        EXPECT_THAT(
            std::string(card->bytes()), testing::HasSubstr("N:Family" + std::to_string(count % 1000) + ";"));
        EXPECT_GE(card->bytesDone, before);
        before = card->bytesDone;
        ++count;
    }
    EXPECT_EQ(count, 1300U);
    EXPECT_EQ(before, first.size() + second.size());
    EXPECT_EQ(feed.reports().size(), 2U);
    EXPECT_FALSE(feed.unreadable());
}

// The thread that reads ahead stands at a full queue then.
TEST_F(CardFeedTest, EndsAtOnceWhenNobodyWantsTheRest)
{
    const std::string many = cards(50'000);
    for (int taken : {0, 1, 1000}) {
        CardFeed feed({{"many", "", many}}, {});
        for (int i = 0; i < taken; ++i)
            ASSERT_TRUE(feed.next());
    }
}

TEST_F(CardFeedTest, ReadsALargeFileThroughItsMapping)
{
    const std::string many = cards(100'000);
    ASSERT_GT(many.size(), interchange::ImportFile::kLargestReadWhole);
    CardFeed mapped({{"file", write("many.vcf", many), {}}}, {}), held({{"bytes", "", many}}, {});
    while (const auto* card = mapped.next()) {
        const auto* same = held.next();
        ASSERT_TRUE(same);
        ASSERT_EQ(card->bytes(), same->bytes());
    }
    EXPECT_FALSE(held.next());
}

TEST_F(CardFeedTest, GivesWhatIsNotPreparedAsItIs)
{
    const std::string odd = "begin:vcard\nN:x\n\n\nEND:VCARD";
    CardFeed feed({{"odd", "", odd}}, {CardFeed::Form::raw, 0});
    ASSERT_EQ(feed.next()->bytes(), odd);
    EXPECT_FALSE(feed.next());
}

TEST_F(CardFeedTest, StopsAtASourceThatCannotBeRead)
{
    const std::string one = cards(1);
    CardFeed feed({{"a", "", one}, {"folder", folder.string(), {}}, {"c", "", one}}, {});
    ASSERT_TRUE(feed.next());
    EXPECT_FALSE(feed.next());
    ASSERT_TRUE(feed.unreadable());
    EXPECT_EQ(feed.unreadable()->file, 1U);
    EXPECT_THAT(feed.unreadable()->reason, testing::HasSubstr("directory"));
}

} // namespace
