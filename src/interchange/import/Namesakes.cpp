// How people with a card's name are found without reading their cards.
#include "interchange/import/Namesakes.h"

#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "core/ZRStringAdditions.h"
#include "objectstore/ColumnFetch.h"
#include "platform/run/Log.h"
#include "platform/text/Fold.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>

using objectstore::FieldValue;
using platform::Value;

namespace interchange {

namespace {

std::uint64_t hashOf(std::string_view text) { return std::hash<std::string_view>{}(text); }

/// Empty for what says nothing, such as a number without digits.
std::string comparedEmail(std::string_view text) { return platform::foldCase(text); }
std::string comparedPhone(std::string_view text) { return zrStandardizedPhoneNumber(text); }

/// How the two kinds of addresses are read, from cards and from columns.
struct Kind {
    std::string_view property;
    std::string_view entity;
    std::string_view column;
    std::string (*compared)(std::string_view);
};
constexpr Kind kinds[] = {
    {zr::kZREmailProperty, "ZROSEmailAddress", "address", comparedEmail},
    {zr::kZRPhoneProperty, "ZROSPhoneNumber", "fullNumber", comparedPhone},
};

using Owners = std::unordered_map<std::int64_t, std::uint64_t>;

/// The hash of each person's id, by the key of the stored person.
platform::Result<Owners> readOwners(ZRManagedObjectContext& context)
{
    Owners owners;
    constexpr std::array<std::string_view, 1> keys{"uniqueId"};
    const auto read = objectstore::fetchColumns(context, objectstore::StoreFetch(contactSlots().entity), keys,
        [&](std::int64_t key, std::span<const FieldValue> fields) {
            owners.emplace(key, hashOf(fields[0].bytes));
        });
    return read ? platform::Result<Owners>(std::move(owners)) : read.error();
}

} // namespace

std::optional<std::string> Namesakes::keyOf(const ZRPerson& card)
{
    auto key = locked(*card.nts_Roster(), ZRAccess::read, [&]() ZR_NTS -> std::optional<std::string> {
        auto* const contact = dynamic_cast<ZROSContact*>(card.zrDatabaseImpl());
        return contact ? ZRNewMerger::newCollisionMapKeyForContact(*contact) : std::nullopt;
    });
    const bool isBlank = key && key->find_first_not_of(" \t\r\n") == std::string::npos;
    return isBlank ? std::nullopt : key;
}

Namesakes::Addresses Namesakes::addressesOf(const ZRPerson& card)
{
    Addresses addresses;
    for (const auto& kind : kinds) {
        const Value value = card.valueForProperty(kind.property);
        if (const auto* entries = value.as<ZRMultiValue>())
            for (const Value& entry : entries->_allValues())
                if (const auto text = kind.compared(entry.asText()); !text.empty())
                    addresses.push_back(hashOf(text));
    }
    std::ranges::sort(addresses);
    return addresses;
}

// Asked of a context of its own: what waits in the roster need not be looked through.
bool Namesakes::readAddresses()
{
    if (_addresses)
        return true;
    const auto context = platform::makeRef<ZRManagedObjectContext>(
        platform::Ref<objectstore::StoreCoordinator>(_merger->targetRoster()->storeCoordinator()));
    auto owners = readOwners(*context);
    platform::Result<void> read = owners ? platform::Result<void>() : owners.error();
    std::vector<OwnedAddress> addresses;
    for (const auto& kind : kinds) {
        const std::array<std::string_view, 2> keys{"owner", kind.column};
        const auto take = [&](std::int64_t, std::span<const FieldValue> fields) {
            const auto owner = owners->find(fields[0].integer);
            const auto text = kind.compared(fields[1].bytes);
            if (owner != owners->end() && !text.empty())
                addresses.emplace_back(owner->second, hashOf(text));
        };
        if (read)
            read = objectstore::fetchColumns(*context,
                objectstore::StoreFetch(*context->coordinator()->model().entity(kind.entity)), keys, take);
    }
    if (!read) {
        platform::log(fmt::format("Cannot read the addresses of all people: {}", read.error().text));
        return false;
    }
    std::ranges::sort(addresses);
    _addresses = std::move(addresses);
    return true;
}

bool Namesakes::shares(const std::string& uniqueId, const Addresses& addresses) const
{
    const std::uint64_t owner = hashOf(uniqueId);
    auto at = std::ranges::lower_bound(*_addresses, owner, {}, &OwnedAddress::first);
    for (; at != _addresses->end() && at->first == owner; ++at)
        if (std::ranges::binary_search(addresses, at->second))
            return true;
    return false;
}

bool Namesakes::hasAddresses(const std::string& uniqueId) const
{
    return std::ranges::binary_search(*_addresses, hashOf(uniqueId), {}, &OwnedAddress::first);
}

Namesakes::Found Namesakes::find(const std::string& key, const ZRPerson& card)
{
    auto ids = _merger->uniqueIdsForCollisionMapKey(key);
    if (ids.size() < 2 || !readAddresses())
        return {std::move(ids)};
    const Addresses addresses = addressesOf(card);
    Found found;
    std::ranges::copy_if(
        ids, std::back_inserter(found.ids), [&](const std::string& id) { return shares(id, addresses); });
    found.sharing = found.ids.size();
    // Whoever says the very same as the card has its addresses, too.
    std::ranges::copy_if(ids, std::back_inserter(found.ids),
        [&](const std::string& id) { return addresses.empty() && !hasAddresses(id); });
    if (found.ids.empty())
        found.ids.push_back(ids.back());
    return found;
}

} // namespace interchange
