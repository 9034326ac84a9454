// The parts of a record: what their change means for the card, and whether they say anything.
#include "core/ZRConstants.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"

#include "objectstore/StoreErrors.h"
#include "platform/run/Log.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <exception>

using objectstore::Slot;
using platform::Value;

namespace {

/// For each kind of value that can be empty, the keys of which one must have text.
struct ContentKeys {
    std::string_view entity;
    std::array<std::string_view, 7> keys;
};
constexpr ContentKeys contentKeys[] = {
    {zr::kZRObjectStoreEmailAddressEntityName, {"address"}},
    {zr::kZRObjectStoreMessagingAddressEntityName, {"address"}},
    {zr::kZRObjectStorePhoneNumberEntityName, {"fullNumber"}},
    {zr::kZRObjectStoreRelatedNameEntityName, {"name"}},
    {zr::kZRObjectStoreURLAddressEntityName, {"url"}},
    {zr::kZRObjectStorePostalAddressEntityName,
        {"city", "state", "sama", "region", "street", "zipCode", "countryName"}},
};

} // namespace

platform::Ref<objectstore::StoreObject> ZROSOwnedObject::make(const objectstore::Entity& entity)
{
    return platform::makeRef<ZROSOwnedObject>(entity);
}

void ZROSOwnedObject::didChange(const Slot& slot)
{
    const Slot* owner = entity().owner();
    if (!owner || slot.key == "stringForIndexing" || !context())
        return;
    if (const auto contact = platform::refCast<ZROSContact>(related(*owner)))
        contact->partDidChange(slot);
}

bool ZROSOwnedObject::hasRosterContentForRecord(objectstore::StoreObject& record)
{
    try {
        const std::string& entity = record.entity().name();
        if (entity == zr::kZRObjectStoreDateEntityName)
            return !record.isAbsent(record.slot("date"));
        if (entity == zr::kZRObjectStoreNoteEntityName)
            return !record.isAbsent(record.slot("text"));
        const auto known = std::ranges::find(contentKeys, entity, &ContentKeys::entity);
        return known == std::end(contentKeys) || std::ranges::any_of(known->keys, [&](std::string_view key) {
            return !key.empty() && !record.text(record.slot(key)).empty();
        });
    } catch (const objectstore::InaccessibleObject&) {
        return false;
    } catch (const std::exception& failure) {
        platform::log(fmt::format("Exception introspecting record: {}", failure.what()));
        return false;
    }
}
