// How what a merger has gathered is written: all of it into the card context, by one save.
#include "commands/ApplicationHost.h"
#include "core/ZRFailure.h"
#include "merge/CardWriting.h"
#include "merge/ZRNewMerger.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/Transaction.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRRoster.h"

#include <stdexcept>

using objectstore::PersistentStore;
using platform::Ref;

namespace {

/// Whether what is gathered in the roster can be carried over into the context: both are on one store.
bool haveOneStore(ZRRoster& roster, ZRManagedObjectContext& context)
{
    const auto own = roster.managedObjectContext();
    return own->coordinator() == context.coordinator()
        || (!roster.isMemoryBacked() && own->zrHasCommonStoreWithContext(context));
}

} // namespace

bool ZRNewMerger::applyChanges()
{
    if (const auto command = writeChanges())
        command->performWithActionName("IMPORT");
    return true;
}

Ref<ZRCommand> ZRNewMerger::writeChanges()
{
    PersistentStore& store = requireStore();
    _failure = {};
    if (_updatedPeople.empty() && _addedPeople.empty() && _selfMergedPeople.empty())
        return nullptr;
    const auto host = ApplicationHost::shared();
    const auto cards = host->cardContext();
    zrRequire(
        cards && haveOneStore(requireTarget(), *cards), "targetRoster is on the store of the card context");
    merge::CardWriting writing(cards, store);
    const auto written = objectstore::answering("merge", [&] {
        write(writing, *host);
        _failure = writing.save();
    });
    if (!written)
        _failure = written.error();
    return _failure.domain.empty() ? newCommand(writing) : nullptr;
}

void ZRNewMerger::write(merge::CardWriting& writing, ApplicationHost& host)
{
    cleanSimilarValues(*host.aggregateRoster());
    _appliedAdded = writing.add(_addedPeople);
    _appliedUpdated = writing.update(_updatedPeople);
    if (_group)
        writing.join(_group->uniqueId());
    host.clearLastImportGroup();
    host.setShowsLastImportGroup(true);
    writing.markAsLastImport();
    writing.remove(_deletedPeople);
    for (const auto& [group, people] : _mergedIntoGroup)
        writing.join(group, people);
}

Ref<ZRCommand> ZRNewMerger::newCommand(const merge::CardWriting& writing) const
{
    ZRImportCommand::Work work = writing.work();
    for (const auto& person : _appliedAdded)
        if (person)
            work.addedPeople.push_back(person);
    for (std::size_t i = 0; i < _appliedUpdated.size(); ++i)
        if (_appliedUpdated[i]) {
            work.updatedPeople.push_back(_appliedUpdated[i]);
            work.updatedPeopleProperties.push_back(_updatedPeopleProperties[i]);
        }
    return platform::makeRef<ZRImportCommand>(std::move(work), writing.roster());
}

/// The one store that is meant, as the target roster knows it.
PersistentStore& ZRNewMerger::requireStore()
{
    if (_targetPersistentStore)
        return *_targetPersistentStore;
    const auto stores = requireTarget().storeCoordinator()->stores();
    if (stores.size() != 1)
        throw std::logic_error("Import failed: the destination store is ambiguously defined");
    return *stores.front();
}

void ZRNewMerger::cleanSimilarValues(ZRRoster& roster)
{
    std::vector<std::string> ids;
    for (const auto& [uniqueId, cleaned] : _selfMergedPeople)
        ids.push_back(uniqueId);
    const ZRRecordList people = roster.recordsForUniqueIds(ids);
    roster.prefetchDataForRecords(people);
    for (const auto& record : people)
        if (const auto person = platform::refCast<ZRPerson>(record))
            mergeSimilarMultiValuesForPerson(person);
}
