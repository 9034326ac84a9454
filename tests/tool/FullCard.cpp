// What is in the card that has everything.
#include "tool/FullCard.h"

#include "core/ZRGroup.h"
#include "merge/CardsInOneLine.h"
#include "tool/OtherProcess.h"

namespace test {

namespace {

/// Types by name; the values are below.
const std::vector<std::pair<std::string, ZRPropertyType>> customTypes{{"x.text", kZRPropertyTypeString},
    {"x.number", kZRPropertyTypeInteger}, {"x.real", kZRPropertyTypeReal}, {"x.day", kZRPropertyTypeDate},
    {"x.list", kZRPropertyTypeArray}, {"x.table", kZRPropertyTypeDictionary},
    {"x.bytes", kZRPropertyTypeData}, {"x.texts", kZRPropertyTypeMulti | kZRPropertyTypeString},
    {"x.numbers", kZRPropertyTypeMulti | kZRPropertyTypeInteger},
    {"x.days", kZRPropertyTypeMulti | kZRPropertyTypeDate},
    {"x.tables", kZRPropertyTypeMulti | kZRPropertyTypeDictionary}};

constexpr std::string_view everything =
    "First: Ana | Middle: Maria | Last: Lima | FirstPhonetic: アナ | MiddlePhonetic: マリア | "
    "LastPhonetic: リマ | Birthday: 1970-05-01 | Organization: Works; & Co, \"Ltd\" | ZRDepartment: R:D | "
    "JobTitle: Chief\\of \\n all | Title: Dr. | Suffix: PhD | Nickname: Nia, Nini | MaidenName: Reis | "
    "Note: One\nTwo; three\\four, \"five\"\r\nsix  | ZRPersonFlags: 96 | "
    "Email _$!<Home>!$_: ana@home.example | Email boat: ana@boat.example | "
    "Email _$!<Home>!$_: second@home.example | Phone _$!<Home>!$_: +49 (0)30 12-34 56 | "
    "Phone _$!<Mobile>!$_: +1 555 0101 | Phone _$!<WorkFAX>!$_: 555 0102 | Phone boat: 555 0103 | "
    "Address _$!<Home>!$_: Street=Rua 1\nCasa 2,City=Porto,ZIP=4000,Country=Portugal,CountryCode=pt,"
    "x.floor=3 | Address _$!<Work>!$_: Street=Av; 9,City=Lisboa | Address boat: Street=Av; 9,City=Lisboa | "
    "AIMInstant _$!<Home>!$_: ana@im | AIMInstant boat: lima@im | ICQInstant _$!<Home>!$_: ana@im | "
    "ICQInstant boat: lima@im | YahooInstant _$!<Home>!$_: ana@im | YahooInstant boat: lima@im | "
    "MSNInstant _$!<Home>!$_: ana@im | MSNInstant boat: lima@im | JabberInstant _$!<Home>!$_: ana@im | "
    "JabberInstant boat: lima@im | URLs _$!<HomePage>!$_: http://lima.example/a,b;c | "
    "URLs boat: http://boat.example/ü | calendarURIs _$!<Home>!$_: http://cal.example/ | "
    "ZRDate _$!<Anniversary>!$_: 1999-12-31 | ZRDate boat: 2001-02-03 | "
    "ZRRelatedNames _$!<Friend>!$_: Ben Ek | ZRRelatedNames captain: Chloé | x.text: a,b | x.number: 42 | "
    "x.real: 1.5 | x.day: 2001-02-03 | x.table: a=b | x.texts _$!<Home>!$_: ana@im | x.texts boat: lima@im | "
    "x.numbers a: 1 | x.numbers b: 2 | x.days a: 2000-01-01 | x.tables a: k=v";

Ref<ZRPerson> makeCard(const Ref<ZRRoster>& roster)
{
    auto made = card(roster, everything);
    made->setValue(Value::array({"a", 1}), "x.list");
    made->setValue(Value::data(std::string_view("\0\xFF", 2)), "x.bytes");
    for (const auto& property : ZRRecord::propertiesWithRoster(made->recordClass(), roster.get())) {
        const Value value = made->valueForProperty(property);
        if (const auto* several = value.as<ZRMultiValue>(); several && several->count() > 1) {
            const auto entries = several->mutableCopy();
            entries->setPrimaryIdentifier(entries->identifierAtIndex(1));
            made->setValue(Value(entries), property);
        }
    }
    return made;
}

std::string identifierAt(const ZRPerson& person, std::string_view property, ZRIndex index)
{
    return person.valueForProperty(property).as<ZRMultiValue>()->identifierAtIndex(index);
}

void makeGroup(const Ref<ZRRoster>& roster, ZRPerson& person)
{
    const auto group = ZRGroup::initWithRoster(roster);
    group->setValue("Friends", kZRGroupNameProperty);
    group->addMember(person);
    for (const auto property : {kZREmailProperty, kZRPhoneProperty, kZRAddressProperty})
        group->setDistributionIdentifier(identifierAt(person, property, 2), property, person);
}

const Role maker("make the full card", [](const Words& words) {
    const auto roster = openAt(words.at(0));
    ZRPerson::addPropertiesAndTypes(
        Value::dictionary({customTypes.begin(), customTypes.end()}), roster.get());
    const auto person = makeCard(roster);
    makeGroup(roster, *person);
    roster->setMe(person);
    const bool isSaved = roster->save() && person->setImageData(Value::data("picture"));
    ZRPerson::setPrivateVCardEnabled(true);
    ZRPerson::setVCardField(kZRBirthdayProperty, true);
    ZRPerson::setVCardField("Phone." + identifierAt(*person, kZRPhoneProperty, 2), true);
    return std::string(isSaved && roster->save() ? "saved" : "not saved");
});

} // namespace

void addFullCard(const std::string& directory)
{
    const auto outcome = play("make the full card", {directory});
    EXPECT_EQ(outcome.answer, "saved") << outcome.log;
}

} // namespace test
