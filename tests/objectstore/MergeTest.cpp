// What comes of changes that two contexts made to the same objects.
#include "objectstore/TestStore.h"

#include "platform/run/Log.h"
#include "support/SQL.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace test {
namespace {

using testing::ElementsAre;

class MergeTest : public testing::Test {
protected:
    const Store store;
    const platform::Ref<os::StoreContext> mine = store.makeContext(), theirs = store.makeContext();
    platform::LogCapture log;
};

TEST_F(MergeTest, AttributesMergeOneByOneAndMemoryWins)
{
    addAuthor(*mine, "Ana");
    must(mine->save());
    const ObjectRef here = fetchAuthor(*mine, "Ana"), there = fetchAuthor(*theirs, "Ana");
    here->setValueForKey("name", "Mine");
    here->setValueForKey("rating", 1.0);
    there->setValueForKey("rating", 2.0);
    there->setValueForKey("visits", 9);
    must(theirs->save());
    must(mine->save());
    must(theirs->catchUp());
    for (const auto& author : {here, there}) {
        EXPECT_EQ(author->valueForKey("name"), Value("Mine"));
        EXPECT_EQ(author->valueForKey("rating"), Value(1.0));
        EXPECT_EQ(author->valueForKey("visits"), Value(9));
    }
}

TEST_F(MergeTest, WhatWasDeletedElsewhereStaysDeleted)
{
    const ObjectRef here = addAuthor(*mine, "Ana");
    const ObjectRef shelf = mine->insertObjectOfEntity("Shelf"), book = mine->insertObjectOfEntity("Book");
    must(mine->save());
    theirs->deleteObject(*fetchAuthor(*theirs, "Ana"));
    here->setValueForKey("name", "Mine");
    const ObjectRef handle = addHandle(*mine, *here, {"h1", "x", 0, true});
    shelf->setRelated(shelf->slot("featured"), here.get());
    book->addObject(book->slot("authors"), *here);
    must(theirs->save());
    must(mine->save());
    EXPECT_TRUE(log.contains("was deleted elsewhere"));
    EXPECT_EQ(here->context(), nullptr);
    EXPECT_EQ(handle->context(), nullptr);
    EXPECT_TRUE(fetchAll(*mine, "Author").empty());
    EXPECT_TRUE(fetchAll(*mine, "Handle").empty());
    EXPECT_EQ(shelf->related(shelf->slot("featured")), nullptr);
    EXPECT_TRUE(book->objects(book->slot("authors")).empty());
}

TEST_F(MergeTest, AFaultOfADeletedRowTellsSo)
{
    const ObjectRef here = addAuthor(*mine, "Ana");
    must(mine->save());
    const ObjectRef fault = theirs->objectForStoreId(here->storeId());
    mine->deleteObject(*here);
    must(mine->save());
    EXPECT_THROW(fault->valueForKey("name"), os::InaccessibleObject);
}

TEST_F(MergeTest, BothAddingTheOneBiographyLeavesOne)
{
    addAuthor(*mine, "Ana");
    must(mine->save());
    for (auto* context : {theirs.get(), mine.get()}) {
        const ObjectRef author = fetchAuthor(*context, "Ana");
        const ObjectRef biography = context->insertObjectOfEntity("Biography");
        biography->setValueForKey("text", context == mine.get() ? "mine" : "theirs");
        author->setRelated(author->slot("biography"), biography.get());
    }
    must(theirs->save());
    must(mine->save());
    EXPECT_THAT(texts(fetchAll(*store.makeContext(), "Biography"), "text"), ElementsAre("mine"));
}

TEST_F(MergeTest, AContextThatMissedMoreThanIsKeptLooksAtEverything)
{
    const ObjectRef kept = addAuthor(*mine, "Ana"), gone = addAuthor(*mine, "Bo");
    must(mine->save());
    const ObjectRef there = fetchAuthor(*theirs, "Bo");
    theirs->deleteObject(*there);
    fetchAuthor(*theirs, "Ana")->setValueForKey("visits", 4);
    must(theirs->save());
    // As if so much had happened since that the records were thrown away.
    runSQL(store.store->path(),
        "DELETE FROM store_deletion; UPDATE store_state SET deletionsFrom = commitNumber");
    EXPECT_EQ(kept->valueForKey("visits"), Value(0)) << "nothing is noticed without a look at the store";
    must(mine->catchUp());
    EXPECT_EQ(kept->valueForKey("visits"), Value(4));
    EXPECT_EQ(gone->context(), nullptr);
}

/// One entry a letter, its text a digit: "a1*" is entry a with text 1, primary.
using Unit = std::vector<std::string>;

class UnitMergeTest : public MergeTest {
protected:
    static Unit unitOf(StoreObject& author)
    {
        ObjectList handles = author.objects(author.slot("handles"));
        std::ranges::sort(
            handles, {}, [](const ObjectRef& handle) { return handle->integer(handle->slot("place")); });
        Unit unit;
        for (const auto& handle : handles)
            unit.push_back(textOf(*handle, "uniqueId") + textOf(*handle, "text")
                + (handle->boolean(handle->slot("isPrimary")) ? "*" : ""));
        return unit;
    }

    /// As multi-values are written: every row goes, and all are made anew.
    static void rewrite(os::StoreContext& context, StoreObject& author, const Unit& unit)
    {
        for (const auto& handle : author.objects(author.slot("handles")))
            context.deleteObject(*handle);
        int place = 0;
        for (const auto& entry : unit)
            addHandle(context, author,
                {entry.substr(0, 1), entry.substr(1, 1), place++, entry.ends_with('*'), "site"});
    }

    /// Entry by entry, on the rows that are there.
    static void edit(os::StoreContext& context, StoreObject& author, const Unit& unit)
    {
        ObjectList handles = author.objects(author.slot("handles"));
        int place = 0;
        for (const auto& entry : unit) {
            const auto found = std::ranges::find_if(handles, [&](const ObjectRef& handle) {
                return handle->text(handle->slot("uniqueId")) == entry.substr(0, 1);
            });
            if (found == handles.end()) {
                addHandle(context, author,
                    {entry.substr(0, 1), entry.substr(1, 1), place++, entry.ends_with('*'), "site"});
                continue;
            }
            (*found)->setValueForKey("text", entry.substr(1, 1));
            (*found)->setValueForKey("place", place++);
            (*found)->setValueForKey("isPrimary", entry.ends_with('*'));
            handles.erase(found);
        }
        for (const auto& handle : handles)
            context.deleteObject(*handle);
    }
};

TEST_F(UnitMergeTest, KeepsWhatBothMeant)
{
    const struct {
        const char* what;
        Unit base, mine, theirs, merged;
    } rows[] = {
        {"both add", {"a1*"}, {"a1*", "b2"}, {"a1*", "c3"}, {"a1*", "c3", "b2"}},
        {"both add the same", {"a1*"}, {"a1*", "b2"}, {"a1*", "b3"}, {"a1*", "b2"}},
        {"I edit one, they another", {"a1*", "b1"}, {"a2*", "b1"}, {"a1*", "b2"}, {"a2*", "b2"}},
        {"both edit one", {"a1*", "b1"}, {"a2*", "b1"}, {"a3*", "b1"}, {"a2*", "b1"}},
        {"I remove, they add", {"a1*", "b1"}, {"a1*"}, {"a1*", "b1", "c1"}, {"a1*", "c1"}},
        {"they remove, I add", {"a1*", "b1"}, {"a1*", "b1", "c1"}, {"a1*"}, {"a1*", "c1"}},
        {"they remove what I keep", {"a1*", "b1"}, {"a2*", "b1"}, {"a1*"}, {"a2*"}},
        {"they remove the primary", {"a1*", "b1"}, {"a1*", "b2"}, {"b1*"}, {"b2*"}},
        {"I remove the primary, they add", {"a1*", "b1"}, {"b1*"}, {"a1*", "b1", "c1"}, {"b1*", "c1"}},
        {"both choose a primary", {"a1*", "b1", "c1"}, {"a1", "b1*", "c1"}, {"a1", "b1", "c1*"},
            {"a1", "b1*", "c1"}},
        {"they choose a primary", {"a1*", "b1"}, {"a1*", "b2"}, {"a1", "b1*"}, {"a1", "b2*"}},
        {"both clear", {"a1*"}, {}, {}, {}},
        {"I clear, they add", {"a1*"}, {}, {"a1*", "b1"}, {"b1*"}},
        {"from nothing", {}, {"a1*"}, {"b1*"}, {"b1", "a1*"}},
    };
    using Way = void (*)(os::StoreContext&, StoreObject&, const Unit&);
    const std::pair<const char*, Way> ways[]{{"rewrite", &rewrite}, {"edit", &edit}};
    for (const auto& row : rows)
        for (const auto& [mySay, myWay] : ways)
            for (const auto& [theirSay, theirWay] : ways)
                for (const bool looksBetween : {false, true}) {
                    const std::string name = std::string(row.what) + ": I " + mySay + ", they " + theirSay
                        + (looksBetween ? ", I look" : "");
                    SCOPED_TRACE(name);
                    rewrite(*mine, *addAuthor(*mine, name), row.base);
                    must(mine->save());
                    const ObjectRef here = fetchAuthor(*mine, name), there = fetchAuthor(*theirs, name);
                    theirWay(*theirs, *there, row.theirs);
                    myWay(*mine, *here, row.mine);
                    must(theirs->save());
                    if (looksBetween)
                        must(mine->catchUp());
                    must(mine->save());
                    EXPECT_EQ(unitOf(*here), row.merged);
                    EXPECT_EQ(unitOf(*fetchAuthor(*theirs, name)), row.merged);
                    EXPECT_EQ(unitOf(*fetchAuthor(*store.makeContext(), name)), row.merged);
                }
}

TEST_F(MergeTest, UnitsOfOneOwnerAreApart)
{
    const ObjectRef here = addAuthor(*mine, "Ana");
    addHandle(*mine, *here, {"a", "1", 0, true, "chat"});
    addHandle(*mine, *here, {"a", "2", 0, true, "mail"});
    must(mine->save());
    const ObjectRef there = fetchAuthor(*theirs, "Ana");
    for (const auto& handle : there->objects(there->slot("handles")))
        if (handle->valueForKeyPath("site.name") == Value("chat"))
            theirs->deleteObject(*handle);
    for (const auto& handle : here->objects(here->slot("handles")))
        if (handle->valueForKeyPath("site.name") == Value("mail"))
            handle->setValueForKey("text", "3");
    must(theirs->save());
    must(mine->save());
    EXPECT_THAT(texts(fetchAll(*store.makeContext(), "Handle"), "text"), ElementsAre("3"));
}

TEST_F(MergeTest, ContextsTakeInWhatOthersSavedWithoutBeingTold)
{
    const ObjectRef here = addAuthor(*mine, "Ana");
    addHandle(*mine, *here, {"a", "1", 0, true});
    must(mine->save());
    const ObjectRef there = fetchAuthor(*theirs, "Ana");
    const ObjectRef handle = there->objects(there->slot("handles")).front();
    here->setValueForKey("name", "Bo");
    here->objects(here->slot("handles")).front()->setValueForKey("text", "2");
    addHandle(*mine, *here, {"b", "3", 1, false});
    must(mine->save());
    EXPECT_EQ(must(theirs->countFetch(os::StoreFetch(entityNamed("Shelf")))), 0u);
    EXPECT_EQ(there->valueForKey("name"), Value("Bo"));
    EXPECT_EQ(handle->valueForKey("text"), Value("2"));
    EXPECT_THAT(texts(there->objects(there->slot("handles")), "text"), ElementsAre("2", "3"));
    EXPECT_EQ(static_cast<Author&>(*there).faults, 1);
}

} // namespace
} // namespace test
