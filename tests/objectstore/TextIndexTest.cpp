// Whether the trigram table says what the indexed rows say, whatever was done to them.
#include "objectstore/TestStore.h"

#include "support/SQL.h"

#include <gtest/gtest.h>

namespace test {
namespace {

class TextIndexTest : public testing::Test {
protected:
    ObjectRef addIndexed(std::string_view text)
    {
        const ObjectRef author = addAuthor(*context, "Author");
        const ObjectRef index = context->insertObjectOfEntity("Index");
        index->setValueForKey("text", text);
        index->setValueForKey("author", author);
        return author;
    }

    /// The names of authors whose entry has the trigram.
    std::string having(const std::string& trigram) const
    {
        return runSQL(path, "SELECT group_concat(rowid, ' ') FROM author_index_text('\"" + trigram + "\"')");
    }

    int segments() const
    {
        return std::stoi(runSQL(path, "SELECT count(DISTINCT segid) FROM author_index_text_idx"));
    }

    /// Checks the table against the texts, by the full-text engine's own means.
    void expectConsistent() const
    {
        EXPECT_NO_THROW(runSQL(
            path, "INSERT INTO author_index_text(author_index_text, rank) VALUES('integrity-check', 1)"));
    }

    const std::string path = freshPath();
    const Store store{path};
    const platform::Ref<os::StoreContext> context = store.makeContext();
};

TEST_F(TextIndexTest, FollowsInsertsChangesAndDeletes)
{
    const ObjectRef ana = addIndexed("ana lima"), bo = addIndexed("bo ek lima");
    addIndexed("");
    must(context->save());
    const std::string anaKey = std::to_string(ana->key()), boKey = std::to_string(bo->key());
    EXPECT_EQ(having("lim"), anaKey + " " + boKey);
    ana->setValueForKeyPath("index.text", "ana ferro");
    must(context->save());
    EXPECT_EQ(having("lim"), boKey);
    EXPECT_EQ(having("fer"), anaKey);
    ana->setValueForKeyPath("index.text", Value());
    must(context->save());
    EXPECT_EQ(having("fer"), "");
    context->deleteObject(*bo);
    must(context->save());
    EXPECT_EQ(having("lim"), "");
    expectConsistent();
}

TEST_F(TextIndexTest, MovesWithItsOwner)
{
    const ObjectRef ana = addIndexed("lima"), bo = addAuthor(*context, "Bo");
    must(context->save());
    ana->related(ana->slot("index"))->setValueForKey("author", bo);
    must(context->save());
    EXPECT_EQ(having("lim"), std::to_string(bo->key()));
    expectConsistent();
}

TEST_F(TextIndexTest, TakesOutWhatIsStoredNotWhatIsRemembered)
{
    const ObjectRef ana = addIndexed("lima");
    must(context->save());
    const auto other = store.makeContext();
    fetchAuthor(*other, "Author")->setValueForKeyPath("index.text", "ferro");
    ana->setValueForKeyPath("index.text", "castro");
    must(other->save());
    must(context->save());
    EXPECT_EQ(having("fer") + having("lim"), "");
    EXPECT_EQ(having("cas"), std::to_string(ana->key()));
    expectConsistent();
}

// Each save leaves a segment, and each search asks all of them.
TEST_F(TextIndexTest, StaysInFewSegmentsHoweverManySavesWriteIt)
{
    const ObjectRef ana = addIndexed("lima");
    for (int i = 0; i < 100; ++i) {
        ana->setValueForKeyPath("index.text", Value("ferro " + std::to_string(i)));
        must(context->save());
    }
    EXPECT_LT(segments(), 30);
    EXPECT_GT(segments(), 1);
    must(context->mergeTextIndex());
    EXPECT_EQ(segments(), 1);
    EXPECT_EQ(having("fer"), std::to_string(ana->key()));
    expectConsistent();
}

} // namespace
} // namespace test
