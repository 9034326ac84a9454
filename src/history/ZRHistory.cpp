// How a roster's history is read, and how its records follow.
#include "history/ZRHistory.h"

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "history/HistoryModel.h"
#include "history/HistoryReplay.h"
#include "history/StepInUse.h"
#include "objectstore/PageCache.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/Transaction.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRRoster.h"
#include "store/ZRSyncManager.h"

using history::Deviation;
using history::HistoryReplay;
using history::Side;
using history::Tables;
using objectstore::ReadTransaction;
using objectstore::StoreState;
using objectstore::WriteTransaction;
using platform::Error;
using platform::Ref;
using platform::Result;
using platform::Value;

struct ZRHistory::State {
    Ref<ZRRoster> roster;

    ZRHistoryOutcome replay(Side towards, ZRHistoryForce force) ZR_NTS;
    bool replayInStore(HistoryReplay& replay, ZRHistoryForce force, ZRHistoryOutcome& outcome);
    void tellOthers(const history::Replayed& replayed) ZR_NTS;
    Result<void> settlePictures();
    std::string directory() const
    {
        return roster->isMemoryBacked() ? std::string() : roster->databaseDirectory();
    }
};

namespace {

std::string_view reasonOf(Deviation::Kind kind)
{
    constexpr std::string_view reasons[] = {"is missing", "is there again", "was changed"};
    return reasons[static_cast<std::size_t>(kind)];
}

Error notWritable(const ZRRoster& roster)
{
    return {"ZRRosterErrorDomain", 513, roster.databaseDirectory() + ": the roster may not be written"};
}

/// The roster's own facts are made when somebody asks for them, and wait for a save without harm.
bool hasUnsavedRecords(ZRRoster& roster) ZR_NTS
{
    const auto context = roster.managedObjectContext();
    for (const auto& objects :
        {context->insertedObjects(), context->updatedObjects(), context->deletedObjects()})
        for (const auto& object : objects)
            if (object->entity().owner() || history::imageModel().rootsOf(object->entity()))
                return true;
    return false;
}

/// Why nothing may be replayed in this roster, or an Error without a domain.
Error refusalOf(ZRRoster& roster) ZR_NTS
{
    if (roster._isReadOnlyIgnoresInert(true))
        return notWritable(roster);
    if (roster.nts_hasUnsavedChanges() && hasUnsavedRecords(roster))
        return {"ZRRosterErrorDomain", 3, "the roster has unsaved changes"};
    return {};
}

/// Gives the pictures back that were written for records that do not come.
class WrittenPictures {
public:
    explicit WrittenPictures(HistoryReplay& replay) : _replay(replay) { }
    ~WrittenPictures()
    {
        if (!_areKept)
            _replay.forgetPictures();
    }
    WrittenPictures(const WrittenPictures&) = delete;
    WrittenPictures& operator=(const WrittenPictures&) = delete;
    void keep() { _areKept = true; }

private:
    HistoryReplay& _replay;
    bool _areKept = false;
};

/// Runs `body(store, transaction)` within a transaction of the roster's store; who writes commits.
template <class Transaction, class Body>
Result<void> within(ZRRoster& roster, Body body)
{
    auto* const coordinator = roster.storeCoordinator();
    if (!coordinator)
        return Error{"ZRRosterErrorDomain", 1, "the roster cannot be opened"};
    const platform::Lock lock(coordinator->mutex());
    return objectstore::answering("history", [&] {
        auto* const store = coordinator->firstStore();
        if (!store)
            throw objectstore::StoreFailure(
                objectstore::storeError(objectstore::StoreFault::noStore, "the store is not open"));
        Transaction transaction(store->state());
        body(store->state(), transaction);
    });
}

} // namespace

ZRHistory::ZRHistory(ZRRoster& roster) : _state(new State{Ref<ZRRoster>(&roster)}) { }
ZRHistory::~ZRHistory() = default;

Result<std::vector<ZRHistoryEntry>> ZRHistory::steps(std::size_t limit)
{
    std::vector<ZRHistoryEntry> entries;
    const auto read = locked(*_state->roster, ZRAccess::read, [&] {
        return within<ReadTransaction>(*_state->roster, [&](StoreState& store, ReadTransaction&) {
            Tables tables(store);
            if (tables.exist())
                entries = tables.steps(limit);
        });
    });
    if (!read)
        return read.error();
    return entries;
}

ZRHistoryOutcome ZRHistory::undo(ZRHistoryForce force)
{
    return locked(
        *_state->roster, ZRAccess::write, [&]() ZR_NTS { return _state->replay(Side::before, force); });
}

ZRHistoryOutcome ZRHistory::redo(ZRHistoryForce force)
{
    return locked(
        *_state->roster, ZRAccess::write, [&]() ZR_NTS { return _state->replay(Side::after, force); });
}

Result<void> ZRHistory::clear()
{
    return locked(*_state->roster, ZRAccess::write, [&]() ZR_NTS -> Result<void> {
        if (_state->roster->_isReadOnlyIgnoresInert(true))
            return notWritable(*_state->roster);
        return within<WriteTransaction>(
            *_state->roster, [](StoreState& store, WriteTransaction& transaction) {
                Tables tables(store);
                if (tables.exist())
                    tables.clear();
                transaction.commit();
            });
    });
}

Result<void> ZRHistory::settlePictures()
{
    return locked(*_state->roster, ZRAccess::write, [&] { return _state->settlePictures(); });
}

// ---- one step

ZRHistoryOutcome ZRHistory::State::replay(Side towards, ZRHistoryForce force)
{
    using Status = ZRHistoryOutcome::Status;
    ZRHistoryOutcome outcome;
    if (outcome.error = refusalOf(*roster); !outcome.error.domain.empty()) {
        outcome.status = Status::failed;
        return outcome;
    }
    history::Replayed replayed;
    auto settled = settlePictures();
    const auto done =
        within<WriteTransaction>(*roster, [&](StoreState& store, WriteTransaction& transaction) {
            Tables tables(store);
            const auto step = tables.exist() ? tables.nextStep(towards) : std::nullopt;
            if (!step)
                return;
            outcome.step = *step;
            outcome.status = Status::inUse;
            if (history::StepInUse::isHeld(directory(), step->number))
                return;
            const objectstore::PageCache cache(store, objectstore::kKilobytesOfManyWrites);
            HistoryReplay replay(store, step->number, towards, roster->rosterImagesDirectory());
            WrittenPictures pictures(replay);
            if (!replayInStore(replay, force, outcome))
                return;
            transaction.commit();
            pictures.keep();
            replayed = replay.replayed();
        });
    if (done && settled && outcome.status == Status::done) {
        settled = settlePictures();
        tellOthers(replayed);
    }
    if (!done || !settled) {
        outcome.status = Status::failed;
        outcome.error = done ? settled.error() : done.error();
    }
    return outcome;
}

/// False when nothing may be committed.
bool ZRHistory::State::replayInStore(HistoryReplay& replay, ZRHistoryForce force, ZRHistoryOutcome& outcome)
{
    for (auto& deviation : replay.capture())
        outcome.conflicts.push_back(
            {std::move(deviation.record), std::move(deviation.name), std::string(reasonOf(deviation.kind))});
    outcome.status = ZRHistoryOutcome::Status::conflict;
    if (!outcome.conflicts.empty() && force == ZRHistoryForce::no)
        return false;
    replay.apply();
    replay.leave();
    outcome.status = ZRHistoryOutcome::Status::done;
    outcome.added = replay.replayed().added.size();
    outcome.changed = replay.replayed().changed.size();
    outcome.removed = replay.replayed().removed.size();
    return true;
}

/// What a step decided of pictures, this one or one whose process ended too early.
Result<void> ZRHistory::State::settlePictures()
{
    bool isPending = false;
    if (auto read = within<ReadTransaction>(*roster,
            [&](StoreState& store, ReadTransaction&) { isPending = Tables(store).hasPendingPictures(); });
        !read || !isPending)
        return read;
    return within<WriteTransaction>(*roster, [&](StoreState& store, WriteTransaction& transaction) {
        if (const auto settled = history::settlePictures(store, roster->rosterImagesDirectory()); !settled)
            throw objectstore::StoreFailure(settled.error());
        transaction.commit();
    });
}

/// This process takes it in as it would what another saved, and the others are told as after a save.
void ZRHistory::State::tellOthers(const history::Replayed& replayed)
{
    const auto context = roster->managedObjectContext();
    if (const auto caughtUp = context->catchUp(); !caughtUp)
        platform::log(caughtUp.error().text);
    roster->nts_ClearCachedRecordsForUniqueIds(replayed.removed);
    roster->clearCustomPropertyCaches();
    ZRPerson::clearPrivateFields();
    auto info = roster->allocCommonNotificationUserInfoDictionary();
    const auto list = [&](std::string_view key, const std::vector<std::string>& ids) {
        if (!ids.empty())
            info.insert_or_assign(std::string(key), Value::array({ids.begin(), ids.end()}));
    };
    list(zr::kZRInsertedRecords, replayed.added);
    list(zr::kZRUpdatedRecords, replayed.changed);
    list(zr::kZRDeletedRecords, replayed.removed);
    if (roster->isMemoryBacked())
        return;
    roster->nts_SendRosterDidSaveNotificationsWithPublicUserInfo(info, info, true);
    if (roster->isSharedInstanceOrClone())
        ZRSyncManager::sharedSyncManager().scheduleTrickleSyncSoon();
}
