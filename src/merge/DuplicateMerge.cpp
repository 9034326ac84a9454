// How a merger is told about duplicates.
#include "merge/DuplicateMerge.h"

#include "commands/ApplicationHost.h"
#include "commands/UndoManager.h"
#include "merge/ColumnReading.h"
#include "merge/ZRNewDuplicateCardsController.h"
#include "merge/ZRNewMerger.h"
#include "platform/files/Resources.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <map>
#include <unordered_map>

using platform::Ref;

namespace merge {

void mergeIntoFirst(ZRNewMerger& merger, const People& people,
    const std::function<void(const Ref<ZRPerson>& dropped)>& onDropped)
{
    for (std::size_t i = 1; i < people.size(); ++i) {
        merger.updateCard(people[0], people[i]);
        ZRNewDuplicateCardsController::_preserveGroupMemberShipOf(*people[i], people[0], merger);
        merger.deletePerson(people[i]);
        onDropped(people[i]);
    }
}

namespace {

/// Has `former` become Me again, and when that is taken back `present`.
void registerMe(UndoManager& manager, const Ref<ZRRoster>& roster, const PassedMe& me)
{
    manager.registerUndoWithTarget(roster, [&manager, me](platform::Object& target) {
        auto& there = static_cast<ZRRoster&>(target);
        registerMe(manager, Ref<ZRRoster>(&there), {me.present, me.former});
        there.setMe(there.recordForUniqueId(me.former));
        there.save();
    });
}

UndoManager* undoManagerOfHost()
{
    const auto context = ApplicationHost::shared()->cardContext();
    return context ? dynamic_cast<UndoManager*>(context->undoManager()) : nullptr;
}

} // namespace

// What is registered last is taken back first: the card that was Me is there again when it becomes Me.
platform::Error applyAsOneStep(const std::vector<Ref<ZRNewMerger>>& mergers, const PassedMe& me)
{
    UndoManager* const manager = undoManagerOfHost();
    if (manager)
        manager->beginUndoGrouping();
    if (manager && !me.present.empty())
        registerMe(*manager, ApplicationHost::shared()->aggregateRoster(), me);
    platform::Error failure;
    bool isChanged = false;
    for (const auto& merger : mergers) {
        merger->applyChanges();
        isChanged |= !merger->updatedPeople().empty();
        if (failure.domain.empty())
            failure = merger->failure();
    }
    if (manager && isChanged)
        manager->setActionName(platform::StringTables::shared().string("MERGE", "ZRStrings"));
    if (manager)
        manager->endUndoGrouping();
    return failure;
}

} // namespace merge

namespace {

/// Buckets put together that have a card in common, in the order of their first cards.
std::vector<std::vector<std::string>> joinedBuckets(const ZRDuplicateBuckets& buckets)
{
    std::vector<std::string> ids;
    std::unordered_map<std::string, std::size_t> placeOf;
    // For each id an earlier one that it belongs to, or itself.
    std::vector<std::size_t> home;
    const auto homeOf = [&](std::size_t place) {
        while (home[place] != place)
            place = home[place] = home[home[place]];
        return place;
    };
    for (const auto& bucket : buckets)
        for (const auto& id : bucket.uniqueIds) {
            if (placeOf.emplace(id, ids.size()).second) {
                home.push_back(ids.size());
                ids.push_back(id);
            }
            const auto [first, second] =
                std::minmax({homeOf(placeOf[bucket.uniqueIds.front()]), homeOf(placeOf[id])});
            home[second] = first;
        }
    std::map<std::size_t, std::vector<std::string>> joined;
    for (std::size_t place = 0; place < ids.size(); ++place)
        joined[homeOf(place)].push_back(ids[place]);
    std::vector<std::vector<std::string>> lists;
    for (auto& [place, list] : joined)
        lists.push_back(std::move(list));
    return lists;
}

/// One merge of what was found in the host's roster.
class Merging {
public:
    explicit Merging(ZRRoster& roster) : _roster(roster)
    {
        _merger->setTargetRoster(roster.parallelUniverseRoster());
        if (const auto me = roster.me())
            _me.former = me->uniqueId();
    }

    void mergeCards(const std::vector<std::vector<std::string>>& lists)
    {
        std::vector<std::string> all;
        for (const auto& ids : lists)
            all.insert(all.end(), ids.begin(), ids.end());
        read(all);
        for (const auto& ids : lists)
            mergeList(ids);
    }

    void cleanCards(const std::vector<std::string>& ids)
    {
        read(ids);
        for (const auto& [id, person] : _people)
            if (_merger->findSimilarMultiValuesForPerson(person))
                _done.merged.push_back({id, {}});
    }

    ZRDuplicateMerge finish()
    {
        if (!_me.present.empty())
            _roster.setMe(_roster.recordForUniqueId(_me.present));
        _done.failure = merge::applyAsOneStep({_merger}, _me);
        return std::move(_done);
    }

private:
    void read(const std::vector<std::string>& ids)
    {
        for (const auto& record : merge::readPeople(*_merger->targetRoster(), ids))
            _people[record->uniqueId()] = platform::refCast<ZRPerson>(record);
    }

    void mergeList(const std::vector<std::string>& ids)
    {
        merge::People people;
        for (const auto& id : ids)
            if (const auto at = _people.find(id); at != _people.end())
                people.push_back(at->second);
        if (people.size() < 2)
            return;
        ZRMergedCards merged{people[0]->uniqueId(), {}};
        merge::mergeIntoFirst(*_merger, people, [&](const Ref<ZRPerson>& dropped) {
            merged.dropped.push_back(dropped->uniqueId());
            if (merged.dropped.back() == _me.former)
                _me.present = merged.survivor;
        });
        _done.merged.push_back(std::move(merged));
    }

    ZRRoster& _roster;
    const Ref<ZRNewMerger> _merger = ZRNewMerger::initWithGroup(nullptr);
    std::map<std::string, Ref<ZRPerson>> _people;
    merge::PassedMe _me;
    ZRDuplicateMerge _done;
};

} // namespace

ZRDuplicateMerge zrMergeDuplicates(const ZRDuplicateBuckets& buckets, ZRMergeKind kind)
{
    const auto roster = ApplicationHost::shared()->aggregateRoster();
    if (!roster || buckets.empty())
        return {};
    Merging merging(*roster);
    if (kind == ZRMergeKind::wholeCards) {
        merging.mergeCards(joinedBuckets(buckets));
        return merging.finish();
    }
    std::vector<std::string> ids;
    for (const auto& bucket : buckets)
        ids.insert(ids.end(), bucket.uniqueIds.begin(), bucket.uniqueIds.end());
    merging.cleanCards(ids);
    return merging.finish();
}
