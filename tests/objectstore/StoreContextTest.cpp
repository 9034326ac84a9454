// What a context does with objects: finding, changing, deleting, saving, forgetting.
#include "objectstore/TestStore.h"

#include "objectstore/ColumnFetch.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/Log.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <thread>

namespace test {
namespace {

using os::StoreFetch;
using os::StorePredicate;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class StoreContextTest : public testing::Test {
protected:
    std::vector<std::string> names(const StoreFetch& fetch)
    {
        return texts(must(context->runFetch(fetch)), "name");
    }
    StoreFetch byName() const
    {
        StoreFetch fetch(entityNamed("Author"));
        fetch.sortKeys = {{"name"}};
        return fetch;
    }

    const Store store;
    platform::Ref<os::StoreContext> context = store.makeContext();
};

TEST_F(StoreContextTest, TemporaryIdsBecomePermanentInOrderOfInsertion)
{
    const ObjectRef first = addAuthor(*context, "B"), second = addAuthor(*context, "A");
    const os::StoreId temporary = first->storeId();
    EXPECT_TRUE(temporary.isTemporary());
    EXPECT_EQ(context->objectRegisteredForID(temporary), first);
    must(context->save());
    EXPECT_FALSE(first->storeId().isTemporary());
    EXPECT_LT(first->key(), second->key());
    EXPECT_EQ(context->objectRegisteredForID(temporary), nullptr);
    EXPECT_EQ(context->objectForStoreId(first->storeId()), first);
}

TEST_F(StoreContextTest, AFetchAnswersForUnsavedChanges)
{
    for (const char* name : {"Ana", "Bo", "Cy", "Di", "Ed"})
        addAuthor(*context, name);
    must(context->save());
    fetchAuthor(*context, "Bo")->setValueForKey("name", "Zed");
    context->deleteObject(*fetchAuthor(*context, "Di"));
    addAuthor(*context, "Bea");
    EXPECT_THAT(names(byName()), ElementsAre("Ana", "Bea", "Cy", "Ed", "Zed"));
    StoreFetch part = byName();
    part.limit = 2;
    for (const auto& [offset, expected] :
        {std::pair<std::size_t, std::vector<std::string>>{0, {"Ana", "Bea"}}, {1, {"Bea", "Cy"}},
            {3, {"Ed", "Zed"}}, {4, {"Zed"}}, {9, {}}}) {
        part.offset = offset;
        EXPECT_EQ(names(part), expected) << offset;
        EXPECT_EQ(must(context->countFetch(part)), expected.size()) << offset;
    }
    part.sortKeys.front().ascending = false;
    part.offset = 0;
    EXPECT_THAT(names(part), ElementsAre("Zed", "Ed"));
    StoreFetch afterB(entityNamed("Author"), StorePredicate::compare("name", os::Comparator::greater, "B"));
    EXPECT_EQ(must(context->countFetch(afterB)), 4u);
    const auto before = names(byName());
    must(context->save());
    EXPECT_EQ(names(byName()), before);
}

// As the store has them and as they are before a save: the same columns, the first time without an object.
TEST_F(StoreContextTest, ColumnsOfManyAreReadWithoutMakingThem)
{
    const ObjectRef ana = addAuthor(*context, "Ana"), bo = addAuthor(*context, "Bo");
    addHandle(*context, *ana, {"h1", "ana@example.org", 0, true, "chat"});
    addHandle(*context, *bo, {"h2", "bo", 1, false});
    StoreFetch fetch(entityNamed("Handle"));
    constexpr std::string_view keys[] = {"text", "owner", "place", "site"};
    using Column = std::tuple<std::string, bool, std::int64_t, bool>;
    const auto columns = [&] {
        std::vector<Column> seen;
        must(os::fetchColumns(
            *context, fetch, keys, [&](std::int64_t, std::span<const os::FieldValue> fields) {
                seen.emplace_back(fields[0].bytes, fields[1].integer == ana->key(), fields[2].integer,
                    fields[3].kind == os::FieldKind::absent);
            }));
        return seen;
    };
    const std::vector<Column> expected = {{"ana@example.org", true, 0, false}, {"bo", false, 1, true}};
    EXPECT_EQ(columns(), expected);
    must(context->save());
    const auto registered = context->registeredObjects().size();
    EXPECT_EQ(columns(), expected);
    EXPECT_EQ(context->registeredObjects().size(), registered);
    fetch.offset = 1;
    EXPECT_THAT(columns(), ElementsAre(expected[1]));
    constexpr std::string_view computedLate[] = {"sortName"};
    EXPECT_THROW(must(os::fetchColumns(*context, StoreFetch(entityNamed("Author")), computedLate, {})),
        std::exception);
}

// With much unsaved, one text of an indexed key is looked up instead of asked of each.
TEST_F(StoreContextTest, FindsOneTextAmongManyUnsavedObjects)
{
    ObjectList authors;
    for (int i = 0; i < 100; ++i)
        authors.push_back(addAuthor(*context, "Saved " + std::to_string(i)));
    must(context->save());
    for (int i = 0; i < 100; ++i) {
        authors[static_cast<std::size_t>(i)]->setValueForKey("visits", 1);
        authors.push_back(addAuthor(*context, "New " + std::to_string(i)));
    }
    const auto find = [&](std::string_view name) {
        StoreFetch fetch(entityNamed("Author"), StorePredicate::compare("name", os::Comparator::equal, name));
        const ObjectList found = must(context->runFetch(fetch));
        EXPECT_EQ(must(context->countFetch(fetch)), found.size());
        fetch.limit = 1;
        EXPECT_EQ(must(context->runFetch(fetch)).size(), std::min<std::size_t>(found.size(), 1));
        return found;
    };
    EXPECT_THAT(find("Saved 7"), ElementsAre(authors[7]));
    EXPECT_THAT(find("New 7"), ElementsAre(authors[107]));
    authors[7]->setValueForKey("name", "New 7");
    authors[8]->setPrimitiveValue(authors[8]->slot("name"), "New 7");
    authors[107]->setValueForKey("name", Value());
    context->deleteObject(*authors[9]);
    EXPECT_THAT(find("Saved 7"), ElementsAre());
    EXPECT_THAT(find("Saved 9"), ElementsAre());
    EXPECT_THAT(find("New 7"), ElementsAre(authors[7], authors[8]));
    authors[7]->setValueForKey("name", "Saved 7");
    authors.push_back(addAuthor(*context, "New 7"));
    EXPECT_THAT(find("Saved 7"), ElementsAre(authors[7]));
    EXPECT_THAT(find("New 7"), ElementsAre(authors[8], authors.back()));
    context->refreshObject(*authors[8], false);
    EXPECT_THAT(find("Saved 8"), ElementsAre(authors[8]));
    EXPECT_THAT(find("New 7"), ElementsAre(authors.back()));
}

TEST_F(StoreContextTest, FetchesOfAParentSpanTablesAndMayLeaveOutChildren)
{
    addAuthor(*context, "Ana");
    const ObjectRef pen = context->insertObjectOfEntity("PenName");
    pen->setValueForKey("alias", "X");
    context->insertObjectOfEntity("Book");
    const auto count = [&](const char* entity, bool withChildren) {
        StoreFetch fetch(entityNamed(entity));
        fetch.includesSubentities = withChildren;
        return must(context->countFetch(fetch));
    };
    for (int saved = 0; saved < 2; ++saved) {
        EXPECT_EQ(count("Item", true), 3u);
        EXPECT_EQ(count("Author", true), 2u);
        EXPECT_EQ(count("Author", false), 1u);
        EXPECT_EQ(count("PenName", true), 1u);
        must(context->save());
    }
}

TEST_F(StoreContextTest, FaultsReadTheirRowOnlyWhenAsked)
{
    addAuthor(*context, "Ana");
    must(context->save());
    const auto other = store.makeContext();
    StoreFetch fetch(entityNamed("Author"));
    fetch.returnsObjectsAsFaults = true;
    context->reset();
    const ObjectRef fault = must(other->runFetch(fetch)).front();
    EXPECT_TRUE(fault->isFault());
    EXPECT_EQ(fault->text(fault->slot("name")), "Ana");
    EXPECT_FALSE(fault->isFault());
}

// Keys that lie close together are read in one walk, which passes those of others.
TEST_F(StoreContextTest, PrefetchedPartsAreHeldByTheirOwners)
{
    for (int i = 0; i < 200; ++i) {
        const std::string name = (i % 3 == 0 ? "other" : "wanted") + std::to_string(i);
        const ObjectRef author = addAuthor(*context, name), book = context->insertObjectOfEntity("Book");
        addHandle(*context, *author, {"h" + std::to_string(i), name, 0, true, "chat"});
        author->setObjects(author->slot("books"), {book});
    }
    must(context->save());
    ObjectList many, one;
    const auto reader = store.makeContext(), another = store.makeContext();
    StoreFetch fetch(
        entityNamed("Author"), StorePredicate::compare("name", os::Comparator::beginsWith, "wanted"));
    fetch.prefetchKeyPaths = {"handles.site", "books", "biography"};
    many = must(reader->runFetch(fetch));
    EXPECT_EQ(many.size(), 133u);
    fetch.predicate = StorePredicate::compare("name", os::Comparator::equal, "wanted1");
    one = must(another->runFetch(fetch));
    EXPECT_EQ(one.size(), 1u);
    // Behind the engine's back: whoever asks the store again would miss the row.
    must(store.coordinator->removeStore(store.store));
    for (const auto& found : {many, one})
        for (const auto& author : found) {
            EXPECT_EQ(author->valueForKeyPath("handles.text"), Value::array({textOf(*author, "name")}));
            EXPECT_EQ(author->valueForKeyPath("handles.site.name"), Value::array({"chat"}));
            EXPECT_EQ(author->objects(author->slot("books")).size(), 1u);
            EXPECT_EQ(author->related(author->slot("biography")), nullptr);
        }
}

TEST_F(StoreContextTest, RelationshipsChangeTogetherWithTheirInverses)
{
    const ObjectRef ana = addAuthor(*context, "Ana"), bo = addAuthor(*context, "Bo");
    const ObjectRef handle = addHandle(*context, *ana, {"h1", "x", 0, true});
    const ObjectRef shelf = context->insertObjectOfEntity("Shelf");
    const os::Slot& handles = ana->slot("handles");
    const os::Slot& featuredIn = ana->slot("featuredIn");
    for (int saved = 0; saved < 2; ++saved) {
        handle->setValueForKey("owner", bo);
        EXPECT_TRUE(ana->objects(handles).empty());
        EXPECT_THAT(bo->objects(handles), ElementsAre(handle));
        ana->addObject(handles, *handle);
        EXPECT_EQ(handle->related(handle->slot("owner")), ana);
        shelf->setRelated(shelf->slot("featured"), ana.get());
        bo->setRelated(featuredIn, shelf.get());
        EXPECT_EQ(shelf->related(shelf->slot("featured")), bo);
        EXPECT_EQ(ana->related(featuredIn), nullptr);
        must(context->save());
        EXPECT_THAT(ana->objects(handles), ElementsAre(handle));
        EXPECT_EQ(bo->related(featuredIn), shelf);
    }
    // A second biography takes the place of the first.
    const ObjectRef one = context->insertObjectOfEntity("Biography"),
                    two = context->insertObjectOfEntity("Biography");
    ana->setRelated(ana->slot("biography"), one.get());
    ana->setRelated(ana->slot("biography"), two.get());
    EXPECT_EQ(one->related(one->slot("author")), nullptr);
    EXPECT_EQ(ana->related(ana->slot("biography")), two);
}

TEST_F(StoreContextTest, LinksAreSeenFromBothEndsBeforeAndAfterTheSave)
{
    const ObjectRef ana = addAuthor(*context, "Ana");
    const ObjectRef one = context->insertObjectOfEntity("Book"), two = context->insertObjectOfEntity("Book");
    const os::Slot &books = ana->slot("books"), &authors = one->slot("authors");
    ana->setObjects(books, {one, two});
    EXPECT_THAT(ana->objects(books), ElementsAre(one, two));
    EXPECT_THAT(two->objects(authors), ElementsAre(ana));
    must(context->save());
    EXPECT_THAT(ana->objects(books), ElementsAre(one, two));
    one->removeObject(authors, *ana);
    EXPECT_THAT(ana->objects(books), ElementsAre(two));
    const auto other = store.makeContext();
    EXPECT_EQ(fetchAuthor(*other, "Ana")->objects(books).size(), 2u);
    must(context->save());
    EXPECT_EQ(fetchAuthor(*other, "Ana")->objects(books).size(), 1u);
}

TEST_F(StoreContextTest, DeletingAppliesTheRules)
{
    const ObjectRef ana = addAuthor(*context, "Ana");
    const ObjectRef handle = addHandle(*context, *ana, {"h1", "x", 0, true});
    const ObjectRef biography = context->insertObjectOfEntity("Biography");
    ana->setRelated(ana->slot("biography"), biography.get());
    ana->setValueForKey("portrait", Value::data("picture"));
    const ObjectRef shelf = context->insertObjectOfEntity("Shelf"),
                    book = context->insertObjectOfEntity("Book");
    shelf->setRelated(shelf->slot("featured"), ana.get());
    book->addObject(book->slot("authors"), *ana);
    book->setRelated(book->slot("shelf"), shelf.get());
    must(context->save());

    context->deleteObject(*ana);
    context->flushPendingChanges();
    EXPECT_EQ(shelf->related(shelf->slot("featured")), nullptr);
    EXPECT_TRUE(book->objects(book->slot("authors")).empty());
    EXPECT_TRUE(fetchAll(*context, "Handle").empty());
    must(context->save());
    EXPECT_EQ(ana->context(), nullptr);
    EXPECT_EQ(ana->text(ana->slot("name")), "Ana") << "observers may still ask who it was";
    EXPECT_EQ(handle->context(), nullptr);
    EXPECT_THROW(ana->setValueForKey("name", "Bo"), os::InaccessibleObject);
    for (const char* entity : {"Author", "Handle", "Biography"})
        EXPECT_TRUE(fetchAll(*context, entity).empty()) << entity;

    context->deleteObject(*shelf);
    must(context->save());
    EXPECT_EQ(book->related(book->slot("shelf")), nullptr);
    EXPECT_EQ(fetchAll(*context, "Book").size(), 1u);
}

TEST_F(StoreContextTest, WhatWasNeverSavedJustLeaves)
{
    const ObjectRef ana = addAuthor(*context, "Ana");
    addHandle(*context, *ana, {"h1", "x", 0, true});
    context->deleteObject(*ana);
    EXPECT_FALSE(context->hasChanges());
    EXPECT_TRUE(context->insertedObjects().empty());
    must(context->save());
    EXPECT_TRUE(fetchAll(*context, "Handle").empty());
}

TEST_F(StoreContextTest, RefreshingKeepsOrDropsChanges)
{
    const ObjectRef ana = addAuthor(*context, "Ana");
    must(context->save());
    const auto other = store.makeContext();
    fetchAuthor(*other, "Ana")->setValueForKey("visits", 5);
    must(other->save());
    ana->setValueForKey("name", "Mine");
    context->refreshObject(*ana, true);
    EXPECT_EQ(ana->valueForKey("name"), Value("Mine"));
    EXPECT_EQ(ana->valueForKey("visits"), Value(5));
    context->refreshObject(*ana, false);
    EXPECT_EQ(ana->valueForKey("name"), Value("Ana"));
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(StoreContextTest, OneObjectStandsForOneRowWhileSomebodyOwnsIt)
{
    addAuthor(*context, "Ana");
    must(context->save());
    ObjectRef ana = fetchAuthor(*context, "Ana");
    EXPECT_EQ(fetchAll(*context, "Author").front(), ana);
    EXPECT_EQ(context->registeredObjects().size(), 1u);
    ana = nullptr;
    EXPECT_TRUE(context->registeredObjects().empty());
    // Unsaved changes are owned by the context.
    fetchAuthor(*context, "Ana")->setValueForKey("name", "Bo");
    EXPECT_EQ(context->registeredObjects().size(), 1u);
    must(context->save());
    EXPECT_EQ(fetchAuthor(*context, "Bo")->valueForKey("name"), Value("Bo"));
}

TEST_F(StoreContextTest, LastReleasesMayComeFromAnyThreadAtAnyTime)
{
    for (int i = 0; i < 50; ++i)
        addAuthor(*context, "Author " + std::to_string(i));
    must(context->save());
    for (int round = 0; round < 40; ++round) {
        ObjectList held = fetchAll(*context, "Author");
        std::thread releasing([&] { held.clear(); });
        fetchAuthor(*context, "Author 7")->setValueForKey("visits", round + 1);
        must(context->save());
        EXPECT_EQ(fetchAll(*context, "Author").size(), 50u);
        releasing.join();
    }
    ObjectList held = fetchAll(*context, "Author");
    std::thread releasing([&] { held.clear(); });
    context = nullptr;
    releasing.join();
}

TEST_F(StoreContextTest, ObjectsOutliveTheirContextAsAbsent)
{
    const ObjectRef ana = addAuthor(*context, "Ana");
    must(context->save());
    const ObjectRef fault = store.makeContext()->objectForStoreId(ana->storeId());
    EXPECT_EQ(fault->context(), nullptr);
    EXPECT_TRUE(fault->objects(fault->slot("handles")).empty());
    context->reset();
    EXPECT_EQ(ana->context(), nullptr);
    EXPECT_TRUE(ana->valueForKey("name").isAbsent());
    EXPECT_EQ(fetchAuthor(*context, "Ana")->valueForKey("name"), Value("Ana"));
}

TEST_F(StoreContextTest, SharedObjectsAreOneForAllWriters)
{
    const auto other = store.makeContext();
    const os::Entity& site = entityNamed("Site");
    const ObjectRef mine = must(context->sharedObject(site, {"chat"}));
    EXPECT_EQ(must(context->sharedObject(site, {"chat"})), mine);
    EXPECT_EQ(must(other->sharedObject(site, {"chat"}))->storeId(), mine->storeId());
    EXPECT_NE(must(other->sharedObject(site, {"mail"}))->storeId(), mine->storeId());
    // An ordinary insert of one that is there already gets that one.
    const ObjectRef again = other->insertObjectOfEntity("Site");
    again->setValueForKey("name", "chat");
    must(other->save());
    EXPECT_EQ(again->storeId(), mine->storeId());
    EXPECT_EQ(fetchAll(*context, "Site").size(), 2u);
}

TEST_F(StoreContextTest, SavesTellWhatTheyWroteAndAskObjectsBefore)
{
    std::vector<std::string> told;
    const auto note = [&](const platform::Notification& notification) {
        const auto* changes = notification.userInfo.as<os::StoreChanges>();
        told.push_back(notification.name + " " + std::to_string(changes->inserted.size())
            + std::to_string(changes->updated.size()) + std::to_string(changes->deleted.size()));
    };
    const auto subscription =
        platform::NotificationCenter::shared().subscribe(std::nullopt, context.get(), note);
    const ObjectRef ana = addAuthor(*context, "Ana"), bo = addAuthor(*context, "Bo");
    must(context->save());
    must(context->save());
    ana->setValueForKey("name", "Cy");
    context->deleteObject(*bo);
    must(context->save());
    EXPECT_THAT(told,
        ElementsAre("StoreContextWillSave 200", "StoreContextDidSave 200", "StoreContextWillSave 011",
            "StoreContextDidSave 011"));
    auto& hooks = static_cast<Author&>(*ana);
    EXPECT_EQ(hooks.willSaves, 2);
    EXPECT_EQ(hooks.didSaves, 2);
}

TEST_F(StoreContextTest, AFailedSaveLeavesEveryChangeInPlace)
{
    const ObjectRef one = context->insertObjectOfEntity("Book");
    one->setValueForKey("title", "Same");
    must(context->save());
    const ObjectRef ana = addAuthor(*context, "Ana");
    const ObjectRef handle = addHandle(*context, *ana, {"h1", "x", 0, true});
    const ObjectRef two = context->insertObjectOfEntity("Book");
    two->setValueForKey("title", "Same");
    const auto saved = context->save();
    ASSERT_FALSE(saved);
    EXPECT_TRUE(os::isFault(saved.error(), os::StoreFault::constraint)) << saved.error().text;
    EXPECT_EQ(context->insertedObjects().size(), 3u);
    EXPECT_TRUE(ana->storeId().isTemporary());
    EXPECT_TRUE(fetchAll(*store.makeContext(), "Author").empty());
    two->setValueForKey("title", "Other");
    must(context->save());
    EXPECT_THAT(ana->objects(ana->slot("handles")), ElementsAre(handle));
    EXPECT_EQ(fetchAll(*store.makeContext(), "Book").size(), 2u);
}

TEST_F(StoreContextTest, NothingIsCommittedThatTheCallerHoldsBack)
{
    const ObjectRef ana = addAuthor(*context, "Ana");
    const auto saved = context->save([] { return platform::Error{"test", 7, "not yet"}; });
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().code, 7);
    EXPECT_TRUE(ana->storeId().isTemporary());
    EXPECT_TRUE(fetchAll(*store.makeContext(), "Author").empty());
    int asked = 0;
    const auto letGo = [&] { return ++asked, platform::Result<void>(); };
    must(context->save(letGo));
    must(context->save(letGo));
    EXPECT_EQ(asked, 1) << "without changes nobody is asked";
    EXPECT_EQ(fetchAll(*store.makeContext(), "Author").size(), 1u);
}

TEST_F(StoreContextTest, AFetchTellsHowItGoesAboutIt)
{
    addAuthor(*context, "Ana");
    must(context->save());
    StoreFetch fetch(
        entityNamed("Author"), StorePredicate::compare("name", os::Comparator::equal, Value("Ana")));
    const auto plans = must(context->explainFetch(fetch));
    ASSERT_EQ(plans.size(), 1u);
    EXPECT_THAT(plans[0].sql, testing::HasSubstr("'Ana'"));
    EXPECT_FALSE(plans[0].steps.empty());
}

TEST_F(StoreContextTest, StoresAreFetchedTogetherOrOneByOne)
{
    os::PersistentStore* second = must(store.coordinator->addStore(os::StoreType::inMemory, "second"));
    addAuthor(*context, "Ana");
    const ObjectRef bo = addAuthor(*context, "Bo");
    context->assignObjectToStore(*bo, second);
    StoreFetch fetch = byName();
    for (int saved = 0; saved < 2; ++saved) {
        fetch.affectedStores.clear();
        EXPECT_THAT(names(fetch), ElementsAre("Ana", "Bo"));
        fetch.affectedStores = {second};
        EXPECT_THAT(names(fetch), ElementsAre("Bo"));
        must(context->save());
    }
    EXPECT_EQ(bo->store(), second);
}

} // namespace
} // namespace test
