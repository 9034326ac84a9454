// What stored records answer by class and by key: places, entities, normalised texts, conditions, rows.
#include "store/RosterWorld.h"

#include "core/ZRGroup.h"
#include "core/ZRInfo.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreErrors.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelTable.h"
#include "store/ZRMutableSet.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace test {

namespace {

using objectstore::ObjectList;
using objectstore::Slot;
using testing::ElementsAre;

const objectstore::Entity& entity(std::string_view name)
{
    const auto* found = rosterModel()->entity(name);
    return found ? *found : *mailRecentsModel()->entity(name);
}

class StoredRecords : public testing::Test {
protected:
    static const Slot& key(const Ref<ZRPerson>& one, const char* name)
    {
        return one->zrDatabaseImpl()->slot(name);
    }
    static std::vector<std::string> texts(const ObjectList& rows, const char* name)
    {
        std::vector<std::string> list;
        for (const auto& row : rows)
            list.emplace_back(row->text(row->slot(name)));
        return list;
    }
    Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace

TEST_F(StoredRecords, KnowWhereEachPropertyIsKept)
{
    struct Case {
        const char* entity;
        std::string_view property;
        std::string_view key, valueEntity, valueKey;
        bool isAlone = true;
    };
    const Case cases[] = {{"ZROSContact", zr::kZRFirstNameProperty, "firstName", "", ""},
        {"ZROSContact", zr::kZREmailProperty, "emailAddresses", "ZROSEmailAddress", "address"},
        {"ZROSContact", zr::kZRICQInstantProperty, "messagingAddresses", "ZROSMessagingAddress", "address",
            false},
        {"ZROSGroup", zr::kZRRemoteLocationProperty, "tmpRemoteLocation", "", ""}};
    for (const auto& one : cases) {
        const auto& of = entity(one.entity);
        const auto* place = ZROSRecord::keyForProperty(one.property, of);
        ASSERT_TRUE(place) << one.property;
        EXPECT_EQ(place->key->key, one.key) << one.property;
        EXPECT_EQ(place->entityKey ? place->entityKey->key : "", one.valueKey) << one.property;
        EXPECT_EQ(ZROSRecord::entityNameForPropertyKey(one.key, of), one.valueEntity) << one.property;
        EXPECT_EQ(ZROSRecord::propertyForKey(one.key, of), one.isAlone ? one.property : "");
    }
    EXPECT_FALSE(ZROSRecord::keyForProperty(zr::kZREmailProperty, entity("ZROSGroup")));
    EXPECT_EQ(ZROSRecord::propertyForKey("sortingFirstName", entity("ZROSContact")), "");
}

TEST_F(StoredRecords, KnowTheirEntitiesOnlyInARosterThatHasThem)
{
    EXPECT_EQ(ZROSRecord::zrEntityDescriptionInRoster(*roster, zr::kZRObjectStoreContactEntityName),
        &entity("ZROSContact"));
    EXPECT_FALSE(ZROSRecord::zrEntityDescriptionInRoster(*roster, "ZROSUnknown"));
    EXPECT_FALSE(ZROSRecord::zrEntityDescriptionInRoster(*roster, zr::kZRObjectStoreMailRecentEntityName))
        << "the store of mail recents is not open";
    const auto& context = *roster->managedObjectContext();
    for (const auto& [key, name, isKnown] :
        {std::tuple("uniqueId", zr::kZRObjectStoreSubscribedContactEntityName, true),
            {"firstName", zr::kZRObjectStoreGroupEntityName, false},
            {"email", zr::kZRObjectStoreMailRecentEntityName, false}}) {
        EXPECT_EQ(ZROSRecord::zrEntityKnowsKey(key, name, *roster), isKnown) << key;
        EXPECT_EQ(ZROSRecord::zrEntityKnowsKey(key, name, context), isKnown) << key;
    }
}

TEST_F(StoredRecords, NormaliseTextsForSortingAndForSearching)
{
    EXPECT_EQ(ZROSRecord::newNormalizedSortString("ÉMILE"), ZROSRecord::newNormalizedSortString("émile"));
    EXPECT_NE(ZROSRecord::newNormalizedSortString("ÉMILE"), "emile");
    EXPECT_EQ(ZROSRecord::newNormalizedSearchString("ÉMILE"), "emile");
    EXPECT_EQ(ZROSRecord::newIncrementedSearchString("emil"), "emim");
    EXPECT_EQ(ZROSRecord::newIncrementedSearchString(""), "");
}

TEST_F(StoredRecords, FindTheRowOfAnEntry)
{
    const auto one = person(roster, {{zr::kZREmailProperty, multiValue({{"a", "x"}, {"b", "x"}})}});
    ASSERT_TRUE(roster->save());
    auto& impl = *one->zrDatabaseImpl();
    const Slot& emails = key(one, "emailAddresses");
    const Value entries = one->valueForProperty(zr::kZREmailProperty);
    const std::string second = entries.as<ZRMultiValue>()->identifierAtIndex(1);
    EXPECT_EQ(impl.propertyValuesWithKey(emails).size(), 2U);
    EXPECT_THAT(texts(impl.fetchPropertyValuesWithKey(emails, second), "address"), ElementsAre("b"));
    EXPECT_EQ(impl.fetchPropertyValuesWithKey(emails).size(), 2U);
    EXPECT_THAT(texts({impl.propertyValueWithKey(emails, second, ZRFetching::prevented)}, "address"),
        ElementsAre("b"))
        << "it was read";
    EXPECT_FALSE(impl.propertyValueWithKey(emails, "none"));

    roster->managedObjectContext()->reset();
    const auto again = roster->people().front();
    auto& fresh = *again->zrDatabaseImpl();
    EXPECT_FALSE(fresh.propertyValueWithKey(emails, second, ZRFetching::prevented)) << "nothing was read";
    EXPECT_TRUE(fresh.propertyValueWithKey(emails, second));
}

TEST_F(StoredRecords, FetchTheRowsOfOneCustomPropertyOfOneRecord)
{
    const Value types = Value::dictionary({{"Car", 257}, {"Boat", 257}});
    ZRPerson::addPropertiesAndTypes(types, roster.get());
    const auto one = person(
        roster, {{"Car", multiValue({{"red", "x"}, {"blue", "y"}})}, {"Boat", multiValue({{"green", "x"}})}});
    person(roster, {{"Car", multiValue({{"black", "x"}})}});
    auto& impl = *one->zrDatabaseImpl();
    const auto custom = impl.isCustomProperty("Car", *roster);
    ASSERT_TRUE(custom);
    EXPECT_EQ(custom->returnType, 257);
    EXPECT_FALSE(impl.isCustomProperty("Plane", *roster));
    EXPECT_FALSE(impl.isCustomProperty("firstName", *roster)) << "a key of the entity is never a custom one";
    for (int saved = 0; saved < 2; ++saved) {
        EXPECT_THAT(
            texts(impl.fetchCustomPropertyValuesWithCustomProperty(*custom->definition), "stringValue"),
            testing::UnorderedElementsAre("red", "blue"));
        EXPECT_EQ(impl.fetchPropertyValuesWithKey(key(one, "customProperties")).size(), 3U);
        ASSERT_TRUE(roster->save());
    }
}

TEST_F(StoredRecords, GiveOneHandleOfTheClassOfTheirEntity)
{
    const auto group = ZRRecord::initWithUniqueId(ZRSmartGroup::recordClassDescription, {}, roster);
    const auto one = person(roster, {});
    const ObjectList both = {
        objectstore::ObjectRef(group->zrDatabaseImpl()), objectstore::ObjectRef(one->zrDatabaseImpl())};
    EXPECT_THAT(ZROSRecord::copyPublicRecordsForClass(ZRGroup::recordClassDescription, both, *roster),
        ElementsAre(group));
    EXPECT_THAT(ZROSRecord::copyPublicRecordsForClass(ZRRecord::recordClassDescription, both, *roster),
        ElementsAre(group, Ref<ZRRecord>(one)));
    EXPECT_FALSE(ZROSRecord::copyPublicRecordForClass(
        ZRSubscribedPerson::recordClassDescription, *one->zrDatabaseImpl(), *roster));
}

TEST_F(StoredRecords, LetAToManyKeyBeChangedInPlace)
{
    const auto group = ZRRecord::initWithUniqueId(ZRGroup::recordClassDescription, {}, roster);
    const auto one = person(roster, {}), two = person(roster, {});
    ZRMutableSet members = group->zrosMutableSetValueForKey("contacts");
    members.addObject(*one->zrDatabaseImpl());
    members.addObject(*two->zrDatabaseImpl());
    members.addObject(*two->zrDatabaseImpl());
    EXPECT_EQ(members.count(), 2U);
    EXPECT_THAT(two->parentGroups(), ElementsAre(group));
    members.removeObject(*one->zrDatabaseImpl());
    EXPECT_THAT(members.allObjects(), ElementsAre(objectstore::ObjectRef(two->zrDatabaseImpl())));
    EXPECT_THROW(group->zrosMutableSetValueForKey("name").allObjects(), objectstore::InvalidKey);
    roster->removeRecord(group);
    EXPECT_EQ(members.count(), 0U);
}

TEST_F(StoredRecords, HaveOneLocalSourceInARoster)
{
    EXPECT_FALSE(ZROSInfo::fetchedRosterSourceWithRoster(*roster));
    const auto info = locked(*roster, ZRAccess::write, [&]() ZR_NTS { return roster->nts_Info(); });
    auto& impl = static_cast<ZROSInfo&>(*info->zrDatabaseImpl());
    const auto source = impl.rosterSource();
    EXPECT_EQ(ZROSInfo::fetchedRosterSourceWithRoster(*roster), source);
    impl.setRelated(impl.slot("rosterSource"), nullptr);
    EXPECT_EQ(impl.rosterSource(), source) << "found again, not made anew";
}

// A search asks the index before it asks such a key: a card whose text it lacks would not be found.
TEST_F(StoredRecords, HaveInTheIndexStringWhatTheModelSaysFeedsIt)
{
    const auto one = person(roster, {});
    objectstore::StoreObject& card = *one->zrDatabaseImpl();
    int marks = 0;
    const auto check = [&](objectstore::StoreObject& object) {
        for (const objectstore::Slot* slot : object.entity().slots()) {
            // The normalised address follows from the address, which is asked.
            if (slot->type != objectstore::AttributeType::string || !slot->hasColumn() || slot->lazy
                || slot->key == "addressNormalized" || (&object == &card && slot->key == "uniqueId"))
                continue;
            const std::string mark = fmt::format("Marqu\u00e9{}X", ++marks);
            object.setValueForKey(slot->key, Value(mark));
            const std::string text(card.valueForKeyPath("contactIndex.stringForIndexing").asText());
            EXPECT_EQ(text.find(ZROSRecord::newNormalizedSearchString(mark)) != text.npos,
                (slot->flags & objectstore::kFeedsTextIndex) != 0)
                << object.entity().name() << "." << slot->key;
        }
    };
    check(card);
    for (const objectstore::Slot* slot : card.entity().slots()) {
        if (!slot->holdsParts || slot->key == "contactIndex" || slot->destination->isAbstract())
            continue;
        const auto part = card.context()->insertObjectOfEntity(*slot->destination);
        part->setRelated(*slot->inverse, &card);
        check(*part);
    }
    EXPECT_GT(marks, 40);
}

} // namespace test
