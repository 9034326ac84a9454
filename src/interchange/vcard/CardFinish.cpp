// What is known of a card only at its end: its name, its entries with their labels, its note.
#include "interchange/vcard/ZRVCardParser+State.h"

#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"

#include <fmt/format.h>

#include <utility>

using namespace vcard;

namespace {

constexpr std::pair<Pending, std::string_view> kEntriesBehindAddresses[] = {
    {Pending::aims, zr::kZRAIMInstantProperty},
    {Pending::jabbers, zr::kZRJabberInstantProperty},
    {Pending::msns, zr::kZRMSNInstantProperty},
    {Pending::yahoos, zr::kZRYahooInstantProperty},
    {Pending::icqs, zr::kZRICQInstantProperty},
    {Pending::dates, zr::kZROtherDatesProperty},
    {Pending::relatedNames, zr::kZRRelatedNamesProperty},
    {Pending::urls, zr::kZRURLsProperty},
    {Pending::calendarURIs, zr::kZRCalendarURIsProperty},
};

/// No value, or a text without characters.
bool holdsNothing(const platform::Value& value)
{
    return value.isNothing() || (value.isString() && value.asText().empty());
}

/// Adds a pending entry; the first one becomes the primary one, unless another says that it is.
void add(ZRMultiValue::Entries& entries, const ZRVCardParameter& entry, platform::Value value,
    const std::string* label)
{
    const std::string_view own = entry.name() ? std::string_view(*entry.name()) : zr::kZROtherLabel;
    entries.identifiers.push_back(ZRMultiValue::_generateIdentifier());
    entries.labels.emplace_back(label ? std::string_view(*label) : own);
    entries.values.push_back(std::move(value));
    if (entry.primary() || !entries.primaryIdentifier)
        entries.primaryIdentifier = entries.identifiers.back();
}

ZRMultiValue::Entries roomFor(std::size_t count)
{
    ZRMultiValue::Entries entries;
    entries.identifiers.reserve(count);
    entries.labels.reserve(count);
    entries.values.reserve(count);
    return entries;
}

} // namespace

void ZRVCardParser::State::finishCard()
{
    finishNames();
    addMultiValues(Pending::emails, zr::kZREmailProperty);
    addMultiValues(Pending::phones, zr::kZRPhoneProperty);
    addAddressMultiValues();
    for (const auto& [kind, property] : kEntriesBehindAddresses)
        addMultiValues(kind, property);
    finishNotes();
    if (card.uid.isString())
        setter->setValueInTemporaryCache(card.uid, ZRTempVCardUIDKey);
    if (card.imageData.isData())
        setter->setImageData(card.imageData);
}

/// A card with a formatted name alone keeps it as its last name; one of an organization without a person's
/// name is a company.
void ZRVCardParser::State::finishNames()
{
    const bool hasOrganization = !holdsNothing(card.organization);
    if (hasOrganization)
        setter->setValue(card.organization, zr::kZROrganizationProperty);
    if (!card.hasLast && !card.hasFirst && card.organization.isAbsent() && !card.formattedName.empty())
        setter->setValue(card.formattedName, zr::kZRLastNameProperty);
    if (hasOrganization && setter->fullName().value_or("").empty())
        setPersonFlags((personFlags() & ~kShowAsBits) + kShowAsCompany);
}

void ZRVCardParser::State::finishNotes()
{
    if (!card.otherNotes.empty())
        card.notes = holdsNothing(card.notes) ? card.otherNotes
                                              : fmt::format("{}\n{}", card.notes.asText(), card.otherNotes);
    if (!holdsNothing(card.notes))
        setter->setValue(card.notes, zr::kZRNoteProperty);
}

const std::string* ZRVCardParser::State::extensionOf(
    const ZRVCardParameter& entry, std::string_view name) const
{
    if (!entry.grouping())
        return nullptr;
    const auto group = card.extensions.find(*entry.grouping());
    if (group == card.extensions.end())
        return nullptr;
    const auto extension = group->second.find(name);
    return extension == group->second.end() || extension->second.empty() ? nullptr
                                                                         : &extension->second.front();
}

void ZRVCardParser::State::addMultiValues(Pending kind, std::string_view property)
{
    if (entries(kind).empty())
        return;
    auto values = roomFor(entries(kind).size());
    for (const auto& entry : entries(kind))
        if (!holdsNothing(entry.value()))
            add(values, entry, entry.value(), extensionOf(entry, kLabelExtension));
    if (!values.values.empty())
        setter->setValue(platform::makeRef<ZRMultiValue>(std::move(values)), property);
}

void ZRVCardParser::State::addAddressMultiValues()
{
    if (entries(Pending::addresses).empty())
        return;
    auto values = roomFor(entries(Pending::addresses).size());
    for (const auto& entry : entries(Pending::addresses)) {
        platform::Value address = entry.value();
        if (const auto* countryCode = extensionOf(entry, kAddressExtension)) {
            auto parts = address.asDictionary()->entries();
            parts.emplace_back(zr::kZRAddressCountryCodeKey, *countryCode);
            address = platform::Value::dictionary(std::move(parts));
        }
        add(values, entry, std::move(address), extensionOf(entry, kLabelExtension));
    }
    setter->setValue(platform::makeRef<ZRMultiValue>(std::move(values)), zr::kZRAddressProperty);
}
