// The table of what each property of each version becomes.
#include "interchange/vcard/prepare/Map.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>
#include <array>

namespace vcard::prepare {

namespace {

constexpr std::string_view kSpouse = "_$!<Spouse>!$_";
constexpr std::string_view kManager = "_$!<Manager>!$_";
constexpr std::string_view kAssistant = "_$!<Assistant>!$_";
constexpr std::string_view kChild = "_$!<Child>!$_";
constexpr std::string_view kAnniversary = "_$!<Anniversary>!$_";

/// A text of which the record has one.
constexpr Row text(std::string_view name, std::string_view becomes)
{
    return {.name = name, .count = Count::one, .becomes = becomes};
}

/// One of several entries, as it is.
constexpr Row entry(
    std::string_view name, Entries entries, std::string_view becomes, Shape shape = Shape::onePart)
{
    return {.name = name, .entries = entries, .shape = shape, .becomes = becomes};
}

constexpr Row service(std::string_view name, std::string_view scheme)
{
    return {.name = name, .use = Use::service, .word = scheme};
}

constexpr Row relation(std::string_view name, std::string_view label)
{
    return {.name = name, .use = Use::relation, .word = label};
}

constexpr Row anniversary(std::string_view name)
{
    return {.name = name, .use = Use::otherDate, .entries = Entries::dates, .word = kAnniversary};
}

constexpr Row plain(std::string_view name, Use use, std::string_view becomes = {})
{
    return {.name = name, .use = use, .becomes = becomes};
}

constexpr Row address(std::string_view name, std::uint8_t fields)
{
    return {.name = name,
        .entries = Entries::addresses,
        .shape = Shape::fields,
        .fields = fields,
        .least = fields,
        .becomes =
            "a postal address, with the code of a country that is known by its name; LABEL, GEO and TZ "
            "parameters go to the note"};
}

/// Of our own, read as they are.
constexpr Row own(std::string_view name)
{
    return {.name = name, .count = Count::one, .shape = Shape::fields, .becomes = "as it is"};
}

constexpr auto kRows = std::to_array<Row>({
    // ---- names
    {.name = "N",
        .versions = kVersion21,
        .count = Count::one,
        .shape = Shape::fields,
        .fields = 5,
        .becomes = "last, first, middle name, title, suffix; a comma is text"},
    {.name = "N",
        .versions = kLater,
        .use = Use::names,
        .count = Count::one,
        .shape = Shape::fields,
        .fields = 5,
        .becomes = "last, first, middle name, title, suffix; several values of a field become one text"},
    {.name = "FN",
        .use = Use::formattedName,
        .count = Count::one,
        .becomes =
            "the name, where N is missing or empty; the nickname, where it differs and there is none; else "
            "a line of the note"},
    {.name = "NICKNAME", .versions = kVersion21, .count = Count::one, .becomes = "nickname; a comma is text"},
    {.name = "NICKNAME",
        .versions = kLater,
        .use = Use::list,
        .count = Count::one,
        .becomes = "nickname; several values and lines become one text"},
    text("X-MAIDENNAME", "maiden name"),
    text("X-PHONETIC-FIRST-NAME", "how the first name sounds"),
    text("X-PHONETIC-MIDDLE-NAME", "how the middle name sounds"),
    text("X-PHONETIC-LAST-NAME", "how the last name sounds"),
    {.name = "ORG",
        .count = Count::one,
        .shape = Shape::fields,
        .fields = 2,
        .becomes = "organization, department; further units go to the note"},
    text("TITLE", "job title"),
    // ---- how to reach somebody
    {.name = "TEL",
        .use = Use::telephone,
        .entries = Entries::phones,
        .becomes = "a telephone; of a `tel:` address the number, with \" ext. n\" for `;ext=n`"},
    {.name = "EMAIL",
        .use = Use::email,
        .entries = Entries::emails,
        .becomes = "an e-mail address, without `mailto:`"},
    address("ADR", 7),
    address("ADD", 6),
    entry("URL", Entries::urls, "a URL", Shape::wholeLine),
    entry("CALURI", Entries::calendars, "a calendar address", Shape::wholeLine),
    entry("X-AIM", Entries::aims, "a messaging address"),
    entry("X-ICQ", Entries::icqs, "a messaging address"),
    entry("X-JABBER", Entries::jabbers, "a messaging address"),
    entry("X-MSN", Entries::msns, "a messaging address"),
    entry("X-YAHOO", Entries::yahoos, "a messaging address"),
    entry("X-YAHOO-ID", Entries::yahoos, "a messaging address"),
    plain("IMPP", Use::messaging,
        "a messaging address of the service that its scheme names; of an unknown service a URL with the "
        "service "
        "as its label"),
    service("X-SKYPE", "skype"),
    service("X-SKYPE-USERNAME", "skype"),
    service("X-GTALK", "gtalk"),
    service("X-GOOGLE-TALK", "gtalk"),
    service("X-GADUGADU", "gg"),
    service("X-GROUPWISE", "groupwise"),
    service("X-SIP", "sip"),
    service("X-IRC", "irc"),
    service("X-QQ", "qq"),
    service("X-MATRIX", "matrix"),
    // ---- dates and relations
    {.name = "BDAY",
        .use = Use::day,
        .count = Count::one,
        .becomes = "birthday; what is no whole day, the note"},
    {.name = "X-ZRDATE", .use = Use::day, .entries = Entries::dates, .becomes = "another date"},
    anniversary("ANNIVERSARY"),
    anniversary("X-ANNIVERSARY"),
    anniversary("X-EVOLUTION-ANNIVERSARY"),
    anniversary("X-KADDRESSBOOK-X-ANNIVERSARY"),
    anniversary("X-MS-ANNIVERSARY"),
    entry("X-ZRRELATEDNAMES", Entries::relatedNames, "a related name"),
    plain("RELATED", Use::related, "a related name, TYPE its label; an address goes to the note"),
    relation("X-SPOUSE", kSpouse),
    relation("X-EVOLUTION-SPOUSE", kSpouse),
    relation("X-KADDRESSBOOK-X-SPOUSESNAME", kSpouse),
    relation("X-MS-SPOUSE", kSpouse),
    relation("X-MANAGER", kManager),
    relation("X-EVOLUTION-MANAGER", kManager),
    relation("X-KADDRESSBOOK-X-MANAGERSNAME", kManager),
    relation("X-MS-MANAGER", kManager),
    relation("X-ASSISTANT", kAssistant),
    relation("X-EVOLUTION-ASSISTANT", kAssistant),
    relation("X-KADDRESSBOOK-X-ASSISTANTSNAME", kAssistant),
    relation("X-MS-ASSISTANT", kAssistant),
    relation("X-MS-CHILD", kChild),
    // ---- pictures, labels, notes
    {.name = "PHOTO",
        .use = Use::picture,
        .count = Count::one,
        .becomes = "the picture, from base64 or a `data:` address; another address goes to the note"},
    plain("X-LABEL", Use::label, "the label of the entries of its group"),
    plain("X-ZRLABEL", Use::label, "the label of the entries of its group"),
    plain("X-ZRADR", Use::countryCode, "the country code of the address of its group"),
    plain("NOTE", Use::note, "the note, all lines of it"),
    {.name = "GEO", .versions = kVersion21, .use = Use::position},
    {.name = "GEO", .versions = kLater, .use = Use::carried},
    plain("CATEGORIES", Use::categories),
    plain("ROLE", Use::carried),
    plain("TZ", Use::carried),
    plain("LANG", Use::carried),
    plain("GENDER", Use::carried),
    plain("LABEL", Use::carried),
    plain("FBURL", Use::carried),
    plain("CALADRURI", Use::carried),
    plain("LOGO", Use::carried),
    plain("SOUND", Use::carried),
    plain("KEY", Use::carried),
    // ---- what kind of card it is
    plain("KIND", Use::kind,
        "`org`: shown as a company, FN its name where ORG is missing; `group`: a group, where the import "
        "asks for "
        "groups"),
    plain("MEMBER", Use::member,
        "who is in the group, by UID, where the import asks for groups; else the note"),
    plain("AGENT", Use::bookkeeping),
    plain("BEGIN", Use::bookkeeping),
    plain("CLASS", Use::bookkeeping),
    plain("CLIENTPIDMAP", Use::bookkeeping),
    plain("END", Use::bookkeeping),
    plain("MAILER", Use::bookkeeping),
    plain("NAME", Use::bookkeeping),
    plain("PRODID", Use::bookkeeping),
    plain("PROFILE", Use::bookkeeping),
    plain("REV", Use::bookkeeping),
    plain("SORT-STRING", Use::bookkeeping),
    plain("SOURCE", Use::bookkeeping),
    plain("UID", Use::bookkeeping),
    plain("X-EVOLUTION-FILE-AS", Use::bookkeeping),
    plain("X-MS-CARDPICTURE", Use::bookkeeping),
    plain("X-MS-OL-DEFAULT-POSTAL-ADDRESS", Use::bookkeeping),
    plain("X-MS-OL-DESIGN", Use::bookkeeping),
    plain("X-MOZILLA-HTML", Use::bookkeeping),
    plain("VERSION", Use::frame),
    // ---- our own
    {.name = "X-ZRUID", .count = Count::one, .becomes = "as it is"},
    own("X-ZRORDER"),
    own("X-ZRPHOTO"),
    own("X-ZRSHOWAS"),
});

constexpr bool isBefore(const Row& a, const Row& b)
{
    if (a.name.size() != b.name.size())
        return a.name.size() < b.name.size();
    return a.name != b.name ? a.name < b.name : a.versions < b.versions;
}

constexpr auto kSorted = [] {
    auto rows = kRows;
    std::sort(rows.begin(), rows.end(), isBefore);
    return rows;
}();

constexpr std::size_t kLongest = kSorted.back().name.size();

/// Of a name in any case; spread well enough for names of properties.
constexpr std::size_t hashOf(std::string_view name)
{
    const auto letter = [&](std::size_t at) { return static_cast<std::size_t>(upper(name[at])); };
    return letter(0) + 5 * letter(name.size() / 2) + 11 * letter(name.size() - 1) + 43 * name.size();
}

constexpr std::size_t kSlots = 512;
static_assert(kSorted.size() < kSlots / 2);
constexpr std::uint8_t kNoRow = 255;
static_assert(kSorted.size() < kNoRow);

/// The rows by their hash; one that finds its place taken stands in the next free one.
constexpr auto kRowsByHash = [] {
    std::array<std::uint8_t, kSlots> slots{};
    slots.fill(kNoRow);
    for (std::size_t row = 0; row < kSorted.size(); ++row) {
        auto slot = hashOf(kSorted[row].name) % kSlots;
        while (slots[slot] != kNoRow)
            slot = (slot + 1) % kSlots;
        slots[slot] = static_cast<std::uint8_t>(row);
    }
    return slots;
}();

constexpr bool isTableSound()
{
    for (std::size_t i = 0; i < kSorted.size(); ++i) {
        const auto& row = kSorted[i];
        if (i > 0 && kSorted[i - 1].name == row.name && (kSorted[i - 1].versions & row.versions) != 0)
            return false;
        for (const char c : row.name)
            if (c != upper(c) || !isNameCharacter(c))
                return false;
        if (row.fields != 0 && row.shape != Shape::fields)
            return false;
    }
    return true;
}
static_assert(isTableSound(), "a name has one row a version and is upper-case, and only fields are counted");

Versions bitOf(Version version)
{
    if (version == Version::v21)
        return kVersion21;
    return version == Version::v40 ? kVersion40 : kVersion30;
}

} // namespace

std::span<const Row> mapTable() { return kSorted; }

const Row* rowOf(std::string_view name, Version version)
{
    if (name.empty() || name.size() > kLongest)
        return nullptr;
    for (auto slot = hashOf(name) % kSlots; kRowsByHash[slot] != kNoRow; slot = (slot + 1) % kSlots)
        if (const auto& row = kSorted[kRowsByHash[slot]];
            (row.versions & bitOf(version)) != 0 && (row.name == name || equalInAnyCase(row.name, name)))
            return &row;
    return nullptr;
}

} // namespace vcard::prepare
