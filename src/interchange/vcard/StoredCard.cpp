// What of a stored person goes into a vCard, read without making values of it.
#include "interchange/vcard/StoredCard.h"

#include "core/ZRConstants.h"
#include "interchange/vcard/VCardText.h"
#include "objectstore/ReadAhead.h"
#include "objectstore/StoreErrors.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRPropertyPlaces.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

using objectstore::AttributeType;
using objectstore::ObjectList;
using objectstore::ObjectRef;
using objectstore::Slot;
using objectstore::StoreObject;

namespace vcard {

namespace {

using KeysByProperty = std::map<std::string_view, EntryKeys>;

KeysByProperty keysOfPeople()
{
    KeysByProperty all;
    for (const auto& [property, place] : zrPropertiesOf(contactSlots().entity))
        if (place.isMultiValue) {
            const auto& row = *place.entity;
            all.emplace(property,
                EntryKeys{property, *place.key, place.entityKey, place.service, *row.slot("uniqueId"),
                    *row.slot("label"), *row.slot("isPrimary")});
        }
    return all;
}

/// The stored card behind a person; null when it is gone, maybe by another process.
ZROSContact* contactOf(const ZRPerson& person)
{
    auto* const contact = dynamic_cast<ZROSContact*>(person.zrDatabaseImpl());
    if (!contact || !contact->context())
        return nullptr;
    try {
        contact->integer(contactSlots().displayFlags);
        contact->readAllParts();
        objectstore::readAhead(*contact);
    } catch (const objectstore::InaccessibleObject&) {
        return nullptr;
    }
    return contact;
}

/// Whether any source has the card as its Me. Of most cards it has not, and nobody needs to look further.
bool mayBeMe(ZROSContact& contact)
{
    static const Slot& source = contactSlots().of("sourceWhereContactIsMe");
    return contact.related(source) != nullptr;
}

/// The property that the service of a messaging row belongs to; empty for another service.
std::string_view propertyOf(StoreObject& row)
{
    const ObjectRef service = row.related(messagingSlots().service);
    if (!service)
        return {};
    const auto* const keys = EntryKeys::of(service->text(service->slot("serviceName")));
    return keys ? keys->service : std::string_view();
}

} // namespace

const EntryKeys* EntryKeys::of(std::string_view property)
{
    static const auto* const all = new KeysByProperty(keysOfPeople());
    const auto at = all->find(property);
    return at == all->end() ? nullptr : &at->second;
}

EntryLines::EntryLines()
    : emails(*EntryKeys::of(zr::kZREmailProperty))
    , phones(*EntryKeys::of(zr::kZRPhoneProperty))
    , addresses(*EntryKeys::of(zr::kZRAddressProperty))
{
    const auto add = [](std::vector<EntryLine>& lines, std::string_view name, std::string_view property) {
        lines.push_back({name, *EntryKeys::of(property)});
    };
    add(links, "URL", zr::kZRURLsProperty);
    add(links, "CALURI", zr::kZRCalendarURIsProperty);
    add(messaging, "X-AIM", zr::kZRAIMInstantProperty);
    add(messaging, "X-JABBER", zr::kZRJabberInstantProperty);
    add(messaging, "X-MSN", zr::kZRMSNInstantProperty);
    add(messaging, "X-YAHOO", zr::kZRYahooInstantProperty);
    add(messaging, "X-YAHOO-ID", zr::kZRYahooInstantProperty);
    add(messaging, "X-ICQ", zr::kZRICQInstantProperty);
    add(others, "X-ZRDATE", zr::kZROtherDatesProperty);
    add(others, "X-ZRRELATEDNAMES", zr::kZRRelatedNamesProperty);
}

const EntryLines& EntryLines::shared()
{
    static const auto* const lines = new EntryLines;
    return *lines;
}

std::string_view Entry::value(std::string& scratch) const
{
    if (keys.value->type != AttributeType::date)
        return row.text(*keys.value);
    scratch = zrISO8061StringFromStoredDay(row.real(*keys.value));
    return scratch;
}

StoredCard::StoredCard(const ZRPerson& person)
    : _contact(contactOf(person))
    , _hidesFields(_contact && mayBeMe(*_contact) && ZRPerson::privateVCardEnabled()
          && person.nts_Roster()->nts_IsMe(person))
{
}

std::string_view StoredCard::text(const Slot& slot) const
{
    return _contact ? _contact->text(slot) : std::string_view();
}

bool StoredCard::isAbsent(const Slot& slot) const { return !_contact || _contact->isAbsent(slot); }

std::int64_t StoredCard::flags() const
{
    return _contact ? _contact->integer(contactSlots().displayFlags) : 0;
}

std::optional<double> StoredCard::birthday() const
{
    const Slot& slot = contactSlots().birthday;
    if (isAbsent(slot) || (_hidesFields && ZRPerson::vcardFieldisPrivate(zr::kZRBirthdayProperty)))
        return std::nullopt;
    return _contact->real(slot);
}

platform::Value StoredCard::note() const
{
    const ObjectRef note = _contact ? _contact->related(contactSlots().note) : nullptr;
    return note ? note->value(noteSlots().text) : platform::Value();
}

platform::Value StoredCard::lastChange() const
{
    return _contact ? _contact->value(contactSlots().modificationDate) : platform::Value();
}

std::vector<std::string> StoredCard::groupNames() const
{
    std::vector<std::string> names;
    if (!_contact)
        return names;
    const Slot& name = groupSlots().name;
    for (const auto& group : _contact->objects(contactSlots().parentGroups))
        if (!group->isAbsent(name))
            names.emplace_back(group->text(name));
    return names;
}

ObjectList StoredCard::rowsOf(const EntryKeys& keys)
{
    if (!_contact)
        return {};
    if (keys.service.empty())
        return _contact->sortedPropertyValuesWithKey(keys.rows);
    if (!_messaging)
        readMessagingRows();
    ObjectList rows;
    for (const auto& [row, service] : *_messaging)
        if (service == keys.service)
            rows.push_back(row);
    return rows;
}

void StoredCard::readMessagingRows()
{
    _messaging.emplace();
    for (auto& row : _contact->sortedPropertyValuesWithKey(contactSlots().messagingAddresses)) {
        const std::string_view property = propertyOf(*row);
        _messaging->emplace_back(std::move(row), property);
    }
}

/// A row of which something is missing is no entry to anybody.
bool StoredCard::isEntry(const EntryKeys& keys, StoreObject& row)
{
    return !row.isAbsent(keys.label) && !row.isAbsent(keys.uniqueId)
        && (!keys.value || !row.isAbsent(*keys.value));
}

/// Without a primary entry the first one is it.
const StoreObject* StoredCard::primaryOf(const EntryKeys& keys, const ObjectList& rows)
{
    for (const auto& row : rows)
        if (row->boolean(keys.isPrimary))
            return row.get();
    for (const auto& row : rows)
        if (isEntry(keys, *row))
            return row.get();
    return nullptr;
}

bool StoredCard::shows(const EntryKeys& keys, StoreObject& row) const
{
    return !_hidesFields
        || !ZRPerson::vcardFieldisPrivate(fmt::format("{}.{}", keys.property, row.text(keys.uniqueId)));
}

} // namespace vcard
