// Which incoming cards are there already: found by the keys of their names.
#include "merge/ZRNewMerger.h"

#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "core/ZRStringAdditions.h"
#include "objectstore/ColumnFetch.h"
#include "platform/files/UserDefaults.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <array>

using objectstore::FieldKind;
using objectstore::FieldValue;
using objectstore::StorePredicate;
using platform::Ref;

namespace {

/// What the key of a card is made of; absent texts are absent.
struct NameFields {
    std::int64_t displayFlags = 0;
    std::optional<std::string_view> firstName, lastName, organization;
};

std::optional<std::string> nameKey(const NameFields& fields)
{
    constexpr std::string_view missing = " ";
    switch (fields.displayFlags & personFlags::kShowAsMask) {
    case 0:
        return zrCaseNormalizedCopy(
            fmt::format("{} {}", fields.lastName.value_or(missing), fields.firstName.value_or(missing)));
    case 1:
        return zrCaseNormalizedCopy(fields.organization.value_or(missing));
    default:
        return std::nullopt;
    }
}

std::optional<std::string_view> textOf(const FieldValue& field)
{
    return field.kind == FieldKind::absent ? std::nullopt : std::optional(field.bytes);
}

bool mergesNothing()
{
    return platform::UserDefaults::standard().boolForKey(zr::kZRDontAutoMerge)
        || ZRUserDefaults::rosterPreferences()->boolForKey(zr::kZRDontAutoMerge);
}

} // namespace

std::optional<std::string> ZRNewMerger::newCollisionMapKeyForContact(ZROSContact& contact)
{
    const auto& slots = contactSlots();
    const auto text = [&](const objectstore::Slot& slot) {
        return contact.isAbsent(slot) ? std::nullopt : std::optional(contact.text(slot));
    };
    return nameKey({contact.integer(slots.displayFlags), text(slots.firstName), text(slots.lastName),
        text(slots.organization)});
}

const ZRNewMerger::CollisionMap* ZRNewMerger::collisionMap()
{
    if (!_collisionMap && !readCollisionMap())
        return nullptr;
    return &*_collisionMap;
}

// Asked of a context of its own: incoming cards that wait in the target are none of the user's.
bool ZRNewMerger::readCollisionMap()
{
    constexpr std::array<std::string_view, 5> keys = {
        "firstName", "lastName", "organization", "displayFlags", "uniqueId"};
    const auto context = platform::makeRef<ZRManagedObjectContext>(
        Ref<objectstore::StoreCoordinator>(requireTarget().storeCoordinator()));
    objectstore::StoreFetch fetch(contactSlots().entity,
        StorePredicate::any({StorePredicate::isPresent("lastName"), StorePredicate::isPresent("firstName"),
            StorePredicate::isPresent("organization")}));
    if (_targetPersistentStore)
        fetch.affectedStores = {_targetPersistentStore};
    _collisionMap.emplace();
    const auto read =
        objectstore::fetchColumns(*context, fetch, keys, [&](std::int64_t, std::span<const FieldValue> row) {
            auto key = nameKey({row[3].integer, textOf(row[0]), textOf(row[1]), textOf(row[2])});
            if (key && !row[4].bytes.empty())
                takeUp(std::move(*key), std::string(row[4].bytes));
        });
    if (read)
        return true;
    platform::log(fmt::format("Error building collision map: {}", read.error().text));
    _collisionMap.reset();
    _earlierCollisions.clear();
    return false;
}

void ZRNewMerger::takeUp(std::string key, std::string uniqueId)
{
    const auto [at, isFirst] = _collisionMap->try_emplace(std::move(key), uniqueId);
    if (!isFirst)
        _earlierCollisions[at->first].push_back(std::exchange(at->second, std::move(uniqueId)));
}

std::vector<std::string> ZRNewMerger::uniqueIdsForCollisionMapKey(const std::string& key)
{
    const auto* map = collisionMap();
    const auto last = map ? map->find(key) : CollisionMap::const_iterator();
    if (!map || last == map->end())
        return {};
    const auto earlier = _earlierCollisions.find(key);
    std::vector<std::string> ids =
        earlier == _earlierCollisions.end() ? std::vector<std::string>() : earlier->second;
    ids.push_back(last->second);
    return ids;
}

ZRNewMerger::Duplicates ZRNewMerger::duplicatesForPeople(const ZRRecordList& people)
{
    if (people.empty() || mergesNothing() || !collisionMap())
        return {};
    const auto wanted = idsOfNamesakes(people);
    std::vector<std::string> ids;
    for (const auto& [incoming, existing] : wanted)
        ids.push_back(existing);
    std::unordered_map<std::string_view, Ref<ZRPerson>> found;
    const ZRRecordList records = requireTarget().recordsForUniqueIds(ids);
    const ZRGlobalLockScope lock;
    for (const auto& record : records)
        if (auto person = platform::refCast<ZRPerson>(record))
            found.emplace(record->nts_UniqueId(), std::move(person));
    Duplicates duplicates;
    for (const auto& [incoming, existing] : wanted)
        if (const auto at = found.find(existing); at != found.end())
            duplicates.emplace(incoming, at->second);
    if (people.back()->zrDatabaseImpl())
        _targetRoster->prefetchDataForRecords(records);
    return duplicates;
}

std::vector<std::pair<std::string, std::string>> ZRNewMerger::idsOfNamesakes(const ZRRecordList& people)
{
    return locked(requireTarget(), ZRAccess::read, [&]() ZR_NTS {
        std::vector<std::pair<std::string, std::string>> ids;
        for (const auto& person : people) {
            auto* contact = dynamic_cast<ZROSContact*>(person->zrDatabaseImpl());
            const auto key = contact ? newCollisionMapKeyForContact(*contact) : std::nullopt;
            const auto at = key ? _collisionMap->find(*key) : _collisionMap->end();
            if (at != _collisionMap->end())
                ids.emplace_back(person->nts_UniqueId(), at->second);
        }
        return ids;
    });
}
