// A person as vCard 2.1, which knows neither groups nor labels of one's own.
#include "interchange/vcard/VCardCharsets.h"
#include "interchange/vcard/VCardText.h"
#include "interchange/vcard/ZRPersonVCardAdditions.h"
#include "store/ZRModelSlots.h"

using vcard::Entry;
using vcard::EntryKeys;
using vcard::EntryLine;
using vcard::EntryLines;
using Writer = ZRPersonVCardAdditions;

void Writer::writeVersion21(ZRVCardOptions options, std::string_view charset)
{
    _charset = charset;
    _to += "BEGIN:VCARD\r\nVERSION:2.1\r\n";
    writeNames21();
    writeEntries21();
    writeAddresses21();
    if (options & kZRVCardWithNote)
        line21("NOTE", _card.note().asText());
    const auto& lines = EntryLines::shared();
    writeGeneric21({&lines.links.front(), 1});
    writeBirthday();
    writeGeneric21(lines.messaging);
    writeGeneric21(lines.others);
    std::string categories;
    writeCategories(categories);
    zrAppendString(_to, categories);
    _to += "END:VCARD\r\n";
}

void Writer::encodedLine(std::string_view head, std::string_view escaped)
{
    _to += head;
    encodedLineForValue(_to, escaped, _charset);
}

/// A line of one text, unless that is empty.
void Writer::line21(std::string_view name, std::string_view value)
{
    if (!value.empty())
        encodedLine(name, zrVCardKoshify(value));
}

void Writer::writeNames21()
{
    std::string joined;
    appendName(joined);
    encodedLine("N", joined);
    line21("FN", _person.nts_realCompositeNameIncludingAuxiliaryElements(true));
    for (const auto& [name, slot] : otherNames())
        line21(name, _card.text(*slot));
    if (hasOrganization()) {
        joined.clear();
        appendOrganization(joined);
        encodedLine("ORG", joined);
    }
    line21("TITLE", _card.text(contactSlots().jobTitle));
}

void Writer::writeEntries21()
{
    const auto write = [&](std::string head, Keys keys, const Entry& entry) {
        for (const std::string_view key : keys)
            head.append(";").append(key);
        encodedLine(head, zrVCardKoshify(entry.value(_scratch)));
    };
    _card.forEachEntry(EntryLines::shared().emails, [&](const Entry& entry) {
        const std::string_view key = _vCardKeyForEmailLabel(entry.label());
        write("EMAIL;INTERNET", key.empty() ? Keys() : Keys(&key, 1), entry);
    });
    _card.forEachEntry(EntryLines::shared().phones,
        [&](const Entry& entry) { write("TEL", _vCardKeysForPhoneLabel(entry.label()), entry); });
}

void Writer::writeAddresses21()
{
    _card.forEachEntry(EntryLines::shared().addresses, [&](const Entry& entry) {
        const std::string_view key = _vCardKeyForAddressLabel(entry.label(), false);
        std::string head = "ADR", value;
        if (!key.empty())
            head.append(";").append(key);
        appendAddress(value, entry.row);
        encodedLine(head, value);
    });
}

void Writer::propertyLineForGenericABProperty21(
    std::string_view property, std::string_view vCardProperty, std::string_view charset)
{
    _charset = charset;
    if (const EntryKeys* const keys = EntryKeys::of(property); keys && keys->value)
        writeGeneric21(vCardProperty, *keys);
}

void Writer::writeGeneric21(std::span<const EntryLine> lines)
{
    for (const auto& [name, keys] : lines)
        writeGeneric21(name, keys);
}

void Writer::writeGeneric21(std::string_view name, const EntryKeys& keys)
{
    _card.forEachEntry(keys, [&](const Entry& entry) {
        _to += name;
        if (const std::string_view key = _vCardKeyForGenericLabel(entry.label()); !key.empty())
            _to.append(";type=").append(key);
        if (entry.isPrimary)
            _to += ";type=pref";
        std::optional<std::string> charset;
        const std::string bytes =
            encodedDataForValue(zrVCardKoshify(entry.value(_scratch)), charset, _charset);
        if (charset)
            _to.append(";CHARSET=").append(*charset);
        _to.append(":").append(bytes).append("\r\n");
    });
}
