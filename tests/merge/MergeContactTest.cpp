// What one stored card takes over from another, over two contexts and two stores, and what it keeps.
#include "merge/MergeContact.h"
#include "core/ZRConstants.h"
#include "core/ZRMutableMultiValue.h"
#include "merge/MergeWorld.h"
#include "objectstore/StoreErrors.h"
#include "store/ZROSRecord.h"

namespace test {

namespace {

constexpr std::string_view kEverything =
    "First: Ána | Middle: M | Last: Lima | FirstPhonetic: fp | MiddlePhonetic: mp | LastPhonetic: lp | "
    "Organization: Acme | JobTitle: j | Title: t | Suffix: s | Nickname: n | MaidenName: mn | ZRDepartment: "
    "d | "
    "HomePage: hp | Note: said | Birthday: 1970-05-01 | ZRPersonFlags: 17 | Email home: a@b | Email work: "
    "c@d | "
    "Phone home: 1 | Phone home: 2 | Address home: Street=x | Address work: City=y,Planet=z | AIMInstant "
    "home: i | "
    "ICQInstant home: i | JabberInstant work: j | MSNInstant work: m | YahooInstant work: y | ZRDate a: "
    "1999-01-02 | "
    "ZRRelatedNames mother: r | URLs home: u | calendarURIs home: v | RemoteLocation home: w | text: a | "
    "texts t: b | "
    "number: 5 | numbers n: 6 | numbers n: 7 | real: 1.5 | reals r: 2.5 | day: 1980-01-01 | days d: "
    "1981-01-01 | "
    "list: x | lists l: y | table: k=x | tables t: k=y | bytes: z | bytess b: zz";

class MergeContact : public MergeTest {
protected:
    static void merge(ZRPerson& target, const ZRPerson& source)
    {
        locked(*target.nts_Roster(), ZRAccess::write, [&]() ZR_NTS {
            mergeContact(static_cast<ZROSContact&>(*target.zrDatabaseImpl()),
                static_cast<ZROSContact&>(*source.zrDatabaseImpl()));
        });
    }

    /// All that a card says, identifiers and primary entries included, less what is its own.
    static std::string allOf(const ZRPerson& card)
    {
        std::string text;
        for (const auto& property : ZRRecord::propertiesWithRoster(card.recordClass(), card.nts_Roster()))
            if (property != kZRUIDProperty && property != kZRCreationDateProperty
                && property != kZRModificationDateProperty)
                text += property + ": " + textOf(card.valueForProperty(property)) + "\n";
        return text;
    }

    static void edit(
        ZRPerson& card, std::string_view property, const std::function<void(ZRMutableMultiValue&)>& change)
    {
        const Value value = card.valueForProperty(property);
        const auto entries = value.as<ZRMultiValue>()->mutableCopy();
        change(*entries);
        card.setValue(Value(entries), property);
    }
};

// The source is of another store: services and custom properties have other rows there.
TEST_F(MergeContact, TakesOverEverythingFromAnotherStore)
{
    const auto source = imported(kEverything);
    edit(*source, kZRPhoneProperty,
        [](auto& phones) { phones.setPrimaryIdentifier(phones.identifierAtIndex(1)); });
    for (const char* before :
        {"", "First: Old | Email home: o | Note: other | text: q | lists l: gone | ICQInstant work: p"}) {
        SCOPED_TRACE(before);
        const auto target = saved(before);
        const std::string created = textOf(target->valueForProperty(kZRCreationDateProperty));
        merge(*target, *source);
        ASSERT_TRUE(roster->save());
        EXPECT_EQ(allOf(*reread(*target)), allOf(*source));
        EXPECT_EQ(textOf(reread(*target)->valueForProperty(kZRCreationDateProperty)), created);
        EXPECT_EQ(roster->check().problems, std::vector<std::string>());
    }
}

TEST_F(MergeContact, FillsACardThatWasNeverSaved)
{
    const auto source = imported(kEverything);
    source->setImageData(Value::data("picture"));
    const auto target = ZRPerson::initWithRoster(roster);
    merge(*target, *source);
    EXPECT_FALSE(fs::exists(*target->pathForUIDTaggedImage())) << "before it is saved";
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(allOf(*reread(*target)), allOf(*source));
    EXPECT_EQ(reread(*target)->imageData(), Value::data("picture"));
}

// A choice goes with its row, which a rewritten property would not keep.
TEST_F(MergeContact, ChangesRowsInPlace)
{
    const auto target = saved("Email home: a | Email work: b | Email other: c | AIMInstant home: x");
    const auto friends = group("Friends", {target});
    const Value emails = target->valueForProperty(kZREmailProperty);
    const std::string chosen = emails.as<ZRMultiValue>()->identifierAtIndex(1);
    ASSERT_TRUE(friends->setDistributionIdentifier(chosen, kZREmailProperty, *target));
    ASSERT_TRUE(roster->save());

    const auto source = reread(*target);
    merge(*target, *source);
    EXPECT_FALSE(roster->hasUnsavedChanges()) << "both said the same";

    edit(*source, kZREmailProperty, [](auto& entries) {
        entries._moveContentsAt(1, 0);
        entries.replaceValueAtIndex(0, Value("B"));
        entries.replaceLabelAtIndex(0, "new");
        entries.removeValueAndLabelAtIndex(2);
        entries.addValue(Value("d"), "home");
        entries.setPrimaryIdentifier(entries.identifierAtIndex(2));
    });
    source->setValue(Value(), kZRAIMInstantProperty);
    merge(*target, *source);
    const std::string wanted = allOf(*source);
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(lineOf(*reread(*target)), "Email new: B | Email home: a | Email home: d");
    EXPECT_EQ(allOf(*reread(*target)), wanted);
    EXPECT_EQ(friends->distributionIdentifierForProperty(kZREmailProperty, *target), chosen);
}

TEST_F(MergeContact, LeavesAloneWhatIsTheTargets)
{
    const auto target = saved("First: Old | ZRPersonFlags: 1"), twin = saved("First: Twin");
    group("Friends", {target});
    group("Others", {twin});
    roster->setMe(target);
    const Value marked(target->zrosValueForKey("displayFlags").asInteger() | 128);
    target->zrosSetValue(marked, "displayFlags");
    ASSERT_TRUE(roster->save());
    merge(*target, *twin);
    EXPECT_EQ(target->zrosValueForKey("displayFlags"), Value(128));
    EXPECT_EQ(groupsOf(*target), "Friends");
    EXPECT_EQ(roster->me(), target);
    EXPECT_EQ(lineOf(*target), "First: Twin");
    EXPECT_EQ(target->zrosValueForKey("sortingFirstName").asText(), "twin Twin ");
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(roster->peopleMatchingText("twin").size(), 2U);
    EXPECT_EQ(roster->peopleMatchingText("old").size(), 0U);
}

// That an entry goes or moves changes no field: a card without a name goes by its first address.
TEST_F(MergeContact, IsFoundByWhatItSaysThen)
{
    const auto target = saved("Email a: zed@x.org | Email b: abe@x.org | Phone a: 12345");
    const auto source = reread(*target);
    source->setValue(Value(), kZRPhoneProperty);
    merge(*target, *source);
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(roster->peopleMatchingText("12345").size(), 0U);
    edit(*source, kZREmailProperty, [](auto& entries) { entries._moveContentsAt(1, 0); });
    merge(*target, *source);
    EXPECT_EQ(target->zrosValueForKey("sortingLastName").asText(), "abe@x.orgabe@x.org");
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(roster->check().problems, std::vector<std::string>());
}

TEST_F(MergeContact, DeclaresCustomPropertiesThatTheTargetLacks)
{
    ZRPerson::addPropertiesAndTypes(
        Value::dictionary({{"new", Value(1)}, {"clash", Value(1)}}), incoming.get());
    ZRPerson::addPropertiesAndTypes(Value::dictionary({{"clash", Value(2)}}), roster.get());
    const auto source = imported("new: a | clash: b"), target = saved("clash: 5 | First: Ana");
    merge(*target, *source);
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(lineOf(*reread(*target)), "new: a");
    EXPECT_EQ(ZRRecord::typeOfProperty(target->recordClass(), "clash", roster.get()), 2);
}

TEST_F(MergeContact, DoesNothingWithItselfAndRefusesWhatIsGone)
{
    const auto card = saved(kEverything), gone = saved("First: Gone");
    merge(*card, *card);
    EXPECT_FALSE(roster->hasUnsavedChanges());
    const auto other = roster->parallelUniverseRoster();
    ASSERT_TRUE(other->removeRecord(other->recordForUniqueId(gone->uniqueId())));
    ASSERT_TRUE(other->save());
    EXPECT_THROW(merge(*gone, *card), objectstore::InaccessibleObject);
}

} // namespace

} // namespace test
