// How people are invented: lists of words, and numbers that choose among them.
#include "generate/People.h"

#include <fmt/format.h>

#include <array>
#include <cstring>
#include <span>
#include <string_view>

namespace bench {

namespace {

using Words = std::span<const std::string_view>;

constexpr std::string_view kFirst[] = {"Ada", "Agnes", "Albin", "Amalia", "Anton", "Astrid", "Barbara",
    "Basil", "Beatrice", "Bertram", "Camilla", "Cecil", "Clement", "Cora", "Dagmar", "Dorian", "Edgar",
    "Elise", "Emil", "Esther", "Fabian", "Flora", "Frieda", "Gideon", "Greta", "Harald", "Helena", "Hubert",
    "Ida", "Ignatius", "Ingrid", "Jasper", "Joan", "Justus", "Kaspar", "Klara", "Leopold", "Lydia", "Magnus",
    "Matilda", "Nils", "Odette", "Oscar", "Pauline", "Ralph", "Regina", "Rufus", "Selma", "Silas", "Tabea",
    "Thea", "Ulrika", "Valentin", "Viola", "Wilma", "Yorick"};
constexpr std::string_view kFirstElsewhere[] = {"Aurélie", "Bjørn", "Cătălina", "Dörte", "Eñaut", "Fánes",
    "Gülşen", "Håkon", "Iñigo", "Jörg", "Šárka", "Žofie", "Светлана", "Борис", "Ελένη", "Νίκος", "葵", "大輔",
    "서연", "نور", "נועם", "Thuý"};
constexpr std::string_view kStem[] = {"Alder", "Apple", "Bracken", "Calder", "Copper", "Dunmore", "Elm",
    "Fern", "Garth", "Hazel", "Heather", "Holly", "Juniper", "Kestrel", "Larch", "Linden", "Maple", "Marsh",
    "Mead", "Nettle", "Oak", "Osprey", "Pine", "Plover", "Reed", "Rowan", "Rush", "Sedge", "Sorrel", "Swift",
    "Thistle", "Teal", "Willow", "Wren", "Yarrow"};
constexpr std::string_view kEnding[] = {"", "bank", "bourne", "croft", "dell", "feldt", "gate", "hurst",
    "kamp", "lund", "man", "mark", "mere", "more", "ridge", "rup", "sen", "shaw", "son", "stad", "thorpe",
    "vik"};
constexpr std::string_view kLastElsewhere[] = {"Ångström-Ek", "Bräuer", "Çınar", "Dąbek", "Étienne",
    "Fjällmo", "Grønvik", "Größler", "Ibáñez", "Jánský", "Kőrös", "Łoś", "Соколова", "Медведев", "Δημητρίου",
    "藤森", "小川", "윤", "الزهراء", "ברק", "Đặng", "Ünal"};
constexpr std::string_view kCompany[] = {"Alpenrose", "Beacon", "Cascade", "Driftwood", "Eastgate",
    "Fairwind", "Glasshouse", "Hearthstone", "Inkwell", "Kingfisher", "Longacre", "Millrace", "Newbridge",
    "Oakleaf", "Paperboat", "Riverside", "Saltmarsh", "Tanglewood", "Understory", "Whitewater"};
constexpr std::string_view kTrade[] = {"Bakery", "Boatyard", "Books, Inc.", "Carpentry GmbH", "Clinic",
    "Consulting; Audit", "Garden Supply", "Instruments AB", "Optics Ltd", "Weaving Mill"};
constexpr std::string_view kDepartment[] = {
    "", "Accounts", "Dispatch", "Design; Drafting", "Purchasing", "Quality", "Workshop"};
constexpr std::string_view kJob[] = {"Apprentice", "Bookkeeper", "Buyer", "Chief of Dispatch", "Designer",
    "Foreman", "Nurse", "Partner", "Receptionist", "Surveyor"};
constexpr std::string_view kStreet[] = {"Almond Lane", "Brewer's Row", "Chestnut Avenue", "Ferry Road",
    "Kirschweg", "Lighthouse Street", "Quai du Port", "Ropewalk", "Tower Hill", "Via dei Tigli"};
constexpr std::string_view kWord[] = {"about", "again", "allotment", "answers", "at", "autumn", "bicycle",
    "borrowed", "bring", "call", "choir", "cousin", "delivery", "evening", "every", "ferry", "finished",
    "for", "from", "garden", "hallway", "in", "invoice", "is", "keys", "ladder", "likes", "Monday",
    "neighbour", "next", "of", "often", "on", "order", "orchard", "paid", "paint", "piano", "returns",
    "second", "shed", "still", "summer", "tea", "the", "to", "tools", "until", "wants", "week", "with",
    "workshop"};
constexpr std::string_view kOwnLabel[] = {"Allotment", "Boathouse", "Choir", "Feriehus", "Workshop"};

struct Place {
    std::string_view city, state, zipCode, country;
    /// A number of a range that is kept free for fiction: country code, area, exchange, digits that vary.
    std::string_view countryCode, area, exchange;
    int digits;
};
constexpr Place kPlace[] = {
    {"Aldersyde", "OR", "97099", "United States", "1", "503", "555-01", 2},
    {"Port Ellis", "ME", "04099", "United States", "1", "207", "555-01", 2},
    {"Netherby", "Cumbria", "CA9 9ZZ", "United Kingdom", "44", "1632", "960", 3},
    {"Buchenau", "", "99999", "Germany", "49", "30", "23125", 3},
    {"Vesterlund", "", "999 99", "Sweden", "46", "8", "465 004", 2},
    {"Saint-Aubry", "", "00999", "France", "33", "1 99", "00", 4},
    {"Kilbracken", "Co. Clare", "V99 ZZ99", "Ireland", "353", "20", "91", 5},
    {"Borgoverde", "", "00099", "Italy", "39", "06", "9900", 4},
    {"Wattle Flat", "NSW", "2999", "Australia", "61", "2", "5550", 4},
    {"Zürstein", "", "9999", "Switzerland", "41", "99", "555", 4},
};

std::string_view oneOf(Random& random, Words words) { return words[random.below(words.size())]; }

/// The ASCII letters and digits of a word in lower case, for addresses of e-mail.
std::string plain(std::string_view word)
{
    std::string letters;
    for (const char c : word)
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            letters += c;
        else if (c >= 'A' && c <= 'Z')
            letters += static_cast<char>(c + ('a' - 'A'));
    return letters.empty() ? "post" : letters;
}

std::string phoneIn(const Place& place, Random& random)
{
    std::string tail;
    for (int i = 0; i < place.digits; ++i)
        tail += static_cast<char>('0' + random.below(10));
    switch (random.below(3)) {
    case 0: {
        std::string digits = fmt::format("+{}{}{}{}", place.countryCode, place.area, place.exchange, tail);
        std::erase_if(digits, [](char c) { return c == ' ' || c == '-'; });
        return digits;
    }
    case 1:
        return fmt::format("+{} {} {}{}", place.countryCode, place.area, place.exchange, tail);
    default:
        return fmt::format("({}) {}{}", place.area, place.exchange, tail);
    }
}

void nameOf(Person& person, Random& random)
{
    const bool elsewhere = random.percent(10);
    person.first = oneOf(random, elsewhere ? Words(kFirstElsewhere) : Words(kFirst));
    person.last = elsewhere ? std::string(oneOf(random, kLastElsewhere))
                            : fmt::format("{}{}", oneOf(random, kStem), oneOf(random, kEnding));
    if (random.percent(20))
        person.middle = oneOf(random, kFirst);
    if (random.percent(4))
        person.title = "Dr.";
    for (const auto* part : {&person.title, &person.first, &person.middle, &person.last})
        if (!part->empty())
            person.fullName += (person.fullName.empty() ? "" : " ") + *part;
}

void workOf(Person& person, Random& random, std::size_t number)
{
    const std::string_view company = oneOf(random, kCompany);
    person.organization = fmt::format("{} {}", company, oneOf(random, kTrade));
    person.department = oneOf(random, kDepartment);
    person.jobTitle = oneOf(random, kJob);
    person.workEmail = fmt::format("{}.{}{}@{}.example.{}", plain(person.first), plain(person.last),
        number % 997, plain(company), random.percent(50) ? "com" : "org");
    person.homeEmail =
        fmt::format("{}{}@mail{}.example.org", plain(person.last), random.below(10'000), random.below(40));
}

void placeOf(Person& person, Random& random)
{
    const Place& place = kPlace[random.below(std::size(kPlace))];
    person.street = fmt::format("{} {}", 1 + random.below(300), oneOf(random, kStreet));
    person.city = place.city;
    person.state = place.state;
    person.zipCode = place.zipCode;
    person.country = place.country;
    person.workPhone = phoneIn(place, random);
    person.cellPhone = phoneIn(place, random);
    if (random.percent(10))
        person.labelledPhone = {std::string(oneOf(random, kOwnLabel)), phoneIn(place, random)};
}

std::string noteOf(Random& random)
{
    std::string note;
    for (std::size_t words = 6 + random.below(26); words > 0; --words)
        note += (note.empty() ? "" : " ") + std::string(oneOf(random, kWord));
    if (random.percent(30))
        note += "\nSee also: the list, page 4; the letter";
    return note;
}

std::string photoOf(Random& random)
{
    constexpr std::size_t size = 15'000;
    std::string bytes("\xff\xd8\xff\xe0\x00\x10JFIF\x00", 11);
    while (bytes.size() < size) {
        const std::uint64_t eight = random.next();
        bytes.append(reinterpret_cast<const char*>(&eight), std::min(sizeof eight, size - bytes.size()));
    }
    return bytes;
}

} // namespace

std::uint64_t Random::next()
{
    _state += 0x9e3779b97f4a7c15u;
    std::uint64_t mixed = _state;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
    return mixed ^ (mixed >> 31);
}

Person personNumbered(std::uint64_t seed, std::size_t number)
{
    Random random(seed ^ (number * 0x2545f4914f6cdd1du));
    Person person;
    const std::uint64_t high = random.next(), low = random.next();
    person.uniqueId = fmt::format("{:08X}-{:04X}-4{:03X}-A{:03X}-{:012X}", high >> 32, (high >> 16) & 0xffff,
        high & 0xfff, low >> 52, low & 0xffff'ffff'ffff);
    nameOf(person, random);
    workOf(person, random, number);
    placeOf(person, random);
    person.birthday =
        fmt::format("{:04}-{:02}-{:02}", 1935 + random.below(75), 1 + random.below(12), 1 + random.below(28));
    person.revised = fmt::format("2024-{:02}-{:02}T{:02}:{:02}:00Z", 1 + random.below(12),
        1 + random.below(28), random.below(24), random.below(60));
    person.note = noteOf(random);
    if (random.percent(2))
        person.photo = photoOf(random);
    return person;
}

} // namespace bench
