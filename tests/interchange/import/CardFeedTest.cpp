// Reading ahead: in order, bounded, and stopped at any moment.
#include "interchange/import/ImportWorld.h"

#include "core/ZRConstants.h"
#include "interchange/import/CardFeed.h"
#include "interchange/import/ImportFile.h"
#include "interchange/vcard/VCardReaderContext.h"

namespace {

using interchange::CardFeed;
using interchange::CardSource;
using test::ImportTest;

class CardFeedTest : public ImportTest {
protected:
    static CardFeed feedOf(std::vector<CardSource> sources, CardFeed::Form form = CardFeed::Form::prepared)
    {
        return {std::move(sources), VCardReaderContext::standard(), {form, {}}};
    }
    static std::string lastName(const interchange::ReadCard& card)
    {
        return card.values ? std::string(card.values->valueForProperty(kZRLastNameProperty).asText()) : "";
    }
};

TEST_F(CardFeedTest, GivesTheCardsOfAllSourcesInOrder)
{
    const std::string first = cards(1000), second = cards(300);
    auto feed = feedOf({{"first", write("a.vcf", first), {}}, {"second", "", second}});
    std::size_t count = 0;
    std::uint64_t before = 0;
    while (const auto* card = feed.next()) {
        EXPECT_EQ(card->file, count < 1000 ? 0U : 1U);
        EXPECT_EQ(card->number, count % 1000 + 1);
        EXPECT_EQ(lastName(*card), "Family" + std::to_string(count % 1000));
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
        auto feed = feedOf({{"many", "", many}});
        for (int i = 0; i < taken; ++i)
            ASSERT_TRUE(feed.next());
    }
}

TEST_F(CardFeedTest, ReadsALargeFileThroughItsMapping)
{
    const std::string many = cards(100'000);
    ASSERT_GT(many.size(), interchange::ImportFile::kLargestReadWhole);
    auto mapped = feedOf({{"file", write("many.vcf", many), {}}}), held = feedOf({{"bytes", "", many}});
    while (const auto* card = mapped.next()) {
        const auto* same = held.next();
        ASSERT_TRUE(same);
        ASSERT_EQ(card->text, same->text);
        ASSERT_EQ(lastName(*card), lastName(*same));
    }
    EXPECT_FALSE(held.next());
}

// One parser reads them all: what breaks it is the last card of its file.
TEST_F(CardFeedTest, ReadsWhatIsNotPreparedUpToItsFirstBrokenCard)
{
    const std::string odd = cards(2) + "\r\nbegin\r\n" + cards(1), one = cards(1);
    auto feed = feedOf({{"odd", "", odd}, {"empty", "", ""}, {"one", "", one}}, CardFeed::Form::raw);
    struct Expected {
        std::size_t file, number, line;
        const char* name;
        const char* refusal;
    };
    for (const auto& [file, number, line, name, refusal] :
        {Expected{0, 1, 1, "Family0", ""}, {0, 2, 6, "Family1", ""}, {0, 3, 12, "", "Malformed :"},
            {1, 0, 0, "", "there is nothing in it"}, {2, 1, 1, "Family0", ""}}) {
        const auto* card = feed.next();
        ASSERT_TRUE(card);
        EXPECT_EQ(card->file, file);
        EXPECT_EQ(card->number, number);
        EXPECT_EQ(card->line, line);
        EXPECT_EQ(lastName(*card), name);
        EXPECT_EQ(card->refusal, refusal);
    }
    EXPECT_FALSE(feed.next());
}

TEST_F(CardFeedTest, StopsAtASourceThatCannotBeRead)
{
    const std::string one = cards(1);
    auto feed = feedOf({{"a", "", one}, {"folder", folder.string(), {}}, {"c", "", one}});
    ASSERT_TRUE(feed.next());
    EXPECT_FALSE(feed.next());
    ASSERT_TRUE(feed.unreadable());
    EXPECT_EQ(feed.unreadable()->file, 1U);
    EXPECT_THAT(feed.unreadable()->reason, testing::HasSubstr("directory"));
}

} // namespace
