// The work of bringing cards together: gathered in memory, written once.
#pragma once

#include "commands/ZRCommand.h"
#include "core/ZRExport.h"
#include "core/ZRGroup.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "core/ZRTypes.h"
#include "merge/ZRPersonAdditions.h"
#include "platform/value/Error.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

class ApplicationHost;
class ZROSContact;

namespace merge {
class CardWriting;
} // namespace merge

namespace objectstore {
class PersistentStore;
} // namespace objectstore

/// Finds which cards are there already, and gathers what an import or a clean-up is to do.
///
/// Cards are changed in a *target roster*, which is a throw-away: a second roster on the store of the host's
/// card context (`ZRRoster::parallelUniverseRoster`), which nobody saves. (An import that applies nothing
/// uses a merger on the roster that it saves itself, on whatever store.) Until `applyChanges` nothing of the
/// user's roster has changed, and whoever gives up just drops the merger and the target. `applyChanges`
/// carries everything over into the card context (`ApplicationHost::cardContext`) and saves that.
///
/// A card that is to be updated or deleted is a record of the target roster; one that is to be added may be
/// of any roster.
///
/// Ownership: shares ownership of the target roster and of the cards it was told.
/// Threads:   one at a time, without the global lock; `applyChanges` on the thread of the host.
/// Errors:    a target roster that is not a throw-away, one on another store than the card context at
///            `applyChanges`, or a card that is of another roster than the target, raises ZRInvalidArgument.
///            A store that cannot be read makes nothing look like a duplicate; one that cannot be written is
///            told by `failure`.
class ZR_EXPORT ZRNewMerger : public platform::Object {
public:
    /// A merger for cards that go into `group`, or into none.
    static platform::Ref<ZRNewMerger> initWithGroup(platform::Ref<ZRGroup> group);

    /// A parallel universe of the host's roster unless another was set. Absent when the host has none.
    platform::Ref<ZRRoster> targetRoster();
    /// Raises for the roster of the card context.
    void setTargetRoster(platform::Ref<ZRRoster> roster);
    /// The one store that is looked at and written to; null, as at first: whatever the target has.
    objectstore::PersistentStore* targetPersistentStore() const { return _targetPersistentStore; }
    void setTargetPersistentStore(objectstore::PersistentStore* store) { _targetPersistentStore = store; }
    /// Who counts as Me; without one, that of the target roster as it is at the first update.
    void setMeCard(platform::Ref<ZRPerson> meCard)
    {
        _meCard = std::move(meCard);
        _meUniqueId.reset();
    }

    // ---- what is there                                            (ZRNewMerger+Duplicates.cpp)

    /// The people of the target, sorted, as they were at the first call.
    const ZRRecordList& allPeople();
    /// The properties of people there with their types, as they were at the first call.
    const ZRPropertyTypes& allPersonProperties();
    /// Where the person would go among `allPeople`; kZRNotFound past their end.
    ZRIndex _insertionIndexForPerson(const ZRPerson& person);

    /// From the name key of each stored card to its unique id; of several with one key, the last. Made at the
    /// first call, from what is saved; null, and logged, when the store cannot be read.
    using CollisionMap = std::unordered_map<std::string, std::string>;
    const CollisionMap* collisionMap();
    /// All ids under one name key, in the order in which the map took them up: the last is the one there.
    std::vector<std::string> uniqueIdsForCollisionMapKey(const std::string& key);
    /// By what a card is looked for: last and first name of a person, the organization of a company, folded
    /// in case and diacritics, a blank for what is missing. Absent for what is shown as neither.
    static std::optional<std::string> newCollisionMapKeyForContact(ZROSContact& contact) ZR_NTS;
    /// From the unique id of an incoming card to the card in the target that goes by the same name; the found
    /// cards' values are read in a few fetches. Empty where the user wants no cards merged
    /// (kZRDontAutoMerge).
    using Duplicates = std::map<std::string, platform::Ref<ZRPerson>, std::less<>>;
    virtual Duplicates duplicatesForPeople(const ZRRecordList& people);

    // ---- values that stand twice in one card                      (ZRNewMerger+SimilarValues.cpp)

    /// Looks for entries of one multi-value that read the same, and keeps what is left without them. Nothing
    /// of the card changes before `applyChanges`.
    bool findSimilarMultiValuesForPerson(const platform::Ref<ZRPerson>& person);
    /// The entries without those that read the same as an earlier one, each of which gets an entry in
    /// `changes`.
    static platform::Ref<ZRMultiValue> mergedSimilarMultiValuesIn(
        const ZRMultiValue& entries, std::string_view property, ZRPropertyChanges& changes);
    /// Writes into the person, a record of any roster, what `findSimilarMultiValuesForPerson` left; a person
    /// that this merger has updated is looked at anew, so that both stand.
    void mergeSimilarMultiValuesForPerson(const platform::Ref<ZRPerson>& person);

    // ---- gathering

    /// Lets `imported` flow into `card`, a record of the target, and answers that. `changes`, if given, grows
    /// by what was done.
    platform::Ref<ZRPerson> updateCard(const platform::Ref<ZRPerson>& card,
        const platform::Ref<ZRPerson>& imported, ZRPropertyChanges* changes = nullptr);
    /// What `updateCard` would make of a card, as a card of its own in a roster in memory; the picture is
    /// the imported one only. Its memory is kept until that roster goes with the merger: who makes thousands
    /// removes each from its roster.
    platform::Ref<ZRPerson> emulateUpdateCard(
        const ZRPerson& card, const ZRPerson& imported, ZRPropertyChanges& changes);
    void addPerson(const platform::Ref<ZRPerson>& person);
    /// Those of the people that are in `roster` join the merger's group there.
    void _addPeople(const ZRRecordList& people, ZRRoster& roster);
    /// The person is deleted by `applyChanges`, provided that there is something else to be done.
    void deletePerson(const platform::Ref<ZRPerson>& person);
    /// The person, or the card that it becomes, joins the group.
    void addMember(const platform::Ref<ZRPerson>& person, const platform::Ref<ZRGroup>& group);

    const ZRRecordList& addedPeople() const { return _addedPeople; }
    const ZRRecordList& updatedPeople() const { return _updatedPeople; }
    const ZRRecordList& deletedPeople() const { return _deletedPeople; }
    /// Those who joined the merger's group, and were not in it before.
    const ZRRecordList& addedToGroup() const { return _addedToGroup; }
    /// What each of `updatedPeople` said before its first update: its properties, and what else
    /// commands/RecordKeeping.h keeps of a record.
    const std::vector<platform::Value>& updatedPeopleProperties() const { return _updatedPeopleProperties; }

    // ---- writing                                                  (ZRNewMerger+Applying.cpp)

    /// Writes everything into the card context, marks what was added and updated as the last import, saves,
    /// and registers how it is undone. Added cards get new ids. Always true. Raises std::logic_error where
    /// nobody says which of several stores is meant.
    bool applyChanges();
    /// Why the save of `applyChanges` failed; its domain is empty when it did not.
    const platform::Error& failure() const { return _failure; }
    /// The cards as the host's roster has them since `applyChanges`, in step with `addedPeople` and
    /// `updatedPeople`; null for one that somebody deleted meanwhile.
    const ZRRecordList& appliedAddedPeople() const { return _appliedAdded; }
    const ZRRecordList& appliedUpdatedPeople() const { return _appliedUpdated; }

protected:
    explicit ZRNewMerger(platform::Ref<ZRGroup> group) : _group(std::move(group)) { }
    ~ZRNewMerger() override = default;

    /// `applyChanges` without its last step: the command that undoes what was written. It finds everything
    /// done; it remembers the last import and tells the lists. Null when there was nothing to do, and when
    /// the save failed.
    platform::Ref<ZRCommand> writeChanges();

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);

    /// The properties of one person that hold similar entries, each with what is left without those.
    using CleanedValues = std::map<std::string, platform::Ref<ZRMultiValue>, std::less<>>;

    bool readCollisionMap();
    void takeUp(std::string key, std::string uniqueId);
    /// Of those whose name key is known: their id, and that of the stored card.
    std::vector<std::pair<std::string, std::string>> idsOfNamesakes(const ZRRecordList& people);
    CleanedValues nts_cleanedValues(const ZRPerson& person) ZR_NTS;
    void makeTargetRoster();
    ZRRoster& requireTarget();
    void makePreviewRoster();
    /// Keeps what the person says now and answers it; absent when that was kept before.
    platform::Value nts_takeSnapshot(
        const platform::Ref<ZRPerson>& person, const platform::Value& picture) ZR_NTS;
    bool nts_isMe(const ZRPerson& person) ZR_NTS;
    void nts_updateValues(ZRPerson& card, const ZRPerson& imported, const platform::Value& snapshot,
        ZRPropertyChanges& changes) ZR_NTS;
    void nts_joinGroup(const platform::Ref<ZRPerson>& person, ZRRoster& roster) ZR_NTS;
    objectstore::PersistentStore& requireStore();
    void write(merge::CardWriting& writing, ApplicationHost& host);
    void cleanSimilarValues(ZRRoster& roster);
    platform::Ref<ZRCommand> newCommand(const merge::CardWriting& writing) const;

    platform::Ref<ZRPerson> _meCard;
    /// Of who counts as Me, once that was found out; empty for nobody.
    std::optional<std::string> _meUniqueId;
    platform::Ref<ZRGroup> _group;
    std::optional<ZRRecordList> _allPeople;
    ZRPropertyTypes _personProperties;
    ZRRecordList _deletedPeople;
    ZRRecordList _addedPeople;
    ZRRecordList _updatedPeople;
    /// What each of them said before, in step.
    std::vector<platform::Value> _updatedPeopleProperties;
    /// Their unique ids.
    std::unordered_set<std::string> _updatedPeopleSet;
    ZRRecordList _addedToGroup;
    /// By the unique ids of the people, and of the groups.
    std::map<std::string, CleanedValues, std::less<>> _selfMergedPeople;
    std::map<std::string, ZRRecordList, std::less<>> _mergedIntoGroup;
    platform::Ref<ZRRoster> _targetRoster;
    std::optional<CollisionMap> _collisionMap;
    /// The ids that later ones of their key have pushed out of the map.
    std::unordered_map<std::string, std::vector<std::string>> _earlierCollisions;
    objectstore::PersistentStore* _targetPersistentStore = nullptr;

    /// The merger's group as the roster that was asked last has it.
    platform::Ref<ZRGroup> _groupThere;
    /// Where previews are made.
    platform::Ref<ZRRoster> _previewRoster;
    platform::Error _failure;
    ZRRecordList _appliedAdded;
    ZRRecordList _appliedUpdated;
};
