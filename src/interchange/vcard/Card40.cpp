// How a person is written as a vCard 4.0.
#include "interchange/vcard/Card40.h"

#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "interchange/vcard/Books40.h"
#include "interchange/vcard/Names40.h"
#include "interchange/vcard/VCardText.h"
#include "platform/text/Escape.h"
#include "store/ZRModelSlots.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

namespace vcard {

namespace {

constexpr std::string_view kBlanks = " \t";

/// Blanks at its ends are no part of a value, and would be escaped in a URI.
std::string_view trimmed(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// "1970-05-01" in the basic form of RFC 6350 §4.3.1, which knows years of four digits alone.
void endWithDay(Line40& line, std::string day)
{
    if (day.size() != std::string_view("1970-05-01").size())
        return line.with("VALUE", "text").text(day);
    std::erase(day, '-');
    line.uri(day);
}

} // namespace

Card40::Card40(const ZRPerson& person, std::string& to) : _person(person), _card(person), _to(to) { }

void Card40::write(ZRVCardOptions options, const platform::Value& photo)
{
    _to += kBegin40;
    writeNames();
    writeOrganization();
    writeTexts();
    writeAddresses();
    writeURIs();
    writeMessaging();
    writeDays();
    writeRelated();
    if (options & kZRVCardWithNote)
        text("NOTE", _card.note().asText());
    if (const std::string_view bytes = photo.asBytes(); !bytes.empty())
        line("PHOTO").uri("data:" + std::string(mediaTypeOfPicture(bytes)) + ";base64,"
            + zrEncodeBase64Data(bytes, false, true, '='));
    writeFlags();
    writeCategories();
    writeBooks();
    _to += kEnd40;
}

void Card40::text(std::string_view name, std::string_view value)
{
    if (!value.empty())
        line(name).text(value);
}

/// FN must be there, even if there is nothing to show.
void Card40::writeNames()
{
    const auto& slots = contactSlots();
    line("FN").text(_person.nts_realCompositeNameIncludingAuxiliaryElements(true));
    const std::array name = {_card.text(slots.lastName), _card.text(slots.firstName),
        _card.text(slots.middleName), _card.text(slots.title), _card.text(slots.suffix)};
    line("N").texts(name, ';');
    text("NICKNAME", slots.nickname);
    text("X-MAIDENNAME", slots.maidenName);
    text("X-PHONETIC-FIRST-NAME", slots.phoneticFirstName);
    text("X-PHONETIC-MIDDLE-NAME", slots.phoneticMiddleName);
    text("X-PHONETIC-LAST-NAME", slots.phoneticLastName);
}

void Card40::writeOrganization()
{
    const auto& slots = contactSlots();
    const std::array units = {_card.text(slots.organization), _card.text(slots.department)};
    if (!units[0].empty() || !units[1].empty())
        line("ORG").texts(std::span(units).first(units[1].empty() ? 1 : 2), ';');
    text("TITLE", slots.jobTitle);
}

Line40 Card40::begin(std::string_view name, std::string_view types, const Entry& entry, std::int64_t group)
{
    Line40 line(_to, name, group);
    line.with("TYPE", types).with("PREF", entry.isPrimary ? "1" : "");
    return line;
}

void Card40::label(const Entry& entry, std::int64_t group)
{
    const std::string_view label = entry.label();
    Line40(_to, "X-ZRLabel", group).texts({&label, 1}, ';');
}

template <class End>
void Card40::entry(std::string_view name, Type40 type, const Entry& entry, End&& end)
{
    const std::int64_t group = type.saysAll ? 0 : _group++;
    Line40 line = begin(name, type.words, entry, group);
    end(line);
    if (group)
        label(entry, group);
}

/// Telephones are texts, as the standard still allows: readers show a tel: address as it stands.
void Card40::writeTexts()
{
    const auto write = [&](std::string_view name, const EntryKeys& keys, auto typeOf) {
        _card.forEachEntry(keys, [&](const Entry& each) {
            if (const std::string_view text = value(each); !text.empty())
                entry(name, typeOf(each.label()), each, [&](Line40& line) { line.text(text); });
        });
    };
    write("TEL", EntryLines::shared().phones, typeOfPhone40);
    write("EMAIL", EntryLines::shared().emails, typeOfEntry40);
}

/// Each address is in a group, which holds its country code. Nothing stands in the first two fields: other
/// programs do not look there (RFC 6350 §6.3.1).
void Card40::writeAddresses()
{
    const auto& slots = addressSlots();
    _card.forEachEntry(EntryLines::shared().addresses, [&](const Entry& address) {
        auto& row = address.row;
        const Type40 type = typeOfEntry40(address.label());
        const std::array fields = {std::string_view(), std::string_view(), row.text(slots.street),
            row.text(slots.city), row.text(slots.state), row.text(slots.zipCode),
            row.text(slots.countryName)};
        begin("ADR", type.words, address, _group).texts(fields, ';');
        if (!type.saysAll)
            label(address, _group);
        writeCountry(address, _group++);
    });
}

void Card40::writeCountry(const Entry& entry, std::int64_t group)
{
    const std::string_view code = entry.row.text(addressSlots().countryCode);
    Line40(_to, "X-ZRADR", group)
        .text(code.empty() ? _person.nts_Roster()->defaultCountryCode() : std::string(code));
}

void Card40::writeURIs()
{
    const auto write = [&](std::string_view name, std::string_view property, auto typeOf) {
        _card.forEachEntry(*EntryKeys::of(property), [&](const Entry& link) {
            if (const std::string_view url = trimmed(value(link)); !url.empty())
                entry(name, typeOf(link.label()), link,
                    [&](Line40& line) { line.uri(platform::addingPercentEscapesIfNecessary(url)); });
        });
    };
    write("URL", zr::kZRURLsProperty, typeOfURL40);
    write("CALURI", zr::kZRCalendarURIsProperty, typeOfEntry40);
}

void Card40::writeMessaging()
{
    constexpr std::string_view kPlain = "@+";
    for (const std::string_view property : {zr::kZRAIMInstantProperty, zr::kZRJabberInstantProperty,
             zr::kZRMSNInstantProperty, zr::kZRYahooInstantProperty, zr::kZRICQInstantProperty})
        _card.forEachEntry(*EntryKeys::of(property), [&](const Entry& message) {
            const std::string_view address = trimmed(value(message));
            if (address.empty())
                return;
            std::string uri(schemeOfService40(property));
            uri.append(":").append(platform::percentEscaped(address, kPlain));
            entry("IMPP", typeOfEntry40(message.label()), message, [&](Line40& line) { line.uri(uri); });
        });
}

/// A card has room for one ANNIVERSARY.
void Card40::writeDays()
{
    if (const auto birthday = _card.birthday()) {
        Line40 bday = line("BDAY");
        endWithDay(bday, zrISO8061StringFromStoredDay(*birthday));
    }
    bool hasAnniversary = false;
    _card.forEachEntry(*EntryKeys::of(zr::kZROtherDatesProperty), [&](const Entry& date) {
        const bool isAnniversary = !hasAnniversary && date.label() == zr::kZRAnniversaryLabel;
        hasAnniversary |= isAnniversary;
        const Type40 type{{}, isAnniversary || date.label() == zr::kZROtherLabel};
        entry(isAnniversary ? "ANNIVERSARY" : "X-ZRDATE", type, date,
            [&](Line40& line) { endWithDay(line, std::string(value(date))); });
    });
}

void Card40::writeRelated()
{
    _card.forEachEntry(*EntryKeys::of(zr::kZRRelatedNamesProperty), [&](const Entry& related) {
        if (const std::string_view name = value(related); !name.empty())
            entry("RELATED", typeOfRelated40(related.label()), related,
                [&](Line40& line) { line.with("VALUE", "text").text(name); });
    });
}

void Card40::writeFlags()
{
    const std::int64_t flags = _card.flags();
    if ((flags & personFlags::kShowAsMask) == personFlags::kShowAsCompany)
        line("KIND").text("org");
    if (flags & personFlags::kFirstNameFirst)
        line("X-ZROrder").text("FIRST");
    else if (flags & personFlags::kLastNameFirst)
        line("X-ZROrder").text("LAST");
}

void Card40::writeCategories()
{
    const auto names = _card.groupNames();
    std::vector<std::string_view> shown;
    std::ranges::copy_if(names, std::back_inserter(shown), [](const auto& name) { return !name.empty(); });
    if (!shown.empty())
        line("CATEGORIES").texts(shown, ',');
}

void Card40::writeBooks() { appendBooks40(_to, _person.nts_UniqueId(), _card.lastChange()); }

} // namespace vcard
