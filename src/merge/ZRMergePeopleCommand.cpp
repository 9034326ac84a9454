// How several cards become one, and how they come back.
#include "merge/ZRMergePeopleCommand.h"

#include "core/ZRConstants.h"
#include "merge/MergedProperties.h"
#include "merge/ZRPersonAdditions.h"
#include "store/ZRDBCache.h"
#include "store/ZRRoster.h"

#include <algorithm>

using platform::Ref;
using platform::Value;

Ref<ZRMergePeopleCommand> ZRMergePeopleCommand::initWithGroup(
    Ref<ZRGroup> selectedGroup, const ZRRecordList& originalPeople, Ref<ZRRoster> roster)
{
    return platform::makeRef<ZRMergePeopleCommand>(
        std::move(selectedGroup), originalPeople, std::move(roster));
}

ZRMergePeopleCommand::ZRMergePeopleCommand(
    Ref<ZRGroup> selectedGroup, const ZRRecordList& originalPeople, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster)), _selectedGroup(std::move(selectedGroup))
{
    for (const auto& record : originalPeople)
        if (isToBeMerged(*record) && std::ranges::find(_originalPeople, record) == _originalPeople.end())
            _originalPeople.push_back(record);
}

bool ZRMergePeopleCommand::isToBeMerged(const ZRRecord& record) const
{
    return dynamic_cast<const ZRPerson*>(&record) && record.nts_Roster() == &rosterInUse()
        && record.zrDatabaseImpl();
}

bool ZRMergePeopleCommand::doIt()
{
    if (_originalPeople.size() < 2)
        return false;
    ZRRoster& roster = rosterInUse();
    _originalMe = roster.me();
    if (std::ranges::find(_originalPeople, Ref<ZRRecord>(_originalMe)) == _originalPeople.end())
        _originalMe = nullptr;
    roster.prefetchDataForRecords(_originalPeople);
    _resultingPerson = ZRPerson::initWithRoster(Ref<ZRRoster>(&roster));
    mergeValues();
    mergeImage();
    joinGroups();
    _originalPeopleProperties = removeRecords(_originalPeople, roster);
    if (_originalMe)
        roster.setMe(_resultingPerson);
    cache().nonThreadedSave();
    tellCacheOfResult();
    return true;
}

void ZRMergePeopleCommand::mergeValues()
{
    ZRRoster& roster = rosterInUse();
    const auto types = ZRRecord::propertyTypesWithRoster(ZRPerson::recordClassDescription, &roster);
    locked(roster, ZRAccess::write, [&]() ZR_NTS {
        ZRPersonAdditions result(*_resultingPerson);
        for (const auto& original : _originalPeople) {
            result.nts_mergeValue(original->nts_ValueForProperty(zr::kZRNoteProperty), zr::kZRNoteProperty,
                kZRPropertyTypeString);
            for (const auto& [property, type] : types)
                if (!merge::isOfOneCardOnly(property) && property != zr::kZRNoteProperty)
                    result.nts_mergeValue(original->nts_ValueForProperty(property), property, type);
        }
    });
}

void ZRMergePeopleCommand::mergeImage()
{
    const KeepingPictures keeping(rosterInUse());
    for (const auto& original : _originalPeople)
        if (const Value image = static_cast<ZRPerson&>(*original).imageData(); !image.isNothing()) {
            _resultingPerson->setImageData(image);
            return;
        }
}

// An entry that the result has from an original is still the one by which a group reaches it. Of two choices
// in one group that of the first card stays.
void ZRMergePeopleCommand::joinGroups()
{
    for (const auto& original : _originalPeople) {
        for (const auto& group : original->parentGroups())
            joinGroup(static_cast<ZRGroup&>(*group), _resultingPerson);
        restoreDistributionChoices(
            *_resultingPerson, distributionChoices(static_cast<const ZRPerson&>(*original)));
    }
}

ZRRecordList ZRMergePeopleCommand::originalParentGroups() const
{
    ZRRecordList groups;
    for (const auto& original : _originalPeopleProperties)
        for (const auto& group : original.parentGroups())
            if (std::ranges::find(groups, group) == groups.end())
                groups.push_back(group);
    return groups;
}

void ZRMergePeopleCommand::tellCacheOfResult()
{
    cache().deletedMembers(_originalPeople);
    cache().addedMembers({_resultingPerson});
    for (const auto& group : originalParentGroups())
        cache().addedMembers({_resultingPerson}, platform::refCast<ZRGroup>(group));
    restoreSelection(_selectedGroup, {_resultingPerson});
}

void ZRMergePeopleCommand::undoIt()
{
    ZRRoster& roster = rosterInUse();
    _resultingPersonProperties = KeptRecord::remove(_resultingPerson, roster);
    bringBackRecords(_originalPeopleProperties, roster);
    for (const auto& group : originalParentGroups())
        cache().clearCacheForGroup(static_cast<ZRGroup&>(*group));
    if (_originalMe)
        roster.setMe(_originalMe);
    cache().nonThreadedSave();
    cache().deletedMembers({_resultingPerson});
    cache().addedMembers(_originalPeople);
    restoreSelection(_selectedGroup, _originalPeople);
}

void ZRMergePeopleCommand::redoIt()
{
    ZRRoster& roster = rosterInUse();
    _originalPeopleProperties = removeRecords(_originalPeople, roster);
    if (_resultingPersonProperties)
        bringBackRecords({*_resultingPersonProperties}, roster);
    if (_originalMe)
        roster.setMe(_resultingPerson);
    cache().nonThreadedSave();
    tellCacheOfResult();
}
