// What a merger gathers: cards to update, to add, to delete, and the groups that they join.
#include "merge/ZRNewMerger.h"

#include "commands/ApplicationHost.h"
#include "commands/RecordKeeping.h"
#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "merge/MergedProperties.h"
#include "store/ZRDBCache.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZRRoster.h"

using platform::Ref;
using platform::Value;

namespace {

/// Whether what is changed in the roster stays there until somebody carries it over or saves it.
bool isThrowAway(ZRRoster& roster)
{
    const auto context = roster.managedObjectContext();
    return context && context != ApplicationHost::shared()->cardContext();
}

} // namespace

Ref<ZRNewMerger> ZRNewMerger::initWithGroup(Ref<ZRGroup> group)
{
    return platform::makeRef<ZRNewMerger>(std::move(group));
}

Ref<ZRRoster> ZRNewMerger::targetRoster()
{
    makeTargetRoster();
    return _targetRoster;
}

void ZRNewMerger::makeTargetRoster()
{
    if (_targetRoster)
        return;
    if (const auto cards = ApplicationHost::shared()->aggregateRoster())
        setTargetRoster(cards->parallelUniverseRoster());
}

void ZRNewMerger::setTargetRoster(Ref<ZRRoster> roster)
{
    zrRequire(roster && isThrowAway(*roster), "targetRoster is a throw-away");
    _targetRoster = std::move(roster);
}

ZRRoster& ZRNewMerger::requireTarget()
{
    makeTargetRoster();
    zrRequire(bool(_targetRoster), "targetRoster != nil");
    return *_targetRoster;
}

const ZRRecordList& ZRNewMerger::allPeople()
{
    if (!_allPeople) {
        const auto cache = requireTarget().dbCache();
        _allPeople = cache->allPeople()->records();
    }
    return *_allPeople;
}

const ZRPropertyTypes& ZRNewMerger::allPersonProperties()
{
    if (_personProperties.empty())
        _personProperties =
            ZRRecord::propertyTypesWithRoster(ZRPerson::recordClassDescription, &requireTarget());
    return _personProperties;
}

ZRIndex ZRNewMerger::_insertionIndexForPerson(const ZRPerson& person)
{
    const auto& people = allPeople();
    return _targetRoster->dbCache()->insertionIndexForMember(person, people);
}

// ---- updates

// The picture waits in the target: a merger that is dropped must leave the file alone.
Ref<ZRPerson> ZRNewMerger::updateCard(
    const Ref<ZRPerson>& card, const Ref<ZRPerson>& imported, ZRPropertyChanges* changes)
{
    ZRRoster& target = requireTarget();
    zrRequire(card->nts_Roster() == &target, "[card roster] == targetRoster");
    const Value former = card->imageData(), picture = imported->imageData();
    ZRPropertyChanges unused;
    allPersonProperties();
    locked(target, ZRAccess::write, [&]() ZR_NTS {
        const Value snapshot = nts_takeSnapshot(card, former);
        nts_updateValues(*card, *imported, snapshot, changes ? *changes : unused);
        if (picture.isData() && picture != former) {
            target.nts_KeepPicture(card->nts_UniqueId(), zr::kZRImageProperty, picture);
            card->nts_Touch();
        }
        nts_joinGroup(card, target);
    });
    return card;
}

Value ZRNewMerger::nts_takeSnapshot(const Ref<ZRPerson>& person, const Value& picture)
{
    if (!_updatedPeopleSet.insert(person->nts_UniqueId()).second)
        return {};
    std::vector<std::pair<std::string, Value>> entries;
    for (const auto& [property, type] : allPersonProperties())
        entries.emplace_back(property, person->nts_ValueForProperty(property));
    entries.emplace_back(kZRKeptMe, Value(nts_isMe(*person)));
    entries.emplace_back(kZRKeptImageData, picture);
    entries.emplace_back(kZRKeptChoices, distributionChoices(*person));
    _updatedPeople.push_back(person);
    _updatedPeopleProperties.push_back(Value::dictionary(std::move(entries)));
    return _updatedPeopleProperties.back();
}

// Asked of the context, and once: a roster keeps its Me alive, which would keep the throw-away alive for
// good.
bool ZRNewMerger::nts_isMe(const ZRPerson& person)
{
    if (!_meUniqueId && _meCard)
        _meUniqueId = _meCard->nts_UniqueId();
    if (!_meUniqueId) {
        const auto me = _targetRoster->managedObjectContext()->myContact();
        _meUniqueId = me ? std::string(me->text(contactSlots().uniqueId)) : std::string();
    }
    return *_meUniqueId == person.nts_UniqueId();
}

// A card that was updated before has no snapshot any more, and nothing is skipped.
void ZRNewMerger::nts_updateValues(
    ZRPerson& card, const ZRPerson& imported, const Value& snapshot, ZRPropertyChanges& changes)
{
    ZRPersonAdditions additions(card);
    additions.nts_updateValue(imported.nts_ValueForProperty(zr::kZRNoteProperty), zr::kZRNoteProperty,
        kZRPropertyTypeString, changes);
    for (const auto& [property, type] : _personProperties) {
        if (merge::isOfOneCardOnly(property) || property == zr::kZRNoteProperty)
            continue;
        const Value value = imported.nts_ValueForProperty(property);
        if (snapshot.isAbsent() || value != snapshot[property])
            additions.nts_updateValue(value, property, type, changes);
    }
}

Ref<ZRPerson> ZRNewMerger::emulateUpdateCard(
    const ZRPerson& card, const ZRPerson& imported, ZRPropertyChanges& changes)
{
    allPersonProperties();
    makePreviewRoster();
    auto preview = ZRPerson::initWithRoster(_previewRoster);
    const Value picture = imported.imageData();
    locked(*_previewRoster, ZRAccess::write, [&]() ZR_NTS {
        for (const auto& [property, type] : _personProperties)
            if (!merge::isOfOneCardOnly(property))
                preview->nts_SetValue(card.nts_ValueForProperty(property), property);
        nts_updateValues(*preview, imported, Value(), changes);
        if (picture.isData())
            preview->nts_SetImageData(picture, zr::kZRImageProperty);
    });
    return preview;
}

// In memory: a preview must leave nothing in the user's store, not even the name of a messaging service.
void ZRNewMerger::makePreviewRoster()
{
    if (_previewRoster)
        return;
    _previewRoster = ZRRoster::emptyMemoryBackedRoster();
    std::vector<std::pair<std::string, Value>> declared;
    for (const auto& [property, type] : _personProperties)
        if (!_previewRoster->doesPropertyExist(property, ZRPerson::recordClassDescription))
            declared.emplace_back(property, Value(type));
    ZRPerson::addPropertiesAndTypes(Value::dictionary(std::move(declared)), _previewRoster.get());
    locked(*_previewRoster, ZRAccess::write, [&]() ZR_NTS { _previewRoster->nts_SetKeepsPictures(true); });
}

// ---- who comes, who goes, and who joins which group

void ZRNewMerger::addPerson(const Ref<ZRPerson>& person) { _addPeople({person}, requireTarget()); }

void ZRNewMerger::_addPeople(const ZRRecordList& people, ZRRoster& roster)
{
    _addedPeople.insert(_addedPeople.end(), people.begin(), people.end());
    if (!_group)
        return;
    locked(roster, ZRAccess::write, [&]() ZR_NTS {
        for (const auto& record : people)
            if (const auto person =
                    platform::refCast<ZRPerson>(roster.nts_RecordForUniqueId(record->nts_UniqueId())))
                nts_joinGroup(person, roster);
    });
}

// Groups that are not stored take no members from here: everybody is in that of all, and the last import is
// marked when it is over.
void ZRNewMerger::nts_joinGroup(const Ref<ZRPerson>& person, ZRRoster& roster)
{
    if (!_group || _group->isSpecialGroup())
        return;
    if (!_groupThere || _groupThere->nts_Roster() != &roster)
        _groupThere = platform::refCast<ZRGroup>(roster.nts_RecordForUniqueId(_group->nts_UniqueId()));
    if (_groupThere && !_groupThere->nts_IsParentGroupOfRecord(*person)
        && _groupThere->nts_AddMember(*person))
        _addedToGroup.push_back(person);
}

void ZRNewMerger::deletePerson(const Ref<ZRPerson>& person)
{
    _deletedPeople.push_back(person);
    _selfMergedPeople.erase(person->uniqueId());
}

void ZRNewMerger::addMember(const Ref<ZRPerson>& person, const Ref<ZRGroup>& group)
{
    _mergedIntoGroup[group->uniqueId()].push_back(person);
}
