// How a record is gathered before it goes, and put together again.
#include "commands/RecordKeeping.h"

#include "core/ZRAllGroup.h"
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLastImportGroup.h"
#include "core/ZRPerson.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRDBCache.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

using objectstore::ObjectRef;
using platform::Ref;
using platform::Value;
using Entries = std::vector<std::pair<std::string, Value>>;

namespace {

constexpr std::string_view kGroup = "group", kProperty = "property", kIdentifier = "identifier";

bool isGroup(const ZRRecord& record) { return dynamic_cast<const ZRGroup*>(&record); }

/// The stored object of a record that is in a roster; null for any other.
ZROSRecord* storedObject(const ZRRecord& record)
{
    auto* const impl = record.zrDatabaseImpl();
    return impl && impl->context() && !impl->isDeleted() ? impl : nullptr;
}

/// The identifier of the entry that a choice leads to; empty when another process has deleted that.
std::string identifierOf(objectstore::StoreObject& choice, std::string_view property)
{
    const auto* slot = ZROSGroup::entrySlotOfDistributionListConfig(property);
    const ObjectRef entry = slot ? choice.related(*slot) : nullptr;
    try {
        return entry ? std::string(entry->text(entry->slot("uniqueId"))) : std::string();
    } catch (const objectstore::InaccessibleObject&) {
        return {};
    }
}

objectstore::ObjectList choicesOf(ZROSRecord& record)
{
    return record.objects(record.slot("distributionListConfigs"));
}

/// Calls `visit(other, property, identifier)` for each choice at a person or a group; `end` leads to who is
/// at the other end of it.
template <class Visit>
void forEachChoice(ZROSRecord& record, const objectstore::Slot& end, Visit&& visit) ZR_NTS
{
    for (const auto& choice : choicesOf(record)) {
        const std::string property(choice->text(distributionListConfigSlots().propertyName));
        const std::string identifier = identifierOf(*choice, property);
        if (const ObjectRef other = choice->related(end); other && !identifier.empty())
            visit(static_cast<ZROSRecord&>(*other), property, identifier);
    }
}

/// Whether a group has chosen an entry of that property of the person.
bool hasChoice(ZROSRecord& person, const Value& choice)
{
    const auto& slots = distributionListConfigSlots();
    return std::ranges::any_of(choicesOf(person), [&](const ObjectRef& present) {
        const ObjectRef group = present->related(slots.group);
        return group && group->text(group->slot("uniqueId")) == choice[kGroup].asText()
            && present->text(slots.propertyName) == choice[kProperty].asText();
    });
}

// Dates of its own are no properties that one record takes over from another: this is the same record.
void restoreCreationDate(ZRRecord& record, const Value& dictionary)
{
    if (const Value& created = dictionary[zr::kZRCreationDateProperty]; created.isDate())
        record.setValue(created, zr::kZRCreationDateProperty);
}

void restoreMe(const Ref<ZRPerson>& person, const Value& isMe)
{
    const auto roster = person->roster();
    if (isMe.isAbsent() || isMe.asBoolean() == (roster->me() == person))
        return;
    roster->setMe(isMe.asBoolean() ? person : nullptr);
}

void restoreImage(ZRPerson& person, const Value& image)
{
    const Value present = person.imageData();
    if (present.isNothing() ? !image.isNothing() : present != image)
        person.setImageData(image);
}

bool isOfLastImport(const ZRRecord& record)
{
    const auto* const person = dynamic_cast<const ZRPerson*>(&record);
    if (!person || !record.nts_Roster()->isSharedInstance())
        return false;
    const auto lastImport = ZRLastImportGroup::lastImportGroup();
    return locked(
        *record.nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return lastImport->nts_HasMember(*person); });
}

} // namespace

// ---- everything of one record

Value allPropertiesIncludingImage(const ZRRecord& record)
{
    const Value properties = record.allProperties();
    Entries entries = properties.asDictionary()->entries();
    if (Value created = record.valueForProperty(zr::kZRCreationDateProperty); !created.isNothing())
        entries.emplace_back(zr::kZRCreationDateProperty, std::move(created));
    if (const auto* person = dynamic_cast<const ZRPerson*>(&record)) {
        if (Value image = person->imageData(); !image.isNothing())
            entries.emplace_back(kZRKeptImageData, std::move(image));
        entries.emplace_back(kZRKeptMe, Value(record.roster()->me().get() == person));
        entries.emplace_back(kZRKeptChoices, distributionChoices(*person));
    }
    return Value::dictionary(std::move(entries));
}

void setAllPropertiesIncludingImage(ZRRecord& record, const Value& dictionary)
{
    record.setAllProperties(dictionary);
    restoreCreationDate(record, dictionary);
    if (auto* const person = dynamic_cast<ZRPerson*>(&record)) {
        restoreImage(*person, dictionary[kZRKeptImageData]);
        restoreDistributionChoices(*person, dictionary[kZRKeptChoices]);
        restoreMe(Ref<ZRPerson>(person), dictionary[kZRKeptMe]);
    }
}

Value exchangeAllProperties(ZRRecord& record, const Value& dictionary)
{
    Value former = allPropertiesIncludingImage(record);
    setAllPropertiesIncludingImage(record, dictionary);
    return former;
}

// ---- which entries groups use

Value distributionChoices(const ZRPerson& person)
{
    std::vector<Value> choices;
    locked(*person.nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        if (auto* const impl = storedObject(person))
            forEachChoice(*impl, distributionListConfigSlots().group,
                [&](ZROSRecord& group, const std::string& property, const std::string& identifier) {
                    choices.push_back(
                        Value::dictionary({{std::string(kGroup), Value(group.text(group.slot("uniqueId")))},
                            {std::string(kProperty), Value(property)},
                            {std::string(kIdentifier), Value(identifier)}}));
                });
    });
    return Value::array(std::move(choices));
}

void restoreDistributionChoices(ZRPerson& person, const Value& choices)
{
    ZRRoster& roster = *person.nts_Roster();
    locked(roster, ZRAccess::write, [&]() ZR_NTS {
        auto* const impl = storedObject(person);
        for (const Value& choice : choices.asArray()) {
            const auto group =
                platform::refCast<ZRGroup>(roster.nts_RecordForUniqueId(choice[kGroup].asText()));
            if (impl && group && !hasChoice(*impl, choice))
                group->nts_SetDistributionIdentifier(
                    choice[kIdentifier].asText(), choice[kProperty].asText(), person, true);
        }
    });
}

// ---- memberships

bool isStored(const ZRRecord& record)
{
    return locked(*record.nts_Roster(), ZRAccess::read, [&] { return storedObject(record) != nullptr; });
}

bool joinGroup(ZRGroup& group, const Ref<ZRRecord>& record)
{
    if (dynamic_cast<const ZRAllGroup*>(&group)
        || (!group.isSpecialGroup() && group._isParentGroupOfRecord(*record)))
        return false;
    if (auto* const person = dynamic_cast<ZRPerson*>(record.get()))
        return group.addMember(*person);
    auto* const subgroup = dynamic_cast<ZRGroup*>(record.get());
    return subgroup && group.addSubgroup(*subgroup);
}

bool rejoinGroup(ZRGroup& group, const Ref<ZRRecord>& record)
{
    const auto* const subgroup = dynamic_cast<const ZRGroup*>(record.get());
    if (!subgroup || group.isSpecialGroup() || dynamic_cast<const ZRSmartGroup*>(&group))
        return joinGroup(group, record);
    return locked(*group.nts_Roster(), ZRAccess::write, [&]() ZR_NTS {
        auto *const above = storedObject(group), *const below = storedObject(*record);
        if (!above || !below || above == below || above->context() != below->context()
            || group.nts_IsParentGroupOfRecord(*record) || subgroup->nts_RecursiveContainsGroup(group))
            return false;
        above->addObject(groupSlots().childGroups, *below);
        return true;
    });
}

bool leaveGroup(ZRGroup& group, const Ref<ZRRecord>& record)
{
    if (dynamic_cast<const ZRAllGroup*>(&group)
        || (!group.isSpecialGroup() && !group._isParentGroupOfRecord(*record)))
        return false;
    if (auto* const person = dynamic_cast<ZRPerson*>(record.get()))
        return group.removeMember(*person);
    auto* const subgroup = dynamic_cast<ZRGroup*>(record.get());
    return subgroup && group.removeSubgroup(*subgroup);
}

// ---- a record that goes

KeptRecord::KeptRecord(Ref<ZRRecord> record)
    : _record(std::move(record))
    , _properties(allPropertiesIncludingImage(*_record))
    , _parentGroups(_record->parentGroups())
    , _isOfLastImport(isOfLastImport(*_record))
{
    if (auto* const group = dynamic_cast<ZRGroup*>(_record.get()))
        locked(*group->nts_Roster(), ZRAccess::read, [&]() ZR_NTS { gatherContents(*group); });
}

// Of any kind: a subgroup may be a smart group, which `subgroups` does not answer.
void KeptRecord::gatherContents(ZRGroup& group)
{
    auto* const impl = storedObject(group);
    if (!impl)
        return;
    ZRRoster& roster = *group.nts_Roster();
    _membersAndSubgroups = ZROSRecord::copyPublicRecordsForClass(
        ZRPerson::recordClassDescription, impl->objects(groupSlots().contacts), roster);
    for (auto& subgroup : ZROSRecord::copyPublicRecordsForClass(
             ZRGroup::recordClassDescription, impl->objects(groupSlots().childGroups), roster))
        _membersAndSubgroups.push_back(std::move(subgroup));
    forEachChoice(*impl, distributionListConfigSlots().contact,
        [&](ZROSRecord& contact, const std::string& property, const std::string& identifier) ZR_NTS {
            const auto& people = ZRPerson::recordClassDescription;
            if (auto member = platform::refCast<ZRPerson>(
                    ZROSRecord::copyPublicRecordForClass(people, contact, roster)))
                _choices.push_back({std::move(member), property, identifier});
        });
}

std::optional<KeptRecord> KeptRecord::remove(const Ref<ZRRecord>& record, ZRRoster& roster)
{
    if (!record || record->nts_Roster() != &roster || !storedObject(*record))
        return {};
    KeptRecord kept(record);
    if (!roster.removeRecord(record))
        return {};
    if (kept._isOfLastImport)
        ZRLastImportGroup::lastImportGroup()->removeMember(static_cast<ZRPerson&>(*record));
    return kept;
}

bool KeptRecord::bringBack(ZRRoster& roster) const
{
    // Somebody else may have deleted it: then the handle still leads to what was deleted.
    locked(roster, ZRAccess::write, [&]() ZR_NTS {
        if (_record->zrDatabaseImpl() && !storedObject(*_record))
            _record->setDatabaseImpl(nullptr, Ref<ZRRoster>(&roster));
    });
    if (!roster.addRecord(_record)) {
        platform::log(fmt::format("Could not bring back {}", _record->uniqueId()));
        return false;
    }
    setAllPropertiesIncludingImage(*_record, _properties);
    for (const auto& parent : _parentGroups)
        rejoinGroup(static_cast<ZRGroup&>(*parent), _record);
    if (_isOfLastImport)
        ZRLastImportGroup::lastImportGroup()->addMember(static_cast<ZRPerson&>(*_record));
    if (auto* const group = dynamic_cast<ZRGroup*>(_record.get()))
        bringBackContents(*group);
    return true;
}

void KeptRecord::bringBackContents(ZRGroup& group) const
{
    for (const auto& record : _membersAndSubgroups)
        rejoinGroup(group, record);
    for (const auto& choice : _choices)
        group.setDistributionIdentifier(choice.identifier, choice.property, *choice.member);
}

// ---- pictures

KeepingPictures::KeepingPictures(ZRRoster& roster)
    : _roster(roster)
    , _kept(locked(roster, ZRAccess::read, [&]() ZR_NTS { return roster.nts_KeepsPictures(); }))
{
    locked(_roster, ZRAccess::read, [&]() ZR_NTS { _roster.nts_SetKeepsPictures(true); });
}

KeepingPictures::~KeepingPictures()
{
    locked(_roster, ZRAccess::read, [&]() ZR_NTS { _roster.nts_SetKeepsPictures(_kept); });
}

// ---- several records

std::vector<KeptRecord> removeRecords(const ZRRecordList& records, ZRRoster& roster)
{
    roster.prefetchDataForRecords(records);
    std::vector<KeptRecord> removed;
    for (const auto& record : records)
        if (auto kept = KeptRecord::remove(record, roster))
            removed.push_back(std::move(*kept));
    return removed;
}

ZRRecordList bringBackRecords(const std::vector<KeptRecord>& kept, ZRRoster& roster)
{
    const KeepingPictures keeping(roster);
    ZRRecordList back;
    for (auto one = kept.rbegin(); one != kept.rend(); ++one)
        if (one->bringBack(roster))
            back.push_back(one->record());
    std::ranges::reverse(back);
    return back;
}

void clearListsOf(const std::vector<KeptRecord>& kept, ZRDBCache& cache)
{
    for (const auto& one : kept) {
        for (const auto& parent : one.parentGroups())
            cache.clearCacheForGroup(static_cast<const ZRGroup&>(*parent));
        if (const auto* group = dynamic_cast<const ZRGroup*>(one.record().get()))
            cache.clearCacheForGroup(*group);
    }
}

ZRRecordList peopleAmong(const ZRRecordList& records)
{
    ZRRecordList people;
    std::ranges::copy_if(
        records, std::back_inserter(people), [](const auto& record) { return !isGroup(*record); });
    return people;
}

ZRRecordList groupsAmong(const ZRRecordList& records)
{
    ZRRecordList groups;
    std::ranges::copy_if(
        records, std::back_inserter(groups), [](const auto& record) { return isGroup(*record); });
    return groups;
}
