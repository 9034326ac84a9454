// A person as vCard 3.0.
#include "core/PersonFlags.h"
#include "interchange/vcard/VCardText.h"
#include "interchange/vcard/ZRPersonVCardAdditions.h"
#include "store/ZRModelSlots.h"
#include "store/ZRRoster.h"

#include <array>
#include <charconv>

using vcard::Entry;
using vcard::EntryKeys;
using vcard::EntryLine;
using vcard::EntryLines;
using Writer = ZRPersonVCardAdditions;

namespace {

void appendGroup(std::string& to, std::int64_t group)
{
    std::array<char, 20> digits;
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), group).ptr;
    to.append("item").append(digits.data(), end).append(".");
}

} // namespace

void Writer::writeVersion30(ZRVCardOptions options, const platform::Value& photo)
{
    const auto& lines = EntryLines::shared();
    _to += "BEGIN:VCARD\r\nVERSION:3.0\r\n";
    writeNames30();
    writeEmails30();
    writePhones30();
    writeAddresses30();
    if (options & kZRVCardWithNote)
        line("NOTE", _card.note().asText());
    writeGeneric(lines.links);
    writeBirthday();
    writeGeneric(lines.messaging);
    if (!photo.asBytes().empty())
        _to.append("PHOTO;BASE64:\r\n")
            .append(zrEncodeBase64Data(photo.asBytes(), true, true, '='))
            .append("\r\n");
    writeGeneric(lines.others);
    writeFlags();
    writeCategories(_to);
    line("X-ZRUID", _person.nts_UniqueId());
    _to += "END:VCARD\r\n";
}

/// A line of one text, unless that is empty.
void Writer::line(std::string_view name, std::string_view value)
{
    if (value.empty())
        return;
    _to.append(name).append(":");
    zrAppendKoshified(_to, value);
    _to += "\r\n";
}

void Writer::writeNames30()
{
    _to += "N:";
    appendName(_to);
    _to += "\r\n";
    line("FN", _person.nts_realCompositeNameIncludingAuxiliaryElements(true));
    for (const auto& [name, slot] : otherNames())
        line(name, _card.text(*slot));
    if (hasOrganization()) {
        _to += "ORG:";
        appendOrganization(_to);
        _to += "\r\n";
    }
    line("TITLE", _card.text(contactSlots().jobTitle));
}

/// `group` counts the item groups, which an entry without keys needs for its label; null for none.
void Writer::writeEntry(std::string_view head, Keys keys, const Entry& entry, std::int64_t* group)
{
    const bool isGrouped = keys.empty() && group;
    if (isGrouped)
        appendGroup(_to, *group);
    _to += head;
    for (const std::string_view key : keys)
        _to.append(";type=").append(key);
    if (entry.isPrimary)
        _to += ";type=pref";
    _to += ':';
    zrAppendKoshified(_to, entry.value(_scratch));
    _to += "\r\n";
    if (isGrouped)
        appendLabel(entry.label(), _to, (*group)++);
}

void Writer::writeEmails30()
{
    _card.forEachEntry(EntryLines::shared().emails, [&](const Entry& entry) {
        const std::string_view key = _vCardKeyForEmailLabel(entry.label());
        writeEntry("EMAIL;type=INTERNET", key.empty() ? Keys() : Keys(&key, 1), entry, &_group);
    });
}

void Writer::writePhones30()
{
    _card.forEachEntry(EntryLines::shared().phones, [&](const Entry& entry) {
        writeEntry("TEL", _vCardKeysForPhoneLabel(entry.label()), entry, &_group);
    });
}

/// Each address is in a group, which holds its country code.
void Writer::writeAddresses30()
{
    _card.forEachEntry(EntryLines::shared().addresses, [&](const Entry& entry) {
        const std::string_view key = _vCardKeyForAddressLabel(entry.label(), true);
        appendGroup(_to, _group);
        _to.append("ADR")
            .append(key.empty() ? ";type=HOME" : key)
            .append(entry.isPrimary ? ";type=pref:" : ":");
        appendAddress(_to, entry.row);
        _to += "\r\n";
        if (key.empty())
            appendLabel(entry.label(), _to, _group);
        appendGroup(_to, _group++);
        const std::string_view code = entry.row.text(addressSlots().countryCode);
        _to += "X-ZRADR:";
        _to += code.empty() ? _person.nts_Roster()->defaultCountryCode() : std::string(code);
        _to += "\r\n";
    });
}

void Writer::appendLabel(std::string_view label, std::string& toVCardRep, std::int64_t inGroup)
{
    appendGroup(toVCardRep, inGroup);
    toVCardRep += "X-ZRLabel:";
    zrAppendKoshified(toVCardRep, label);
    toVCardRep += "\r\n";
}

void Writer::writeGeneric(std::span<const EntryLine> lines)
{
    for (const auto& [name, keys] : lines)
        writeGeneric(name, keys, &_group);
}

void Writer::writeGeneric(std::string_view name, const EntryKeys& keys, std::int64_t* group)
{
    _card.forEachEntry(keys, [&](const Entry& entry) {
        const std::string_view key = _vCardKeyForGenericLabel(entry.label());
        writeEntry(name, key.empty() ? Keys() : Keys(&key, 1), entry, group);
    });
}

void Writer::propertyLineForGenericABProperty(
    std::string_view property, std::string_view vCardProperty, bool is21, std::int64_t& groupCount)
{
    if (const EntryKeys* const keys = EntryKeys::of(property); keys && keys->value)
        writeGeneric(vCardProperty, *keys, is21 ? nullptr : &groupCount);
}

void Writer::writeFlags()
{
    const std::int64_t flags = _card.flags();
    if ((flags & personFlags::kShowAsMask) == personFlags::kShowAsCompany)
        _to += "X-ZRShowAs:COMPANY\r\n";
    if (flags & personFlags::kFirstNameFirst)
        _to += "X-ZROrder:FIRST\r\n";
    else if (flags & personFlags::kLastNameFirst)
        _to += "X-ZROrder:LAST\r\n";
}
