// The stored side of a card: its sort names, its index string, and what a change of a field makes stale.
#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "objectstore/StoreContext.h"
#include "platform/text/Digits.h"
#include "platform/value/PropertyList.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZRMultiValueObjectStoreWrapper.h"
#include "store/ZROSRecord.h"

#include <algorithm>

using objectstore::ObjectList;
using objectstore::Slot;
using objectstore::StoreObject;
using platform::Value;

namespace {

void append(std::string& text, std::string_view piece)
{
    if (!piece.empty())
        text.append(piece).append(" ");
}

std::string_view firstPresent(StoreObject& object, const Slot& preferred, const Slot& fallback)
{
    return object.isAbsent(preferred) ? object.text(fallback) : object.text(preferred);
}

bool isPresent(StoreObject& object, const Slot& preferred, const Slot& fallback)
{
    return !object.isAbsent(preferred) || !object.isAbsent(fallback);
}

/// The fold orders; the text itself behind it breaks ties.
std::string sortForm(const std::string& base)
{
    return base.empty() ? base : ZROSRecord::newNormalizedSortString(base) + base;
}

void appendAddress(std::string& text, StoreObject& address)
{
    const auto& slots = addressSlots();
    for (const Slot* slot : {&slots.street, &slots.city, &slots.state, &slots.zipCode, &slots.sama,
             &slots.region, &slots.countryName})
        append(text, address.text(*slot));
    if (address.isAbsent(slots.customValuesDictionary))
        return;
    const auto custom = platform::decodePropertyList(address.bytes(slots.customValuesDictionary));
    if (const auto* values = custom ? custom->asDictionary() : nullptr)
        for (const auto& [key, value] : values->entries())
            append(text, value.asText());
}

} // namespace

platform::Ref<StoreObject> ZROSContact::make(const objectstore::Entity& entity)
{
    return platform::makeRef<ZROSContact>(entity);
}

bool ZROSContact::nts_SetValue(
    const Value& value, std::string_view property, bool recordCouldBeInDatabase, ZRRecord& record)
{
    if (!ZROSRecord::nts_SetValue(value, property, recordCouldBeInDatabase, record))
        return false;
    clearStringForIndexing();
    return true;
}

void ZROSContact::awakeFromInsert()
{
    ZROSRecord::awakeFromInsert();
    const auto& slots = contactSlots();
    if (!related(slots.contactIndex))
        setRelated(
            slots.contactIndex, context()->insertObjectOfEntity(*slots.contactIndex.destination).get());
}

// What a save writes is complete: the columns that SQL sorts and searches by are made before it.
void ZROSContact::willSave()
{
    const auto& slots = contactSlots();
    value(slots.sortingFirstKey);
    value(slots.sortingLastKey);
    if (const auto index = related(slots.contactIndex))
        index->value(contactIndexSlots().stringForIndexing);
}

void ZROSContact::willMerge()
{
    clearSortNames();
    clearStringForIndexing();
}

void ZROSContact::didSave() { _hasUserImageChanges = false; }

void ZROSContact::didChange(const Slot& slot)
{
    const auto& slots = contactSlots();
    if (&slot == &slots.imageData)
        _hasUserImageChanges = true;
    if (&slot == &slots.emailAddresses || &slot == &slots.messagingAddresses)
        alternateNameDidChange();
}

void ZROSContact::readAllParts()
{
    if (_partsAreRead || isInserted())
        return;
    _partsAreRead = true;
    managedObjectContext()->preheatContacts({objectstore::ObjectRef(this)});
}

void ZROSContact::partDidChange(const Slot& slot)
{
    clearStringForIndexing();
    if (slot.key == "address")
        alternateNameDidChange();
}

// A card without a name sorts by its first address.
void ZROSContact::alternateNameDidChange()
{
    const auto& slots = contactSlots();
    if (isAbsent(slots.firstName) && isAbsent(slots.lastName))
        clearSortNames();
}

void ZROSContact::clearSortNames()
{
    const auto& slots = contactSlots();
    for (const Slot* slot :
        {&slots.sortingFirstName, &slots.sortingLastName, &slots.sortingFirstKey, &slots.sortingLastKey})
        setPrimitiveValue(*slot, Value());
}

// A card that is being filled changes many times, and its text is stale from the first one on.
void ZROSContact::clearStringForIndexing()
{
    const Slot& text = contactIndexSlots().stringForIndexing;
    const auto index = related(contactSlots().contactIndex);
    if (index && !(index->hasChanged(text) && index->primitiveValue(text).isAbsent()))
        index->setPrimitiveValue(text, Value());
}

std::string ZROSContact::fastAlternateNameForPerson()
{
    const auto& slots = contactSlots();
    if (!isAbsent(slots.organization))
        return std::string(text(slots.organization));
    if (const auto emails = sortedPropertyValuesWithKey(slots.emailAddresses); !emails.empty())
        return std::string(emails.front()->text(emailSlots().address));
    const auto aim =
        ZRMultiValueObjectStoreWrapper::messagingAddressesWithService(zr::kZRAIMInstantProperty, *this);
    return aim.empty() ? std::string() : std::string(aim.front()->text(messagingSlots().address));
}

std::string ZROSContact::createAlternateNameForPerson(ZROSRecord* person)
{
    auto* contact = dynamic_cast<ZROSContact*>(person);
    return contact ? contact->fastAlternateNameForPerson() : std::string();
}

std::string ZROSContact::_newSortingFirstName()
{
    const auto& slots = contactSlots();
    return newSortingName(slots.phoneticFirstName, slots.firstName, slots.phoneticLastName, slots.lastName);
}

std::string ZROSContact::_newSortingLastName()
{
    const auto& slots = contactSlots();
    return newSortingName(slots.phoneticLastName, slots.lastName, slots.phoneticFirstName, slots.firstName);
}

std::string ZROSContact::newSortingName(
    const Slot& phoneticA, const Slot& writtenA, const Slot& phoneticB, const Slot& writtenB)
{
    const auto& slots = contactSlots();
    std::string base;
    if ((integer(slots.displayFlags) & personFlags::kShowAsMask) == personFlags::kShowAsCompany)
        base = text(slots.organization);
    if (base.empty()) {
        if (isPresent(*this, phoneticA, writtenA))
            base.append(firstPresent(*this, phoneticA, writtenA)).append(" ");
        if (isPresent(*this, phoneticB, writtenB))
            base.append(firstPresent(*this, phoneticB, writtenB)).append(" ");
    }
    if (base.empty())
        base = fastAlternateNameForPerson();
    return sortForm(base);
}

std::string ZROSContact::createFirstLastSorting(bool a, bool part1)
{
    const auto& slots = contactSlots();
    if ((integer(slots.displayFlags) & personFlags::kShowAsMask) == personFlags::kShowAsCompany
        && !isAbsent(slots.organization))
        return part1 ? std::string(text(slots.organization)) : std::string();
    return std::string(part1 != a ? firstPresent(*this, slots.phoneticLastName, slots.lastName)
                                  : firstPresent(*this, slots.phoneticFirstName, slots.firstName));
}

const std::vector<std::string>& ZROSContact::prefetchRelationshipKeyPaths()
{
    static const auto* const paths = [] {
        auto* names = new std::vector<std::string>;
        for (const Slot* slot : contactSlots().entity.slots())
            if (slot->kind == objectstore::SlotKind::toMany && slot->holdsParts)
                names->push_back(slot->key);
        names->emplace_back("note");
        return names;
    }();
    return *paths;
}

const std::vector<std::string>& ZROSContact::stringForIndexingKeypaths()
{
    static const auto* const paths = new std::vector<std::string>{"emailAddresses", "phoneNumbers", "note",
        "postalAddresses", "relatedNames", "messagingAddresses", "urlAddresses", "contactIndex"};
    return *paths;
}

std::string ZROSContact::_newStringForIndexing()
{
    const auto& slots = contactSlots();
    std::string text;
    text.reserve(512);
    for (const Slot* slot : {&slots.firstName, &slots.middleName, &slots.lastName, &slots.phoneticFirstName,
             &slots.phoneticMiddleName, &slots.phoneticLastName, &slots.nickname, &slots.maidenName,
             &slots.title, &slots.suffix, &slots.department, &slots.organization, &slots.jobTitle})
        append(text, this->text(*slot));
    if (const auto note = related(slots.note))
        append(text, note->text(noteSlots().text));
    for (const auto& url : objects(slots.urlAddresses))
        append(text, url->text(urlSlots().url));
    for (const auto& address : objects(slots.postalAddresses))
        appendAddress(text, *address);
    for (const auto& email : objects(slots.emailAddresses))
        append(text, email->text(emailSlots().address));
    for (const auto& phone : objects(slots.phoneNumbers)) {
        const std::string_view number = phone->text(phoneSlots().fullNumber);
        append(text, number);
        append(text, platform::digitsOnly(number));
    }
    for (const auto& address : objects(slots.messagingAddresses))
        append(text, address->text(messagingSlots().address));
    for (const auto& related : objects(slots.relatedNames))
        append(text, related->text(relatedNameSlots().name));
    return newNormalizedSearchString(text);
}
