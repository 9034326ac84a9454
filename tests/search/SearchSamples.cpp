// The samples themselves.
#include "search/SearchSamples.h"

#include "core/ZRGroup.h"
#include "platform/text/Dates.h"

#include <fmt/format.h>

#include <algorithm>

namespace test {

namespace {

using Kind = NaiveRecord::Kind;
using Texts = std::vector<std::string>;
using Keys = std::vector<std::optional<std::string>>;

constexpr double kDay = 86400;

/// Case, accents composed and apart, ligatures and wide digits, both i of Turkish, marks alone, kana.
const Texts kSpellings{"Ana", "ANA", "ana", "Ána", "A\u0301na", "Straße", "STRASSE", "İstanbul", "istanbul",
    "ıstanbul", "ﬁn", "fin", "１２３", "123", "\u212Bke", "Åke", "が", "か\u3099", "か", "Zoë", "Zoe",
    "Ωmega", "n", "Ana Lima", "\u0301"};

const Texts kFewSpellings{"Ana", "ana", "Ána", "Straße", "STRASSE", "ﬁn", "n"};

std::vector<Value> withNothing(const Texts& texts)
{
    std::vector<Value> values{Value(), Value(platform::NullMarker{}), Value("")};
    for (const auto& text : texts)
        values.emplace_back(text);
    return values;
}

std::vector<Value> textsAndNumber(const Texts& texts)
{
    auto values = withNothing(texts);
    values.emplace_back(7);
    return values;
}

std::vector<Value> numbers()
{
    auto values = withNothing({"7"});
    for (const int number : {0, 1, 7, 16})
        values.emplace_back(number);
    values.emplace_back(2.5);
    return values;
}

const Texts kDays{"today", "today+1", "today-1", "today+3", "today-3", "today+7", "today-7", "today+40",
    "1604-02-29", "1980-02-29", "1981-03-01", "2000-12-31", "2001-01-01", "1999-06-15", "2150-07-04",
    "1984-12-28", "1985-01-03"};

/// Days to compare with, and intervals.
std::vector<Value> daysAndIntervals()
{
    auto values = withNothing({"1980-02-29"});
    const auto day = [&](platform::CalendarDay of) { values.emplace_back(*platform::noonOf(of)); };
    day({1980, 2, 29});
    day({2001, 1, 1});
    const Date now{platform::Clock::current().now()};
    values.emplace_back(now);
    for (const double interval : {0.0, 0.31, 1.0, 3.0, 7.0, 35.0, 200.0, 400.0})
        values.emplace_back(interval * kDay);
    return values;
}

const Keys kNoKeys{std::nullopt, "City"};

const Keys kSomeLabels{std::nullopt, "home", "work"};

Searched texts(std::string_view property, bool isOfPeople = true)
{
    return {.property = std::string(property),
        .contents = kFewSpellings,
        .values = {Value(), Value(""), Value("Ána"), Value("STRASSE")},
        .isOfPeople = isOfPeople};
}

Searched entries(std::string_view property, const Texts& contents, bool isOfPeople = true)
{
    return {.property = std::string(property),
        .labels = kSomeLabels,
        .contents = contents,
        .values = {Value(), Value(""), Value(7), Value(contents.front()), Value(contents[1])},
        .isOfPeople = isOfPeople};
}

Searched dates(std::string_view property, bool hasLabels = false, bool isOfPeople = true)
{
    return {.property = std::string(property),
        .labels = hasLabels ? kSomeLabels : Keys{std::nullopt},
        .contents = kDays,
        .values = daysAndIntervals(),
        .isOfPeople = isOfPeople};
}

Searched moments(std::string_view property, bool isOfPeople)
{
    auto searched = dates(property, false, isOfPeople);
    searched.contents = {
        "now", "now-3600", "now+3600", "now-86400", "now+200000", "now-9000000", "1980-02-29"};
    return searched;
}

Searched declared(std::string_view property, const Texts& contents, std::vector<Value> values)
{
    const bool hasLabels = std::string_view("Aliases Scores Weights Visits Lists Maps Blobs").find(property)
        != std::string_view::npos;
    return {.property = std::string(property),
        .labels = hasLabels ? kSomeLabels : Keys{std::nullopt, "home"},
        .contents = contents,
        .values = std::move(values)};
}

Searched addresses()
{
    return {.property = std::string(zr::kZRAddressProperty),
        .keys = {std::nullopt, "City", "CountryCode", "Floor"},
        .labels = kSomeLabels,
        .contents = {"{Street:Ana, City:Porto, ZIP:4000, Country:Portugal, CountryCode:pt}",
            "{City:PORTO, CountryCode:uk}", "{Street:Porto, Floor:7}", "{CountryCode:de}",
            "{Street:Porto, City:Porto, State:Porto, ZIP:Porto, Country:Porto, Region:Porto, Sama:Porto}",
            "{Region:Straße, Sama:か}"},
        .values = textsAndNumber({"Porto", "gb", "o"})};
}

Searched memberships(TwinRoster& twin, bool isOfPeople)
{
    Searched searched{.property = std::string(zr::kZRParentGroupsProperty), .isOfPeople = isOfPeople};
    searched.values = withNothing({std::string(zr::kZRSmartGroupAnyGroupMembershipProperty), "no group"});
    for (const auto kind : {Kind::group, Kind::smartGroup})
        for (const auto& id : twin.idsOfKind(kind))
            searched.values.emplace_back(twin.record(id));
    return searched;
}

void addBuiltIn(std::vector<Searched>& all)
{
    all.push_back({.property = std::string(zr::kZRFirstNameProperty),
        .keys = kNoKeys,
        .contents = kSpellings,
        .values = textsAndNumber(kSpellings)});
    for (const auto property : {zr::kZRLastNameProperty, zr::kZRMiddleNameProperty, zr::kZRNicknameProperty,
             zr::kZROrganizationProperty, zr::kZRDepartmentProperty, zr::kZRJobTitleProperty,
             zr::kZRTitleProperty, zr::kZRSuffixProperty, zr::kZRMaidenNameProperty,
             zr::kZRFirstNamePhoneticProperty, zr::kZRMiddleNamePhoneticProperty,
             zr::kZRLastNamePhoneticProperty, zr::kZRHomePageProperty, zr::kZRNoteProperty})
        all.push_back(texts(property));
    all.push_back({.property = std::string(zr::kZRPersonFlags),
        .contents = {"0", "1", "8", "16", "17", "33"},
        .values = numbers()});
    const Texts mails{"ana@example.org", "ANA@example.org", "Ána@example.org", "bo@ﬁn.example"};
    all.push_back(entries(zr::kZREmailProperty, mails));
    for (const auto property : {zr::kZRPhoneProperty, zr::kZRAIMInstantProperty, zr::kZRICQInstantProperty,
             zr::kZRYahooInstantProperty, zr::kZRMSNInstantProperty, zr::kZRJabberInstantProperty,
             zr::kZRRelatedNamesProperty, zr::kZRURLsProperty, zr::kZRCalendarURIsProperty})
        all.push_back(entries(property, {"Ana", "+49 (30) 123", "ÁNA", "STRASSE", "１２３", ""}));
    all.push_back(addresses());
    all.push_back(dates(zr::kZRBirthdayProperty));
    all.push_back(dates(zr::kZROtherDatesProperty, true));
    all.push_back(moments(zr::kZRCreationDateProperty, true));
}

void addDeclared(std::vector<Searched>& all)
{
    const Texts amounts{"1", "2", "7", "16"}, lists{"Ana;Bo", "7;Ána", "Bo"},
        maps{"{City:Porto, Note:Ana}", "{Note:porto}"};
    all.push_back(declared("Hobby", kFewSpellings, textsAndNumber({"Ána", "STRASSE"})));
    all.push_back(declared("Lucky", amounts, numbers()));
    all.push_back(declared("Ratio", {"2.5", "2", "-1"}, numbers()));
    all.push_back(declared("Joined", kDays, daysAndIntervals()));
    all.push_back(declared("Tags", lists, textsAndNumber({"Ana"})));
    all.push_back(declared("Map", maps, textsAndNumber({"Ana"})));
    all.back().keys = kNoKeys;
    auto bytes = withNothing({"Ana"});
    bytes.push_back(Value::data("Ana"));
    all.push_back(declared("Blob", {"Ana", "Bo"}, bytes));
    all.push_back(declared("Aliases", kFewSpellings, textsAndNumber({"Ána", "STRASSE"})));
    all.push_back(declared("Scores", amounts, numbers()));
    all.push_back(declared("Weights", {"2.5", "2", "-1"}, numbers()));
    all.push_back(declared("Visits", kDays, daysAndIntervals()));
    all.push_back(declared("Lists", lists, textsAndNumber({"Ana"})));
    all.push_back(declared("Maps", maps, textsAndNumber({"Ana"})));
    all.back().keys = kNoKeys;
    all.push_back(declared("Blobs", {"Ana", "Bo"}, bytes));
}

void addOfGroups(std::vector<Searched>& all, TwinRoster& twin)
{
    all.push_back(texts(zr::kZRGroupNameProperty, false));
    all.push_back(moments(zr::kZRCreationDateProperty, false));
    all.push_back(texts("Motto", false));
    all.push_back({.property = "Rank", .contents = {"1", "2"}, .values = numbers(), .isOfPeople = false});
    all.push_back(entries("Songs", {"Ana", "bo", "STRASSE"}, false));
    all.push_back(memberships(twin, false));
}

} // namespace

std::vector<Searched> searchedProperties(TwinRoster& twin)
{
    std::vector<Searched> all;
    all.push_back({.property = "", .values = textsAndNumber(kSpellings)});
    addBuiltIn(all);
    addDeclared(all);
    all.push_back({.property = "Unheard", .values = textsAndNumber({"Ana"})});
    all.push_back(memberships(twin, true));
    addOfGroups(all, twin);
    return all;
}

namespace {

/// Names in which only accents, widths or case differ come by the random cards; here is what takes a card of
/// its own.
const char* const kCards[]{
    "First=Ana | Last=Lima | Email[home]=ana@example.org | Email[home]=bo@ﬁn.example | Note=Ana's",
    "First=Bo | Email[work]=Ána@example.org | Email[home]=ANA@example.org | Phone[home]=+49 (30) 123",
    "First=İstanbul | Organization=Straße | ZRPersonFlags=1",
    "First= | Last= | Note=",
    "Nickname=か\u3099 | Phone[work]=１２３ | Phone[home]=１２３ | Phone[home]=Ana",
    "First=Zoë | Birthday=1980-02-29 | ZRDate[home]=1980-02-29 | ZRDate[home]=1604-02-29",
    "First=Zoe | Birthday=1604-02-29 | ZRDate[work]=2150-07-04 | Joined=2150-07-04",
    "First=New Year's Eve | Birthday=2000-12-31 | ZRDate[home]=2001-01-01",
    "First=New Year | Birthday=2001-01-01 | Joined=2001-01-01 | Visits[home]=2000-12-31",
    "First=Later | Birthday=2150-07-04",
    "First=Today | Birthday=today | ZRDate[home]=today | Joined=today | Creation=now",
    "First=Tomorrow | Birthday=today+1 | ZRDate[home]=today+1 | Joined=now+86400 | Creation=now-86400",
    "First=Yesterday | Birthday=today-1 | ZRDate[home]=today-1 | Joined=now-86400 | Creation=now-604800",
    "First=At the end | Birthday=today+7 | ZRDate[home]=today+7 | Joined=now+604800",
    "First=At the other end | Birthday=today-7 | ZRDate[work]=today-3 | Joined=now-604800",
    "First=March | Birthday=1981-03-01 | ZRDate[home]=1984-12-28 | ZRDate[home]=1985-01-03",
    "Address[home]={Street:Porto, City:Porto, State:Porto, ZIP:Porto, Country:Porto, Region:Porto, "
    "Sama:Porto}",
    "Address[home]={City:Porto} | Address[home]={Street:Ana} | Address[work]={City:PORTO, CountryCode:uk}",
    "Address[work]={Street:Porto, Floor:7}",
    "AIMInstant[home]=Ana | ICQInstant[home]=Bo | JabberInstant[work]=Ana",
    "ZRRelatedNames[_$!<Friend>!$_]=Ana | URLs[home]=STRASSE | calendarURIs[home]=ÁNA",
    "Hobby=Ana | Lucky=7 | Ratio=2.5 | Joined=1980-02-29 | Tags=Ana;Bo | Map={City:Porto, Note:Ana} | "
    "Blob=Ana",
    "Aliases[home]=Ana | Aliases[home]=Ána | Scores[home]=1 | Scores[work]=16 | Weights[home]=2.5 | "
    "Visits[home]=today | Visits[work]=1980-02-29 | Lists[home]=Ana;Bo | Maps[home]={City:Porto, Note:Ana} | "
    "Blobs[home]=Ana",
    "ZRPersonFlags=17 | HomePage=Ana",
    "ZRPersonFlags=8",
};
constexpr int kRandomCards = 76;

void addGroups(TwinRoster& twin)
{
    const auto top = twin.add(Kind::group, "GroupName=Ana | Motto=Straße | Rank=1 | Songs[home]=Ana");
    const auto below = twin.add(Kind::group, "GroupName=Ána | Songs[home]=bo | Songs[work]=Ana");
    const auto lowest = twin.add(Kind::group, "GroupName=STRASSE | Rank=2");
    twin.add(Kind::group, "Motto=n | Creation=now-86400");
    twin.changeMembership(below, top);
    twin.changeMembership(lowest, below);
    const auto people = twin.idsOfKind(Kind::person);
    for (std::size_t i = 0; i < people.size(); ++i)
        if (i % 3 == 0)
            twin.changeMembership(people[i], i % 2 ? top : lowest);

    const std::string named(zr::kZRFirstNameProperty);
    twin.addSmartGroup("Anas",
        {.property = named, .value = Value("ana"), .comparison = kZRContainsSubStringCaseInsensitive});
    twin.addSmartGroup("In any group",
        {.property = std::string(zr::kZRParentGroupsProperty),
            .value = Value(zr::kZRSmartGroupAnyGroupMembershipProperty),
            .comparison = kZRMemberOfGroup});
}

/// Fills in the groups that other groups' searches name, once they are there.
void addNestedSmartGroups(TwinRoster& twin)
{
    const auto memberOf = [&](const std::string& id, ZRSearchComparison comparison) {
        return Condition{.property = std::string(zr::kZRParentGroupsProperty),
            .value = Value(twin.record(id)),
            .comparison = comparison};
    };
    const auto groups = twin.idsOfKind(Kind::group), smart = twin.idsOfKind(Kind::smartGroup);
    twin.addSmartGroup("Of a group", memberOf(groups.front(), kZRMemberOfGroup));
    const auto notOfSmart =
        twin.addSmartGroup("Not of a smart one", memberOf(smart.front(), kZRNotMemberOfGroup));
    const auto circle = twin.addSmartGroup("In a circle", memberOf(notOfSmart, kZRMemberOfGroup));
    Condition round{.conjunction = kZRConjunctionOr,
        .children = {memberOf(circle, kZRMemberOfGroup), memberOf(groups.back(), kZRNotMemberOfGroup)}};
    twin.setSearch(circle, memberOf(twin.addSmartGroup("Back in it", round), kZRMemberOfGroup));
}

} // namespace

void fillWithSamples(TwinRoster& twin)
{
    std::mt19937 random(1);
    for (const char* card : kCards)
        twin.add(Kind::person, card);
    const auto properties = searchedProperties(twin);
    for (int i = 0; i < kRandomCards / 2; ++i)
        addRandomCard(twin, random, properties);
    twin.markAsImported(twin.idsOfKind(Kind::person).front());
    addGroups(twin);
    if (twin.roster() == ZRRoster::sharedRoster()) {
        twin.save();
        addNestedSmartGroups(twin);
    }
    twin.save();
    for (int i = 0; i < kRandomCards / 2; ++i)
        addRandomCard(twin, random, properties);
    const auto people = twin.idsOfKind(Kind::person);
    for (std::size_t i = 0; i < people.size(); i += 5)
        editRandomly(twin, people[i], random, properties);
}

std::string addRandomCard(TwinRoster& twin, std::mt19937& random, const std::vector<Searched>& properties)
{
    const auto id = twin.add(Kind::person, "Suffix=random");
    for (auto count = random() % 8; count > 0; --count)
        editRandomly(twin, id, random, properties);
    return id;
}

void editRandomly(
    TwinRoster& twin, const std::string& id, std::mt19937& random, const std::vector<Searched>& properties)
{
    std::vector<const Searched*> fitting;
    for (const auto& searched : properties)
        if (!searched.contents.empty() && searched.isOfPeople == twin.isPerson(id))
            fitting.push_back(&searched);
    const Searched& searched = *pick(fitting, random);
    if (random() % 6 == 0)
        return twin.fill(id, searched.property, {});
    if (searched.labels.size() < 3)
        return twin.fill(id, searched.property, {{"", pick(searched.contents, random)}});
    std::vector<std::pair<std::string, std::string>> list;
    for (auto count = 1 + random() % 3; count > 0; --count)
        list.emplace_back(pick(Texts{"home", "work", "other"}, random), pick(searched.contents, random));
    twin.fill(id, searched.property, list);
}

} // namespace test
