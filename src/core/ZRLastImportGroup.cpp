// Who came with the last import: how that is remembered, and how those who are deleted leave.
#include "core/ZRLastImportGroup.h"

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "platform/files/Files.h"
#include "platform/files/Resources.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/Log.h"
#include "platform/value/PropertyList.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using platform::Ref;
using platform::Value;

namespace {

/// The one group, or null before it was asked for. Under the global lock.
Ref<ZRLastImportGroup>& theGroup()
{
    static auto* const group = new Ref<ZRLastImportGroup>;
    return *group;
}

/// The ids in the file; none when there is no file, or none that can be read.
std::vector<std::string> idsInFile(const std::string& path)
{
    if (!platform::fileExists(path))
        return {};
    const auto bytes = platform::readFile(path);
    const auto list = bytes ? platform::decodePropertyList(*bytes) : platform::Result<Value>(bytes.error());
    if (!list) {
        platform::log(fmt::format("Cannot read the last import: {}", list.error().text));
        return {};
    }
    std::vector<std::string> ids;
    for (const Value& id : list->asArray())
        if (id.isString())
            ids.emplace_back(id.asText());
    return ids;
}

/// Those of the ids that are people, each once.
ZRRecordList peopleOf(const std::vector<std::string>& ids, ZRRoster& roster)
{
    ZRRecordList people = roster.recordsForUniqueIds(ids);
    std::erase_if(people, [](const auto& record) { return !dynamic_cast<const ZRPerson*>(record.get()); });
    ZRRecordSet known;
    std::erase_if(people, [&](const auto& record) { return !known.insert(record).second; });
    return people;
}

void listen(ZRLastImportGroup& group)
{
    static auto* const subscriptions = new std::vector<platform::Subscription>;
    for (const char* name :
        {kZRDatabaseChangedNotification, kZRDatabaseChangedExternallyNotification, kZRRosterDidResetPriv})
        subscriptions->push_back(platform::NotificationCenter::shared().subscribe(name, nullptr,
            [&group](const platform::Notification& notice) { group.dataBaseChanged(notice); }));
}

} // namespace

Ref<ZRLastImportGroup> ZRLastImportGroup::lastImportGroup()
{
    const auto shared = ZRRoster::sharedRoster();
    if (!shared)
        return nullptr;
    return locked(*shared, ZRAccess::read, [&]() ZR_NTS {
        auto& group = theGroup();
        if (!group) {
            group = platform::refCast<ZRLastImportGroup>(
                ZRSpecialGroup::initWithUniqueId(recordClassDescription, std::nullopt, shared));
            listen(*group);
        }
        return group;
    });
}

Ref<ZRLastImportGroup> ZRLastImportGroup::specialGroupForRoster(const Ref<ZRRoster>&)
{
    return lastImportGroup();
}

std::string ZRLastImportGroup::path() const
{
    return nts_Roster()->databaseDirectory() + "/LastImport.plist";
}

// ---- what is remembered

void ZRLastImportGroup::loadContent()
{
    locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { nts_LoadContent(); });
}

void ZRLastImportGroup::nts_LoadContent() const
{
    if (_beenLoaded)
        return;
    _beenLoaded = true;
    const auto ids = idsInFile(path());
    nts_FindMembers(ids);
    if (_lastImports.empty())
        nts_RemoveFile();
}

bool ZRLastImportGroup::nts_RemoveFile() const
{
    if (ZRRoster::isInert() || !platform::fileExists(path()))
        return true;
    const auto removed = platform::removeFile(path());
    if (!removed)
        platform::log(fmt::format("Cannot remove the last import: {}", removed.error().text));
    return bool(removed);
}

bool ZRLastImportGroup::saveLastImportContent()
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_SaveContent(); });
}

bool ZRLastImportGroup::saveContentOfLastImportGroup()
{
    const auto& group = theGroup();
    return !group || group->nts_SaveContent();
}

bool ZRLastImportGroup::nts_SaveContent()
{
    if (!_hasChanged || ZRRoster::isInert())
        return true;
    if (_lastImports.empty()) {
        _hasChanged = !nts_RemoveFile();
        return !_hasChanged;
    }
    const auto ids = nts_MemberIds();
    const auto bytes = platform::encodePropertyList(
        Value::array({ids.begin(), ids.end()}), platform::PropertyListFormat::binary);
    const auto written =
        bytes ? platform::writeFileAtomically(path(), *bytes) : platform::Result<void>(bytes.error());
    if (!written)
        platform::log(fmt::format("Cannot write the last import: {}", written.error().text));
    _hasChanged = !written;
    return bool(written);
}

// ---- who is in it

std::vector<std::string> ZRLastImportGroup::nts_MemberIds() const
{
    std::vector<std::string> ids;
    for (const auto& person : _lastImports)
        ids.push_back(person->nts_UniqueId());
    return ids;
}

ZRRecordList ZRLastImportGroup::nts_Members() const
{
    nts_LoadContent();
    return _lastImports;
}

bool ZRLastImportGroup::nts_HasMember(const ZRPerson& person) const
{
    nts_LoadContent();
    return _known.contains(&person);
}

bool ZRLastImportGroup::nts_AddMember(ZRPerson& person)
{
    nts_LoadContent();
    if (!_known.insert(&person).second)
        return false;
    _lastImports.emplace_back(&person);
    _hasChanged = true;
    return true;
}

bool ZRLastImportGroup::nts_RemoveMember(ZRPerson& person)
{
    nts_LoadContent();
    if (_known.erase(&person) == 0)
        return false;
    std::erase_if(_lastImports, [&](const auto& member) { return member.get() == &person; });
    _hasChanged = true;
    return true;
}

void ZRLastImportGroup::clear()
{
    locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        _beenLoaded = true;
        _lastImports.clear();
        _known.clear();
        _hasChanged = true;
    });
}

Value ZRLastImportGroup::nts_ValueForProperty(std::string_view property) const
{
    return property == zr::kZRGroupNameProperty
        ? Value(platform::StringTables::shared().string("LAST_IMPORT", "ZRStrings"))
        : Value();
}

// ---- who is deleted

void ZRLastImportGroup::dataBaseChanged(const platform::Notification& notice)
{
    locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        if (!_beenLoaded)
            return;
        // Nobody says who was deleted, or the handles stand for nothing since everything was read anew.
        if (notice.name == kZRRosterDidResetPriv || notice.userInfo[kZRReloadRecords].asBoolean())
            return nts_FindMembers(nts_MemberIds());
        std::unordered_set<std::string_view> deleted;
        for (const Value& id : notice.userInfo[zr::kZRDeletedRecords].asArray())
            deleted.insert(id.asText());
        nts_Drop(deleted);
    });
}

// A notice comes after the fact: who was deleted may have been brought back meanwhile, and stays then.
void ZRLastImportGroup::nts_Drop(const std::unordered_set<std::string_view>& uniqueIds)
{
    std::vector<std::string> named;
    for (const auto& member : _lastImports)
        if (uniqueIds.contains(member->nts_UniqueId()))
            named.push_back(member->nts_UniqueId());
    if (named.empty())
        return;
    std::unordered_set<std::string> stillHere;
    for (const auto& person : peopleOf(named, *nts_Roster()))
        stillHere.insert(person->nts_UniqueId());
    const auto isGone = [&](const Ref<ZRRecord>& member) ZR_NTS {
        const auto& id = member->nts_UniqueId();
        return uniqueIds.contains(id) && !stillHere.contains(id) && _known.erase(member.get()) > 0;
    };
    if (std::erase_if(_lastImports, isGone) > 0)
        _hasChanged = true;
}

void ZRLastImportGroup::nts_FindMembers(const std::vector<std::string>& ids) const
{
    _lastImports = peopleOf(ids, *nts_Roster());
    _known.clear();
    for (const auto& person : _lastImports)
        _known.insert(person.get());
    _hasChanged = _hasChanged || _lastImports.size() != ids.size();
}
