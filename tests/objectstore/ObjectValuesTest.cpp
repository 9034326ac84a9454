// What an object answers and accepts, hooks and key paths included.
#include "objectstore/TestStore.h"

#include <gmock/gmock.h>

namespace test {
namespace {

using platform::Date;
using platform::NullMarker;

class ObjectValuesTest : public testing::Test {
protected:
    const Store store;
    const platform::Ref<os::StoreContext> context = store.makeContext();
    ObjectRef author = addAuthor(*context, "Ana Lima");
    Author& hooks = static_cast<Author&>(*author);
};

struct Stored {
    const char* key;
    Value set;
    Value read;
};

TEST_F(ObjectValuesTest, KeepsEveryTypeThroughASaveAndAnotherContext)
{
    const Stored table[] = {
        {"name", "Zoë \xF0\x9F\x93\x9A", "Zoë \xF0\x9F\x93\x9A"},
        {"name", "", ""},
        {"name", NullMarker(), Value()},
        {"visits", -5, -5},
        {"visits", 2.9, 2},
        {"visits", true, 1},
        {"visits", INT64_MIN, INT64_MIN},
        {"rating", 4, 4.0},
        {"rating", -0.125, -0.125},
        {"rating", std::nan(""), Value()},
        {"score", 7, 7},
        {"score", 7.0, 7.0},
        {"isLiving", 1, true},
        {"isLiving", false, false},
        {"born", Date{-1.5e9}, Date{-1.5e9}},
        {"seal", Value::data(std::string_view("a\0b", 3)), Value::data(std::string_view("a\0b", 3))},
        {"seal", Value::data(""), Value::data("")},
        {"portrait", Value::data(std::string(300000, 'x')), Value::data(std::string(300000, 'x'))},
        {"portrait", Value(), Value()},
    };
    must(context->save());
    const auto other = store.makeContext();
    const ObjectRef seen = other->objectForStoreId(author->storeId());
    for (const auto& [key, set, read] : table) {
        SCOPED_TRACE(std::string(key) + " = " + set.description());
        author->setValueForKey(key, set);
        EXPECT_EQ(author->valueForKey(key), read);
        EXPECT_EQ(author->valueForKey(key).kind(), read.kind());
        must(context->save());
        EXPECT_EQ(author->valueForKey(key), read);
        must(other->catchUp());
        EXPECT_EQ(seen->valueForKey(key), read);
        EXPECT_EQ(seen->valueForKey(key).kind(), read.kind());
    }
}

TEST_F(ObjectValuesTest, RefusesWhatASlotCannotHold)
{
    const std::pair<const char*, Value> table[] = {{"name", 5}, {"name", Value::data("x")}, {"visits", "5"},
        {"born", 5.0}, {"seal", "text"}, {"isLiving", "YES"}, {"noSuchKey", 1}, {"books", author},
        {"biography", "text"}, {"featuredIn", author}};
    for (const auto& [key, value] : table)
        EXPECT_THROW(author->setValueForKey(key, value), os::InvalidKey) << key;
    EXPECT_THROW(author->valueForKey("noSuchKey"), os::InvalidKey);
    EXPECT_EQ(author->valueForKey("name"), Value("Ana Lima"));
}

TEST_F(ObjectValuesTest, ALazyValueIsKeptWithoutAChangeAndWrittenWithTheNextOne)
{
    EXPECT_EQ(author->text(author->slot("sortName")), "Lima Ana");
    must(context->save());
    const auto other = store.makeContext();
    const ObjectRef plain = fetchAuthor(*other, "Ana Lima");
    EXPECT_EQ(plain->primitiveValue(plain->slot("sortName")), Value("Lima Ana"));
    author->setValueForKey("name", "Bo Ek");
    must(context->save());
    // The hook cleared it, nobody asked for it, so it was stored as absent.
    must(other->catchUp());
    EXPECT_TRUE(plain->primitiveValue(plain->slot("sortName")).isAbsent());
    EXPECT_EQ(plain->valueForKey("sortName"), Value("Ek Bo"));
    EXPECT_FALSE(plain->hasChanges());
    EXPECT_FALSE(other->hasChanges());
    plain->setValueForKey("visits", 1);
    must(other->save());
    must(context->catchUp());
    EXPECT_EQ(author->primitiveValue(author->slot("sortName")), Value("Ek Bo"));
}

TEST_F(ObjectValuesTest, AKeptValueGoesWithTheRowThatItCameFrom)
{
    must(context->save());
    const auto other = store.makeContext();
    const ObjectRef plain = fetchAuthor(*other, "Ana Lima");
    EXPECT_EQ(plain->valueForKey("sortName"), Value("Lima Ana"));
    author->setValueForKey("name", "Bo Ek");
    must(context->save());
    must(other->catchUp());
    EXPECT_EQ(plain->valueForKey("sortName"), Value("Ek Bo"));
    EXPECT_EQ(static_cast<Author&>(*plain).faults, 1);
}

TEST_F(ObjectValuesTest, ComputedKeysGoThroughTheirHooks)
{
    EXPECT_EQ(author->valueForKey("nameLength"), Value(8));
    author->setValueForKey("nameLength", 3);
    EXPECT_EQ(author->valueForKey("name"), Value("Ana"));
}

TEST_F(ObjectValuesTest, TransientValuesLiveWithTheObjectOnly)
{
    must(context->save());
    author->setValueForKey("draft", Value::array({1, "two"}));
    EXPECT_FALSE(context->hasChanges());
    author->setValueForKey("visits", 1);
    must(context->save());
    context->refreshObject(*author, true);
    EXPECT_EQ(author->valueForKey("draft"), Value::array({1, "two"}));
}

TEST_F(ObjectValuesTest, SettingWhatIsThereChangesNothing)
{
    must(context->save());
    author->setValueForKey("visits", 0);
    author->setValueForKey("uniqueId", "Ana Lima:Author");
    EXPECT_FALSE(context->hasChanges());
    author->setValueForKey("visits", 3);
    EXPECT_TRUE(author->hasChanged(author->slot("visits")));
    author->setValueForKey("visits", 0);
    EXPECT_FALSE(author->hasChanged(author->slot("visits")));
}

TEST_F(ObjectValuesTest, PublicSetsRunHooksAndPrimitiveOnesDoNot)
{
    hooks.changes.clear();
    author->setValueForKey("name", "Bo Ek");
    author->setPrimitiveValue(author->slot("name"), "Cy Fo");
    author->setValueForKey("visits", 2);
    EXPECT_THAT(hooks.changes, testing::ElementsAre("name", "visits"));
}

TEST_F(ObjectValuesTest, KeyPathsCrossObjectsAndLists)
{
    const ObjectRef shelf = context->insertObjectOfEntity("Shelf");
    for (const char* title : {"One", "Two"}) {
        const ObjectRef book = context->insertObjectOfEntity("Book");
        book->setValueForKey("title", title);
        book->setValueForKey("shelf", shelf);
        author->addObject(author->slot("books"), *book);
    }
    EXPECT_EQ(author->valueForKeyPath("books.title"), Value::array({"One", "Two"}));
    EXPECT_EQ(shelf->valueForKeyPath("contents.authors.name"), Value::array({"Ana Lima", "Ana Lima"}));
    EXPECT_TRUE(shelf->valueForKeyPath("featured.name").isAbsent());
    shelf->setValueForKey("featured", author);
    shelf->setValueForKeyPath("featured.name", "Bo Ek");
    EXPECT_EQ(author->valueForKey("name"), Value("Bo Ek"));
}

// A hundred thousand of them are listed at once.
TEST(StoreObjectSize, IsSmall) { EXPECT_LE(sizeof(StoreObject), 100u); }

} // namespace
} // namespace test
