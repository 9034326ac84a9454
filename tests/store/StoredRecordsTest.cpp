// What stored records answer by class and by key: places, entities, normalised texts, conditions, rows.
#include "store/RosterWorld.h"

#include "core/ZRGroup.h"
#include "core/ZRInfo.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreCoordinator.h"
#include "objectstore/StoreErrors.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelTable.h"
#include "store/ZRMultiValueObjectStoreWrapper.h"
#include "store/ZRMutableSet.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace test {

namespace {

using objectstore::Comparator;
using objectstore::ObjectList;
using objectstore::Slot;
using testing::ElementsAre;
using testing::IsEmpty;

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
    std::vector<std::string> firstNamesOf(const objectstore::PredicateRef& condition)
    {
        return texts(roster->managedObjectContext()->zrContactsForPredicate(condition), "firstName");
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
        {"ZROSContact", zr::kZRAddressProperty, "postalAddresses", "ZROSPostalAddress", ""},
        {"ZROSContact", zr::kZRNoteProperty, "note", "ZROSNote", "text"},
        {"ZROSContact", zr::kZRICQInstantProperty, "messagingAddresses", "ZROSMessagingAddress", "address",
            false},
        {"ZROSContact", zr::kZRRemoteLocationProperty, "remoteLocations", "ZROSRemoteLocation", "url"},
        {"ZROSGroup", zr::kZRRemoteLocationProperty, "tmpRemoteLocation", "", ""},
        {"ZROSSmartGroup", zr::kZRGroupNameProperty, "name", "", ""},
        {"ZROSRosterSource", "displayName", "name", "", ""},
        {"ZROSMailRecent", zr::kZREmailProperty, "email", "", ""}};
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
        {std::tuple("firstName", zr::kZRObjectStoreContactEntityName, true),
            std::tuple("uniqueId", zr::kZRObjectStoreSubscribedContactEntityName, true),
            std::tuple("firstName", zr::kZRObjectStoreGroupEntityName, false),
            std::tuple("email", zr::kZRObjectStoreMailRecentEntityName, false)}) {
        EXPECT_EQ(ZROSRecord::zrEntityKnowsKey(key, name, *roster), isKnown) << key;
        EXPECT_EQ(ZROSRecord::zrEntityKnowsKey(key, name, context), isKnown) << key;
    }
    const auto one = person(roster, {});
    EXPECT_EQ(one->zrDatabaseImpl()->zrEntityName(), "ZROSContact");
}

TEST_F(StoredRecords, NormaliseTextsForSortingAndForSearching)
{
    EXPECT_EQ(ZROSRecord::newNormalizedSortString("ÉMILE"), ZROSRecord::newNormalizedSortString("émile"));
    EXPECT_NE(ZROSRecord::newNormalizedSortString("ÉMILE"), "emile");
    EXPECT_EQ(ZROSRecord::newNormalizedSearchString("ÉMILE"), "emile");
    EXPECT_EQ(ZROSRecord::newIncrementedSearchString("emil"), "emim");
    EXPECT_EQ(ZROSRecord::newIncrementedSearchString(""), "");
}

TEST_F(StoredRecords, TellAbsentFlagsFromClearOnes)
{
    person(roster, {{zr::kZRFirstNameProperty, "none"}});
    for (const auto& [name, flags] : {std::pair("clear", 1), std::pair("set", 129)})
        person(roster, {{zr::kZRFirstNameProperty, name}})->zrosSetValue(flags, "displayFlags");
    const auto isSet = [](Comparator comparison) {
        return ZROSRecord::bitwiseAndPredicateForKey("displayFlags", 128, 0, comparison);
    };
    EXPECT_THAT(firstNamesOf(ZROSRecord::compoundPredicateForKey(
                    "displayFlags", ZRNullOption::andNotNull, isSet(Comparator::notEqual))),
        ElementsAre("set"));
    EXPECT_THAT(firstNamesOf(ZROSRecord::compoundPredicateForKey(
                    "displayFlags", ZRNullOption::andNotNull, isSet(Comparator::equal))),
        ElementsAre("clear"));
    EXPECT_THAT(firstNamesOf(ZROSRecord::compoundPredicateForKey(
                    "displayFlags", ZRNullOption::orIsNull, isSet(Comparator::equal))),
        testing::UnorderedElementsAre("none", "clear"));
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

TEST_F(StoredRecords, KeepTheChoiceOfAnEntryThroughItsNewRow)
{
    using Rows = ZRMultiValueObjectStoreWrapper;
    const auto one = person(roster, {{zr::kZREmailProperty, multiValue({{"a", "x"}, {"b", "x"}})}});
    auto& impl = *one->zrDatabaseImpl();
    auto& context = *roster->managedObjectContext();
    const Slot& emails = key(one, "emailAddresses");
    const ObjectList rows = impl.sortedPropertyValuesWithKey(emails);
    const std::string identifier(rows[1]->text(rows[1]->slot("uniqueId")));
    EXPECT_EQ(Rows::primaryIdentifierForEntities(rows), rows[0]->text(rows[0]->slot("uniqueId")));
    EXPECT_EQ(Rows::primaryIdentifierForEntities({rows[1]}), std::nullopt);
    const auto choice = context.insertObjectOfEntity(zr::kZRObjectStoreDistributionListConfigEntityName);
    choice->setRelated(choice->slot("email"), rows[1].get());
    rows[0]->setValueForKey("uniqueId", {});

    Rows::DistributionListConfigs saved;
    Rows::deletePropertyValues(rows, emails, saved, impl, context);
    EXPECT_THAT(saved, ElementsAre(testing::Pair(identifier, ElementsAre(choice))));
    EXPECT_THAT(texts(impl.propertyValuesWithKey(emails), "address"), ElementsAre("a"))
        << "a row without identifier is left alone";
    const auto fresh = context.insertObjectOfEntity(zr::kZRObjectStoreEmailAddressEntityName);
    Rows::rewireDistributionListConfig(saved, *fresh, "another");
    EXPECT_THAT(saved, testing::SizeIs(1));
    Rows::rewireDistributionListConfig(saved, *fresh, identifier);
    EXPECT_EQ(choice->related(choice->slot("email")), fresh);
    EXPECT_THAT(saved, IsEmpty());
}

TEST_F(StoredRecords, MakeAddressesOfDictionariesAndBack)
{
    using Rows = ZRMultiValueObjectStoreWrapper;
    const auto one = person(roster, {});
    const Value given = Value::dictionary({{"City", "Rome"}, {"CountryCode", "uk"},
        {"ZIP", Value(platform::NullMarker())}, {"Floor", "2"}, {"Door", Value(platform::NullMarker())}});
    const auto row = Rows::addressEntityWithValue(given, *one->zrDatabaseImpl());
    EXPECT_EQ(row->text(row->slot("countryCode")), "gb");
    EXPECT_EQ(textOf(Rows::addressValueWithEntity(*row)),
        textOf(Value::dictionary({{"City", "Rome"}, {"CountryCode", "gb"}, {"Floor", "2"}})));
}

TEST_F(StoredRecords, ShareOneServiceInAStore)
{
    auto& context = *roster->managedObjectContext();
    const auto service = [&] {
        return ZRMultiValueObjectStoreWrapper::serviceWithName(zr::kZRAIMInstantProperty, context, nullptr);
    };
    const auto made = service();
    ASSERT_TRUE(made);
    EXPECT_EQ(service(), made);
    const auto id = made->storeId();
    context.reset();
    EXPECT_EQ(service()->storeId(), id) << "found again after the context forgot it";
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

// What feeds the index string is exactly what makes it stale.
TEST_F(StoredRecords, ListTheRelationshipsOfTheIndexString)
{
    const auto one = person(roster,
        {{zr::kZREmailProperty, multiValue({{"a@x", "x"}})},
            {zr::kZRPhoneProperty, multiValue({{"55", "x"}})},
            {zr::kZRURLsProperty, multiValue({{"http://u", "x"}})},
            {zr::kZRRelatedNamesProperty, multiValue({{"Kin", "x"}})},
            {zr::kZRAIMInstantProperty, multiValue({{"aim", "x"}})}, {zr::kZRNoteProperty, "note"},
            {zr::kZRAddressProperty, multiValue({{Value::dictionary({{"City", "Rome"}}), "x"}})}});
    const auto& paths = ZROSContact::stringForIndexingKeypaths();
    for (const auto& path : paths) {
        const auto& slot = key(one, path.c_str());
        const Value rows = one->zrDatabaseImpl()->value(slot);
        EXPECT_FALSE(slot.isToMany() ? rows.asArray().empty() : rows.isNothing()) << path;
    }
    EXPECT_THAT(paths, testing::SizeIs(8));
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

TEST_F(StoredRecords, SayWhichValuesAreWorthKeeping)
{
    const auto context = roster->managedObjectContext();
    struct Case {
        const char* entity;
        const char* key;
        Value value;
        bool hasContent;
    };
    const Case cases[] = {{"ZROSEmailAddress", "address", "", false},
        {"ZROSEmailAddress", "address", "a", true}, {"ZROSPostalAddress", "countryCode", "gb", false},
        {"ZROSPostalAddress", "region", "r", true}, {"ZROSNote", "text", "", true},
        {"ZROSContactDate", "date", {}, false}, {"ZROSContactDate", "date", Value(platform::Date{0}), true},
        {"ZROSCalendarURI", "url", "", true}, {"ZROSContact", "firstName", {}, true}};
    for (const auto& one : cases) {
        const auto object = context->insertObjectOfEntity(one.entity);
        object->setValueForKey(one.key, one.value);
        EXPECT_EQ(ZROSOwnedObject::hasRosterContentForRecord(*object), one.hasContent)
            << one.entity << " " << one.value.description();
    }
}

} // namespace test
