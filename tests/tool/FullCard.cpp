// What is in the card that has everything.
#include "tool/FullCard.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/files/Preferences.h"
#include "platform/text/Dates.h"
#include "store/ZRRoster.h"
#include "support/Role.h"

#include <gtest/gtest.h>

namespace test {

namespace {

using platform::Ref;
using platform::Value;

struct Single {
    std::string_view property;
    Value value;
};

struct Entry {
    std::string_view label;
    Value value;
};

struct Multi {
    std::string_view property;
    std::vector<Entry> entries;
};

Value day(int year, int month, int number) { return Value(*platform::noonOf({year, month, number})); }

Value dictionary(std::string_view key, const Value& value)
{
    return Value::dictionary({{std::string(key), value}});
}

/// Types by name; the values are below.
const std::vector<std::pair<std::string, ZRPropertyType>> customTypes{{"x.text", kZRPropertyTypeString},
    {"x.number", kZRPropertyTypeInteger}, {"x.real", kZRPropertyTypeReal}, {"x.day", kZRPropertyTypeDate},
    {"x.list", kZRPropertyTypeArray}, {"x.table", kZRPropertyTypeDictionary},
    {"x.bytes", kZRPropertyTypeData}, {"x.texts", kZRPropertyTypeMulti | kZRPropertyTypeString},
    {"x.numbers", kZRPropertyTypeMulti | kZRPropertyTypeInteger},
    {"x.days", kZRPropertyTypeMulti | kZRPropertyTypeDate},
    {"x.tables", kZRPropertyTypeMulti | kZRPropertyTypeDictionary}};

std::vector<Single> singles()
{
    return {{zr::kZRFirstNameProperty, "Ana"}, {zr::kZRMiddleNameProperty, "Maria"},
        {zr::kZRLastNameProperty, "Lima"}, {zr::kZRFirstNamePhoneticProperty, "アナ"},
        {zr::kZRMiddleNamePhoneticProperty, "マリア"}, {zr::kZRLastNamePhoneticProperty, "リマ"},
        {zr::kZRBirthdayProperty, day(1970, 5, 1)}, {zr::kZROrganizationProperty, "Works; & Co, \"Ltd\""},
        {zr::kZRDepartmentProperty, "R:D"}, {zr::kZRJobTitleProperty, "Chief\\of \\n all"},
        {zr::kZRTitleProperty, "Dr."}, {zr::kZRSuffixProperty, "PhD"}, {zr::kZRNicknameProperty, "Nia, Nini"},
        {zr::kZRMaidenNameProperty, "Reis"}, {zr::kZRNoteProperty, "One\nTwo; three\\four, \"five\"\r\nsix "},
        {zr::kZRPersonFlags, 32 | 64}, {"x.text", "a,b"}, {"x.number", 42}, {"x.real", 1.5},
        {"x.day", day(2001, 2, 3)}, {"x.list", Value::array({"a", 1})}, {"x.table", dictionary("a", "b")},
        {"x.bytes", Value::data(std::string_view("\0\xFF", 2))}};
}

std::vector<Multi> multis()
{
    const Value home = Value::dictionary({{"Street", "Rua 1\nCasa 2"}, {"City", "Porto"}, {"ZIP", "4000"},
        {"Country", "Portugal"}, {"CountryCode", "pt"}, {"x.floor", "3"}});
    const Value work = Value::dictionary({{"Street", "Av; 9"}, {"City", "Lisboa"}});
    const Entry messages[] = {{zr::kZRHomeLabel, "ana@im"}, {"boat", "lima@im"}};
    const std::vector<Entry> both(std::begin(messages), std::end(messages));
    return {{zr::kZREmailProperty,
                {{zr::kZREmailHomeLabel, "ana@home.example"}, {"boat", "ana@boat.example"},
                    {zr::kZREmailHomeLabel, "second@home.example"}}},
        {zr::kZRPhoneProperty,
            {{zr::kZRPhoneHomeLabel, "+49 (0)30 12-34 56"}, {zr::kZRPhoneMobileLabel, "+1 555 0101"},
                {zr::kZRPhoneWorkFAXLabel, "555 0102"}, {"boat", "555 0103"}}},
        {zr::kZRAddressProperty,
            {{zr::kZRAddressHomeLabel, home}, {zr::kZRAddressWorkLabel, work}, {"boat", work}}},
        {zr::kZRAIMInstantProperty, both}, {zr::kZRICQInstantProperty, both},
        {zr::kZRYahooInstantProperty, both}, {zr::kZRMSNInstantProperty, both},
        {zr::kZRJabberInstantProperty, both},
        {zr::kZRURLsProperty,
            {{zr::kZRHomePageLabel, "http://lima.example/a,b;c"}, {"boat", "http://boat.example/ü"}}},
        {zr::kZRCalendarURIsProperty, {{zr::kZRHomeLabel, "http://cal.example/"}}},
        {zr::kZROtherDatesProperty,
            {{zr::kZRAnniversaryLabel, day(1999, 12, 31)}, {"boat", day(2001, 2, 3)}}},
        {zr::kZRRelatedNamesProperty, {{zr::kZRFriendLabel, "Ben Ek"}, {"captain", "Chloé"}}},
        {"x.texts", both}, {"x.numbers", {{"a", 1}, {"b", 2}}}, {"x.days", {{"a", day(2000, 1, 1)}}},
        {"x.tables", {{"a", dictionary("k", "v")}}}};
}

/// Of several entries the second is the primary one.
Value multiValue(const std::vector<Entry>& entries)
{
    const auto values = platform::makeRef<ZRMutableMultiValue>();
    for (const auto& [label, value] : entries)
        values->addValue(value, label);
    if (values->count() > 1)
        values->setPrimaryIdentifier(values->identifierAtIndex(1));
    return Value(values);
}

std::string identifierAt(const ZRPerson& person, std::string_view property, ZRIndex index)
{
    return person.valueForProperty(property).as<ZRMultiValue>()->identifierAtIndex(index);
}

Ref<ZRRoster> openAt(const std::string& directory)
{
    platform::Preferences::shared().setArgument("ZRAlternateDataStoreDirectory", Value(directory));
    ZRRoster::setShouldCreateEmptyDatabase(true);
    return ZRRoster::sharedRoster();
}

void makeGroup(const Ref<ZRRoster>& roster, ZRPerson& person)
{
    const auto group = ZRGroup::initWithRoster(roster);
    group->setValue("Friends", zr::kZRGroupNameProperty);
    group->addMember(person);
    for (const auto property : {zr::kZREmailProperty, zr::kZRPhoneProperty, zr::kZRAddressProperty})
        group->setDistributionIdentifier(identifierAt(person, property, 2), property, person);
}

const Role maker("make the full card", [](const Words& words) {
    const auto roster = openAt(words.at(0));
    std::vector<std::pair<std::string, Value>> types(customTypes.begin(), customTypes.end());
    ZRPerson::addPropertiesAndTypes(Value::dictionary(std::move(types)), roster.get());
    const auto person = ZRPerson::initWithRoster(roster);
    for (const auto& [property, value] : singles())
        person->setValue(value, property);
    for (const auto& [property, entries] : multis())
        person->setValue(multiValue(entries), property);
    makeGroup(roster, *person);
    roster->setMe(person);
    const bool isSaved = roster->save() && person->setImageData(Value::data("picture"));
    ZRPerson::setPrivateVCardEnabled(true);
    ZRPerson::setVCardField(zr::kZRBirthdayProperty, true);
    ZRPerson::setVCardField("Phone." + identifierAt(*person, zr::kZRPhoneProperty, 2), true);
    return std::string(isSaved && roster->save() ? "saved" : "not saved");
});

} // namespace

void addFullCard(const std::string& directory)
{
    const auto outcome = play("make the full card", {directory});
    EXPECT_EQ(outcome.answer, "saved") << outcome.log;
}

Json everythingOf(const ToolWorld& world, const std::string& name)
{
    Json card = world.json({"show", name});
    card.at("properties").erase("Modification");
    card["reach"] = world.json({"group", "reach", "Friends", name});
    card["picture"] = world.picture(card);
    return card;
}

} // namespace test
