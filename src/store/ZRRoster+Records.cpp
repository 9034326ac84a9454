// The records of a roster: found, added, removed, and kept track of by id.
#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRGroup.h"
#include "core/ZRInfo.h"
#include "core/ZRNameOrder.h"
#include "core/ZRPerson.h"
#include "core/ZRSpecialGroup.h"
#include "core/ZRUniqueId.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "platform/text/Fold.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRPropertyPlaces.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRosterState.h"

#include <fmt/format.h>

#include <algorithm>

using objectstore::Comparator;
using objectstore::StoreFetch;
using objectstore::StorePredicate;
using platform::Ref;
using platform::Value;
using Factory = ZRRecordObjectStoreFactoryImpl;

namespace {

/// What whoever writes a card out reads of it: also whether it is Me, who may keep something back.
const std::vector<std::string>& partsAndGroups()
{
    static const auto* const paths = [] {
        auto* names = new auto(ZROSContact::prefetchRelationshipKeyPaths());
        names->emplace_back("parentGroups");
        names->emplace_back("sourceWhereContactIsMe");
        return names;
    }();
    return *paths;
}

void prefetchParts(ZRRoster& roster, const ZRRecordList& records, const std::vector<std::string>& keyPaths)
{
    locked(roster, ZRAccess::read, [&]() ZR_NTS {
        objectstore::ObjectList contacts;
        for (const auto& record : records)
            if (auto* contact = dynamic_cast<ZROSContact*>(record->zrDatabaseImpl()))
                contacts.emplace_back(contact);
        if (contacts.empty())
            return;
        roster.managedObjectContext()->preheatContacts(contacts, keyPaths);
        for (const auto& contact : contacts)
            static_cast<ZROSContact&>(*contact).partsWereRead();
    });
}

} // namespace

ZRRecordList ZRRoster::people()
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS { return nts_People(); });
}

ZRRecordList ZRRoster::nts_People() { return nts_AllRecordsForClass(ZRPerson::recordClassDescription); }

ZRRecordList ZRRoster::groups()
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS { return nts_Groups(); });
}

ZRRecordList ZRRoster::nts_Groups()
{
    ZRRecordList all = nts_AllRecordsForClass(ZRGroup::recordClassDescription);
    for (auto& group : nts_AllRecordsForClass(ZRSmartGroup::recordClassDescription))
        all.push_back(std::move(group));
    return all;
}

Ref<ZRRecord> ZRRoster::recordForUniqueId(std::string_view uniqueId)
{
    zrRequire(uniqueId.data() != nullptr, "uniqueId != nil");
    return locked(*this, ZRAccess::read, [&]() ZR_NTS { return nts_RecordForUniqueId(uniqueId); });
}

Ref<ZRRecord> ZRRoster::nts_RecordForUniqueId(std::string_view uniqueId)
{
    if (auto cached = nts_CachedRecordForUniqueId(uniqueId))
        return cached->zrDatabaseImpl() && cached->zrDatabaseImpl()->isDeleted() ? nullptr : cached;
    if (uniqueId.size() <= kZRUniqueIdTextLength + 1)
        return nullptr;
    return Factory::publicRecordWithUniqueId(uniqueId, *this);
}

ZRRecordList ZRRoster::recordsForUniqueIds(const std::vector<std::string>& uniqueIds)
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        std::vector<std::string> possible = uniqueIds;
        std::erase_if(possible, [](const auto& id) { return id.size() <= kZRUniqueIdTextLength + 1; });
        const auto found = Factory::publicRecordsWithUniqueIds(possible, *this);
        ZRRecordList records;
        for (const auto& uniqueId : uniqueIds)
            if (const auto at = found.find(uniqueId); at != found.end())
                records.push_back(at->second);
        return records;
    });
}

ZRRecordList ZRRoster::nts_AllRecordsForClass(const ZRRecordClass& recordClass)
{
    return Factory::fetchPublicRecordsForClass(recordClass, nullptr, *this);
}

ZRRecordList ZRRoster::recordsForClass(const ZRRecordClass& recordClass, Ref<const StorePredicate> predicate,
    const std::vector<std::string>& prefetching, bool takeLock)
{
    const auto fetch = [&]() ZR_NTS {
        return Factory::fetchPublicRecordsForClass(recordClass, predicate, *this, prefetching);
    };
    if (takeLock)
        return locked(*this, ZRAccess::read, fetch);
    zrGlobalLockIsHeld();
    return fetch();
}

std::int64_t ZRRoster::countOfRecordsForClass(const ZRRecordClass& recordClass)
{
    return countOfRecordsForClass(recordClass, nullptr, true);
}

std::int64_t ZRRoster::countOfRecordsForClass(
    const ZRRecordClass& recordClass, Ref<const StorePredicate> predicate, bool takeLock)
{
    const auto count = [&]() ZR_NTS {
        return Factory::countOfPublicRecordsForClass(recordClass, predicate, *this);
    };
    if (takeLock)
        return locked(*this, ZRAccess::read, count);
    zrGlobalLockIsHeld();
    return count();
}

bool ZRRoster::addRecord(const Ref<ZRRecord>& record) { return addRecord(record, nullptr); }

bool ZRRoster::addRecord(const Ref<ZRRecord>& record, platform::Error* error)
{
    zrRequire(bool(record), "record != nil");
    const bool added = locked(*this, ZRAccess::write, [&]() ZR_NTS { return nts_AddRecord(*record); });
    if (!added && error)
        *error = {
            "ZRRosterErrorDomain", 1, "the record " + record->uniqueId() + " cannot be added to this roster"};
    return added;
}

bool ZRRoster::nts_AddRecord(ZRRecord& record)
{
    if (record.recordClass().isKindOf(ZRSpecialGroup::recordClassDescription))
        return false;
    if (record.nts_Roster() == this && record.zrDatabaseImpl())
        return true;
    if (record.nts_Roster() != this || record.zrDatabaseImpl())
        return record.nts_MoveIntoRoster(*this);
    // A record that was removed comes back under its old id, empty.
    auto impl = Factory::createNewDatabaseImplForInstance(record.recordClass(), record.nts_UniqueId(), *this);
    if (!impl)
        return false;
    record.setDatabaseImpl(std::move(impl), Ref<ZRRoster>(this));
    nts_SetCachedRecord(&record, record.nts_UniqueId());
    return true;
}

bool ZRRoster::removeRecord(const Ref<ZRRecord>& record) { return removeRecord(record, nullptr); }

bool ZRRoster::removeRecord(const Ref<ZRRecord>& record, platform::Error* error)
{
    zrRequire(bool(record), "record != nil");
    const bool removed = locked(*this, ZRAccess::write, [&]() ZR_NTS { return nts_RemoveRecord(*record); });
    if (!removed && error)
        *error = {"ZRRosterErrorDomain", 2, "the record " + record->uniqueId() + " is not in this roster"};
    return removed;
}

bool ZRRoster::nts_RemoveRecord(ZRRecord& record)
{
    if (record.nts_Roster() != this || !record.zrDatabaseImpl())
        return false;
    if (_state->me.get() == &record)
        _state->me = nullptr;
    record.nts_CascadeRemove();
    if (!record.nts_RemoveFromRoster(*this))
        return false;
    // The handle may live on, and stands for nothing any more.
    nts_RecordIsGone(record);
    return true;
}

ZRRecordList ZRRoster::sortedPeople(ZRNameOrder order, std::size_t limit)
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        const ZRNameComparison comparison = zrComparisonInOrder(order);
        const auto context = managedObjectContext();
        StoreFetch fetch(contactSlots().entity);
        fetch.includesSubentities = false;
        const bool sortsInStore = context->hasCollationKeys();
        if (sortsInStore)
            fetch.sortKeys = {{comparison.byLastName ? "sortingLastKey" : "sortingFirstKey"}};
        if (sortsInStore && limit != 0)
            fetch.limit = limit;
        const auto found = context->runFetch(fetch);
        if (!found) {
            platform::log(fmt::format("Cannot list the people: {}", found.error().text));
            return ZRRecordList();
        }
        ZRRecordList people =
            ZROSRecord::copyPublicRecordsForClass(ZRPerson::recordClassDescription, *found, *this);
        if (!sortsInStore) {
            std::ranges::stable_sort(people,
                [&](const auto& a, const auto& b) { return ZRComparePeopleName(*a, *b, comparison) < 0; });
            if (limit != 0 && people.size() > limit)
                people.resize(limit);
        }
        return people;
    });
}

ZRRecordList ZRRoster::peopleMatchingText(std::string_view text)
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        const Value folded(ZROSRecord::newNormalizedSearchString(text));
        std::string upper(text);
        std::ranges::transform(
            upper, upper.begin(), [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
        return recordsForClass(ZRPerson::recordClassDescription,
            StorePredicate::any(
                {StorePredicate::compare("contactIndex.stringForIndexing", Comparator::contains, folded),
                    StorePredicate::compare("uniqueId", Comparator::beginsWith, Value(upper))}),
            {}, false);
    });
}

void ZRRoster::prefetchDataForRecords(const ZRRecordList& records)
{
    prefetchParts(*this, records, partsAndGroups());
}

void ZRRoster::prefetchDataForRecords(
    const ZRRecordList& records, const std::vector<std::string_view>& properties)
{
    const auto& places = zrPropertiesOf(contactSlots().entity);
    std::vector<std::string> keyPaths;
    for (const auto property : properties)
        if (const auto place = places.find(property); place != places.end() && place->second.entity)
            keyPaths.emplace_back(place->second.key->key);
    prefetchParts(*this, records, keyPaths);
}

std::string ZRRoster::recordClassFromUniqueId(std::string_view uniqueId)
{
    return std::string(zrTableOfUniqueId(uniqueId));
}

const ZRRecordClass* ZRRoster::publicRecordClassFromUniqueId(std::string_view uniqueId)
{
    return Factory::publicRecordClassFromUniqueId(uniqueId, *this);
}

Ref<ZRInfo> ZRRoster::nts_Info() { return ZRInfo::nts_InfoWithRoster(this); }

Ref<ZRPerson> ZRRoster::me()
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS { return nts_Me(); });
}

Ref<ZRPerson> ZRRoster::nts_Me()
{
    const auto info = nts_Info();
    const Value uniqueId = info ? info->nts_ValueForProperty("Me") : Value();
    _state->me = uniqueId.isString() ? nts_RecordForUniqueId(uniqueId.asText()) : nullptr;
    return platform::refCast<ZRPerson>(_state->me);
}

bool ZRRoster::nts_IsMe(const ZRPerson& person)
{
    const auto mine = nts_Me();
    return mine && mine->nts_UniqueId() == person.nts_UniqueId();
}

void ZRRoster::setMe(const Ref<ZRRecord>& person)
{
    const auto me = platform::refCast<ZRPerson>(person);
    zrRequire(!person || me, "moi == nil || [moi isKindOfClass:__personClass]");
    locked(*this, ZRAccess::write, [&]() ZR_NTS { nts_SetMe(me.get()); });
}

// Me, the one who was, and the info record all count as changed, so that whoever synchronises sees it.
void ZRRoster::nts_SetMe(ZRPerson* person)
{
    if (person && !nts_AddRecord(*person))
        return;
    const auto former = nts_Me();
    const auto info = nts_Info();
    if (!info)
        return;
    info->nts_SetValue(person ? Value(person->nts_UniqueId()) : Value(), "Me");
    info->nts_Touch();
    if (person)
        person->nts_Touch();
    if (former)
        former->nts_Touch();
    _state->me = Ref<ZRRecord>(person);
    ZRPerson::clearPrivateFields();
}

Ref<ZRRecord> ZRRoster::nts_CachedRecordForUniqueId(std::string_view uniqueId)
{
    const auto at = _state->recordsById.find(std::string(uniqueId));
    if (at == _state->recordsById.end() || !at->second->retainIfOwned())
        return nullptr;
    return Ref<ZRRecord>::adopt(at->second);
}

void ZRRoster::nts_SetCachedRecord(ZRRecord* record, std::string_view uniqueId)
{
    if (record)
        _state->recordsById[std::string(uniqueId)] = record;
    else
        _state->recordsById.erase(std::string(uniqueId));
}

void ZRRoster::nts_RecordIsGone(ZRRecord& record)
{
    const auto drop = [&](const std::string& key) {
        const auto at = _state->recordsById.find(key);
        if (at != _state->recordsById.end() && at->second == &record)
            _state->recordsById.erase(at);
    };
    drop(record.nts_UniqueId());
    if (&record.recordClass() == &ZRInfo::recordClassDescription)
        drop("ZRInfo");
    std::erase_if(_state->recordsByKey, [&](const auto& entry) { return entry.second == &record; });
}

void ZRRoster::nts_ClearCachedRecordsByUniqueId()
{
    _state->me = nullptr;
    _state->recordsById.clear();
}

void ZRRoster::nts_ClearCachedRecordsForUniqueIds(const std::vector<std::string>& uniqueIds)
{
    for (const auto& uniqueId : uniqueIds)
        _state->recordsById.erase(uniqueId);
}

void ZRRoster::clearTemporaryCaches()
{
    // Not by the cache of handles: a record that it forgot, or whose handle is gone, has its dictionary
    // still.
    if (const auto context = managedObjectContext())
        for (const auto& object : context->registeredObjects())
            if (auto* record = dynamic_cast<ZROSRecord*>(object.get()))
                record->privateDictionary().clear();
    for (const auto& [uniqueId, record] : _state->recordsById)
        if (record->retainIfOwned())
            Ref<ZRRecord>::adopt(record)->nts_ClearTemporaryCache();
}

ZRRecord* ZRRoster::nonRetainedCachedRecordForKey(std::string_view key)
{
    const auto at = _state->recordsByKey.find(std::string(key));
    return at == _state->recordsByKey.end() ? nullptr : at->second;
}

void ZRRoster::setNonRetainedCachedRecord(ZRRecord* record, std::string_view key)
{
    _state->recordsByKey[std::string(key)] = record;
}
