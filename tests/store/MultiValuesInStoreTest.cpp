// How multi-values, addresses and dictionaries of cards go into the store and come out.
#include "store/RosterWorld.h"

#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace test {

namespace {

using objectstore::ObjectList;
using testing::ElementsAre;

class MultiValues : public testing::Test {
protected:
    ObjectList rows(const char* entity)
    {
        return roster->managedObjectContext()->zrObjectsForPredicate(nullptr, entity);
    }
    Ref<ZRMutableMultiValue> values(const Ref<ZRPerson>& one, std::string_view property)
    {
        return one->valueForProperty(property).as<ZRMultiValue>()->mutableCopy();
    }
    Value address(const Value& given)
    {
        const auto one = person(roster, {{kZRAddressProperty, multiValue({{given, "x"}})}});
        return values(one, kZRAddressProperty)->valueAtIndex(0);
    }
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace

TEST_F(MultiValues, KeepIdentifiersOrderAndPrimaryThroughEdits)
{
    const auto one =
        person(roster, {{kZREmailProperty, multiValue({{"a", "x"}, {"b", "x"}, {"c", "y"}}, 2)}});
    ASSERT_TRUE(roster->save());
    const auto edited = values(one, kZREmailProperty);
    edited->replaceValueAtIndex(1, "B");
    edited->insertValue("new", "z", 0);
    edited->_moveContentsAt(3, 1);
    one->setValue(Value(edited), kZREmailProperty);
    for (int saved = 0; saved < 2; ++saved) {
        EXPECT_EQ(textOf(one->valueForProperty(kZREmailProperty)), textOf(Value(edited)));
        ASSERT_TRUE(roster->save());
    }
    EXPECT_EQ(rows("ZROSEmailAddress").size(), 4U);
    one->removeValueForProperty(kZREmailProperty);
    EXPECT_TRUE(one->valueForProperty(kZREmailProperty).isAbsent());
    ASSERT_TRUE(roster->save());
    EXPECT_TRUE(rows("ZROSEmailAddress").empty());
}

TEST_F(MultiValues, OfMessagingServicesShareOneKeyAndOneServiceRow)
{
    const auto one = person(roster,
        {{kZRAIMInstantProperty, multiValue({{"aim", "x"}})},
            {kZRJabberInstantProperty, multiValue({{"jabber", "y"}})}});
    const auto two = person(roster, {{kZRAIMInstantProperty, multiValue({{"other", "x"}})}});
    ASSERT_TRUE(roster->save());
    const auto elsewhere = roster->parallelUniverseRoster();
    person(elsewhere, {{kZRAIMInstantProperty, multiValue({{"third", "x"}})}});
    ASSERT_TRUE(elsewhere->save());
    EXPECT_EQ(rows("ZROSService").size(), 2U);
    one->removeValueForProperty(kZRAIMInstantProperty);
    EXPECT_EQ(values(one, kZRJabberInstantProperty)->valueAtIndex(0), Value("jabber"));
    EXPECT_TRUE(one->valueForProperty(kZRAIMInstantProperty).isAbsent());
    EXPECT_THAT(roster->activeLabelsForProperty(kZRJabberInstantProperty, *one), ElementsAre("y"));
    const auto row =
        roster->managedObjectContext()->zrObjectsForPredicate(nullptr, "ZROSMessagingAddress").front();
    EXPECT_THAT(
        ZROSRecord::propertyForRecord(*row), testing::AnyOf(kZRAIMInstantProperty, kZRJabberInstantProperty));
}

TEST_F(MultiValues, OfAddressesAreConverted)
{
    const Value own = Value::dictionary({{"Street", "a\nb"}, {"Floor", "3"}, {"Door", Value::array({1, 2})}});
    EXPECT_EQ(address(own), own);
    EXPECT_EQ(address(Value::dictionary({{"City", "X"}, {"State", ""}, {"ZIP", Value(platform::NullMarker{})},
                  {"Zone", Value(platform::NullMarker{})}, {"CountryCode", "uk"}})),
        Value::dictionary({{"City", "X"}, {"CountryCode", "gb"}}));
}

TEST_F(MultiValues, LoseTheirEmptyEntriesAtTheSave)
{
    const auto one = person(roster,
        {{kZREmailProperty, multiValue({{"", "x"}, {"a", "x"}})}, {kZRPhoneProperty, multiValue({{"", "x"}})},
            {kZRURLsProperty, multiValue({{"", "x"}})}, {kZRAIMInstantProperty, multiValue({{"", "x"}})},
            {kZRRelatedNamesProperty, multiValue({{"", "x"}})},
            {kZRAddressProperty,
                multiValue({{Value::dictionary({{"CountryCode", "us"}}), "x"},
                    {Value::dictionary({{"City", "Y"}}), "y"}, {Value::dictionary({{"Region", "Z"}}), "z"}})},
            {kZRCalendarURIsProperty, multiValue({{"", "x"}})}});
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(values(one, kZREmailProperty)->_allValues(), (std::vector<Value>{"a"}));
    EXPECT_THAT(values(one, kZRAddressProperty)->_allLabels(), ElementsAre("y", "z"));
    EXPECT_THAT(one->zrUsedProperties(),
        testing::UnorderedElementsAre(kZREmailProperty, kZRAddressProperty, kZRCalendarURIsProperty))
        << "a calendar's address counts even when it is empty";
    one->setValue("text", kZRNoteProperty);
    one->removeValueForProperty(kZRNoteProperty);
    ASSERT_TRUE(roster->save());
    EXPECT_TRUE(rows("ZROSNote").empty());
}

TEST_F(MultiValues, AreCopiedWithNewIdentifiers)
{
    const auto one = person(
        roster, {{kZRFirstNameProperty, "Ana"}, {kZREmailProperty, multiValue({{"a", "x"}, {"b", "y"}}, 1)}});
    const auto copy = platform::refCast<ZRPerson>(one->duplicate());
    const auto original = values(one, kZREmailProperty), copied = values(copy, kZREmailProperty);
    EXPECT_NE(copy->uniqueId(), one->uniqueId());
    EXPECT_TRUE(copied->isEqual(*original, ZRMultiValue::CompareIdentifiers::no));
    EXPECT_NE(copied->identifierAtIndex(0), original->identifierAtIndex(0));
    EXPECT_EQ(copied->primaryIndex(), 0);
}

TEST_F(MultiValues, ComeThroughDictionariesWithOldOrNewIdentifiers)
{
    const auto one = person(
        roster, {{kZRFirstNameProperty, "Ana"}, {kZREmailProperty, multiValue({{"a", "x"}, {"b", "y"}}, 1)}});
    const Value dictionary = one->dictionaryRepresentation();
    const auto original = values(one, kZREmailProperty);
    for (const bool generates : {false, true}) {
        const auto other = ZRRoster::emptyMemoryBackedRoster();
        const auto made = platform::refCast<ZRPerson>(ZRRecord::recordFromDictionaryRepresentation(
            ZRPerson::recordClassDescription, dictionary, Value(), other, generates));
        EXPECT_EQ(made->uniqueId(), one->uniqueId());
        const auto entries = values(made, kZREmailProperty);
        EXPECT_EQ(entries->isEqual(*original), !generates);
        EXPECT_EQ(entries->primaryIndex(), generates ? 0 : 1);
    }
    const auto fresh = ZRPerson::personFromDictionary(dictionary, roster, true, true);
    EXPECT_NE(fresh->uniqueId(), one->uniqueId());
    EXPECT_EQ(fresh->compositeName(), "Ana");
}

TEST_F(MultiValues, OfUnknownNamesAreDeclaredOnTheFly)
{
    platform::LogCapture log;
    const Value dictionary = Value::dictionary({{"First", "Ana"}, {"ZRMembers", Value::array({})},
        {"shoe size", 38}, {"riddle", Value::dictionary({{"a", 1}})}});
    const auto one = ZRRecord::recordFromDictionaryRepresentation(
        ZRPerson::recordClassDescription, dictionary, Value(), roster, false);
    EXPECT_EQ(one->valueForProperty("shoe size"), Value(38));
    EXPECT_EQ(roster->typeOfProperty("shoe size", "ZRPerson"), 2);
    EXPECT_EQ(roster->typeOfProperty("riddle", "ZRPerson"), 0);
    EXPECT_TRUE(log.contains("Couldn't identify property type of riddle"));
    const auto skipping =
        ZRPerson::personFromDictionary(Value::dictionary({{"hat size", 58}}), roster, true, false);
    EXPECT_EQ(roster->typeOfProperty("hat size", "ZRPerson"), 0);
}

TEST_F(MultiValues, AnswerKeyPathsByTheLongestProperty)
{
    ZRPerson::addPropertiesAndTypes(Value::dictionary({{"table", 6}, {"table.deep", 1}}), roster.get());
    const auto one = person(roster,
        {{"table", Value::dictionary({{"x", Value::dictionary({{"y", "found"}})}})},
            {"table.deep", "property"}});
    EXPECT_EQ(one->valueForKeyPath("table.x.y"), Value("found"));
    EXPECT_EQ(one->valueForKeyPath("table.deep"), Value("property"));
    EXPECT_TRUE(one->valueForKeyPath("nothing.here").isAbsent());
    one->setValueForKeyPath("new", "table.z");
    EXPECT_EQ(one->valueForKeyPath("table.z"), Value("new"));
    one->setValueForKeyPath("newer", "table.z");
    EXPECT_EQ(one->valueForKeyPath("table.z"), Value("newer"));
    one->setValueForKey(Value(), kZRFirstNameProperty);
    EXPECT_THROW(one->setValueForKey("x", kZRUIDProperty), std::invalid_argument);
}

TEST_F(MultiValues, AndTheirCardAreEmptyWithoutText)
{
    EXPECT_FALSE(person(roster, {{kZREmailProperty, multiValue({{"a", "x"}})}})->isEmptyPerson());
    EXPECT_TRUE(person(roster, {{kZRFirstNameProperty, ""}})->isEmptyPerson());
    EXPECT_FALSE(person(roster, {{kZRPersonFlags, 1}})->isEmptyPerson());
}

} // namespace test
