// How a save tells the rest of the process, and the other processes, which records changed.
#include "core/ZRConstants.h"
#include "core/ZRInfo.h"
#include "core/ZRLog.h"
#include "core/ZRRecordClass.h"
#include "platform/files/UserDefaults.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRosterState.h"
#include "store/ZRServices.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <unistd.h>
#include <unordered_set>

using objectstore::ObjectList;
using platform::Ref;
using platform::Value;

namespace {

const Value& entryOf(const ZRRoster::UserInfo& info, std::string_view key)
{
    static const Value absent;
    const auto at = info.find(key);
    return at == info.end() ? absent : at->second;
}

bool hasRecords(const ZRRoster::UserInfo& info)
{
    return std::ranges::any_of(kZRNoticeLists, [&](std::string_view key) { return info.contains(key); });
}

/// Unique ids, each once, less those that another list of the same notice has.
class IdList {
public:
    IdList(const ZRRoster::UserInfo& info, std::string_view ignoredKey)
    {
        for (const Value& id : entryOf(info, ignoredKey).asArray())
            _ignored.insert(id.asText());
    }

    bool isIgnored(const Value& id) const { return _ignored.contains(id.asText()); }
    /// Whether it was not in the list before.
    bool add(const Value& id)
    {
        const bool isNew = !isIgnored(id) && _known.insert(id.asText()).second;
        if (isNew)
            _ids.push_back(id);
        return isNew;
    }
    bool isEmpty() const { return _ids.empty(); }
    void moveTo(ZRRoster::UserInfo& info, std::string_view key)
    {
        if (!_ids.empty())
            info.insert_or_assign(std::string(key), Value::array(std::move(_ids)));
    }

private:
    // Texts of values that `_ids`, or the notice, keep.
    std::unordered_set<std::string_view> _ignored, _known;
    std::vector<Value> _ids;
};

bool isPreserved(ZROSRecord& record)
{
    return record.privateDictionary().value(zr::kZRPreserveModificationDate).asBoolean();
}

void stamp(ZROSRecord& record, const Value& date)
{
    if (date.isDate() && !record.isDeleted())
        record.setValueForKey("modificationDate", date);
}

/// The record that a changed object stands for, or null. A changed index text marks its card.
Ref<ZROSRecord> recordOf(const objectstore::ObjectRef& object, const Value& date)
{
    if (object->entity().name() == "ZROSContactIndex") {
        auto card = platform::refCast<ZROSRecord>(object->related(contactIndexSlots().contact));
        if (card && !isPreserved(*card))
            stamp(*card, date);
        return card;
    }
    return object->entity().owner() ? nullptr : platform::refCast<ZROSRecord>(object);
}

/// Where one list of a notice is made.
class Sorting {
public:
    Sorting(ZRRoster::SaveEffects& effects, const Value& date, IdList& publicIds, IdList& privateIds)
        : _effects(effects), _date(date), _publicIds(publicIds), _privateIds(privateIds)
    {
    }

    void take(const Ref<ZROSRecord>& record, const ZRRecordClass& recordClass, const Value& id)
    {
        if (record->_isPublicRecord() && !_publicIds.isIgnored(id))
            takePublic(record, id);
        else if (!_privateIds.isIgnored(id))
            takePrivate(record, recordClass, id);
    }

    std::vector<Ref<ZROSRecord>> forMetadata;

private:
    void takePublic(const Ref<ZROSRecord>& record, const Value& id)
    {
        _privateIds.add(id);
        // A card comes a second time with its index text.
        if (_publicIds.add(id))
            forMetadata.push_back(record);
        if (!record->isUpdated())
            return;
        if (!isPreserved(*record))
            stamp(*record, _date);
        else if (platform::UserDefaults::standard().boolForKey("ZRHindsightDebug"))
            platform::log(fmt::format("Record {} is untouchable", id.asText()));
    }

    void takePrivate(const Ref<ZROSRecord>& record, const ZRRecordClass& recordClass, const Value& id)
    {
        const bool isNew = _privateIds.add(id);
        if (isSubscribed(recordClass)) {
            _effects.couldAffectSyncing = _effects.couldAffectSharing = true;
            if (record->isUpdated())
                stamp(*record, _date);
            if (isNew)
                forMetadata.push_back(record);
        } else if (isNew && (recordClass.name == "ZRInfo" || recordClass.name == "ZRSubscription")) {
            forMetadata.push_back(record);
        }
    }

    /// A card or group of a subscription: of a public class, but private to its subscription.
    static bool isSubscribed(const ZRRecordClass& recordClass)
    {
        return recordClass.isKindOf(*ZRRecordClass::named("ZRPerson"))
            || recordClass.isKindOf(*ZRRecordClass::named("ZRGroup"));
    }

    ZRRoster::SaveEffects& _effects;
    const Value& _date;
    IdList& _publicIds;
    IdList& _privateIds;
};

/// A record of who deletes contacts, kept on purpose.
void logDeletions(const ObjectList& deleted)
{
    const auto count = std::ranges::count_if(
        deleted, [](const auto& object) { return object->entity().isKindOf(contactSlots().entity); });
    if (count == 0)
        return;
    std::error_code unknown;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", unknown);
    platform::log(fmt::format("Process {} deleting {} {}",
        unknown ? std::string(program_invocation_name) : program.string(), count,
        count == 1 ? "contact" : "contacts"));
}

Value dictionaryOf(const ZRRoster::UserInfo& info) { return Value::dictionary({info.begin(), info.end()}); }

/// What travels to other processes: long lists as the word that there was much.
Value travelling(const ZRRoster::UserInfo& info)
{
    std::size_t count = 0;
    for (const std::string_view key : kZRNoticeLists)
        count += entryOf(info, key).asArray().size();
    if (count <= kZRMostIdsInNotice)
        return dictionaryOf(info);
    ZRRoster::UserInfo shorter = info;
    for (const std::string_view key : kZRNoticeLists)
        shorter.erase(std::string(key));
    shorter.insert_or_assign(std::string(kZRReloadRecords), Value(true));
    return dictionaryOf(shorter);
}

} // namespace

ZRRoster::UserInfo ZRRoster::allocCommonNotificationUserInfoDictionary() const
{
    UserInfo info{{std::string(zr::kZRSenderProcessID), Value(static_cast<std::int64_t>(getpid()))},
        {std::string(zr::kZRSenderProcessName), Value(program_invocation_short_name)},
        {std::string(kZRUserUIDKey), Value(static_cast<std::int64_t>(geteuid()))}};
    if (_state->directory != defaultRosterDirectory())
        info.emplace(kZRDatabaseDirectoryKey, Value(_state->directory));
    return info;
}

bool ZRRoster::preparePublicChangeNotification(
    UserInfo& publicInfo, UserInfo& privateInfo, SaveEffects& effects, Value modificationDate)
{
    const auto context = managedObjectContext();
    effects = {};
    publicInfo = privateInfo = allocCommonNotificationUserInfoDictionary();
    if (!modificationDate.isDate())
        modificationDate = Value(platform::Date{platform::Clock::current().now()});
    context->flushPendingChanges();
    bool privateTablesChanged = false;
    const auto sort = [&](const ObjectList& records, std::string_view key, std::string_view ignoredKey) {
        updatePublicUserInfo(publicInfo, privateInfo, records, key, effects, modificationDate, ignoredKey);
        privateTablesChanged = privateTablesChanged || effects.privateTablesChanged;
    };
    sort(context->insertedObjects(), zr::kZRInsertedRecords, {});
    sort(context->updatedObjects(), zr::kZRUpdatedRecords, zr::kZRInsertedRecords);
    const ObjectList deleted = context->deletedObjects();
    sort(deleted, zr::kZRDeletedRecords, {});
    effects.privateTablesChanged = privateTablesChanged;
    if (!context->isMemoryBacked())
        logDeletions(deleted);
    effects.couldAffectSyncing = true;
    if (const auto info = nts_Info(); info && info->nts_IsPublished())
        effects.couldAffectSharing = true;
    return true;
}

void ZRRoster::updatePublicUserInfo(UserInfo& publicInfo, UserInfo& privateInfo, const ObjectList& records,
    std::string_view key, SaveEffects& effects, const Value& modificationDate, std::string_view ignoredKey)
{
    effects.privateTablesChanged = false;
    if (records.empty())
        return;
    IdList publicIds(publicInfo, ignoredKey), privateIds(privateInfo, ignoredKey);
    Sorting sorting(effects, modificationDate, publicIds, privateIds);
    for (const auto& object : records) {
        const auto record = recordOf(object, modificationDate);
        const ZRRecordClass* recordClass = record ? record->publicRecordClass() : nullptr;
        const Value id = recordClass ? record->valueForKey("uniqueId") : Value();
        if (id.isString())
            sorting.take(record, *recordClass, id);
    }
    effects.privateTablesChanged = !privateIds.isEmpty();
    publicIds.moveTo(publicInfo, key);
    privateIds.moveTo(privateInfo, key);
    const auto& processRecords = ZRServices::registered().processRecords;
    if (processRecords && !sorting.forMetadata.empty() && publicInfo.contains(zr::kZRSenderProcessName)
        && isSharedInstance())
        processRecords(*this, sorting.forMetadata);
}

void ZRRoster::nts_SendRosterDidSaveNotificationsWithPublicUserInfo(
    const UserInfo& publicInfo, const UserInfo& privateInfo, bool privateTablesChanged)
{
    const std::string about = notificationID();
    const auto send = [&](const char* name, const UserInfo& info, std::optional<std::string> object) {
        if (!hasRecords(info) && !privateTablesChanged)
            return;
        if (__ZRLogNotifications)
            platform::log(fmt::format("-[ZRRoster save] posting {} for '{}'",
                name == kZRDatabaseChangedNotification ? "kZRDatabaseChangedNotification"
                                                       : "kZRDatabaseChangedNotificationPriv",
                about));
        platform::NotificationCenter::shared().postOnMain(
            {name, platform::String::make(about), dictionaryOf(info)});
        platform::DistributedNotificationCenter::shared()->post({name, std::move(object), travelling(info)});
    };
    send(kZRDatabaseChangedNotification, publicInfo, about);
    send(kZRDatabaseChangedNotificationPriv, privateInfo, std::nullopt);
}
