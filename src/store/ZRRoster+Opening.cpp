// How the store of a roster is opened, and what happens to one that cannot be.
#include "core/ZRMessageTracer.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/StoreCoordinator.h"
#include "platform/files/Files.h"
#include "platform/files/Trash.h"
#include "platform/files/UserDefaults.h"
#include "platform/run/Log.h"
#include "platform/text/Compare.h"
#include "store/ZRHindsightTempFileHelper.h"
#include "store/ZRModelTable.h"
#include "store/ZRRosterState.h"
#include "store/ZRServices.h"

#include <fmt/format.h>

#include <cstdio>

using objectstore::PersistentStore;
using objectstore::StoreCoordinator;
using objectstore::StoreFault;
using objectstore::StoreType;
using platform::Error;
using platform::Ref;
using platform::Value;

namespace {

/// What the store's metadata says of the form of its contents.
constexpr float databaseVersion = 0.03F;
constexpr std::string_view versionKey = "ZRDatabaseVersion";
/// The locale and ICU version of the collation keys that the store's rows carry.
constexpr std::string_view collationKey = "ZRCollationVersion";
/// 1 once the records of a legacy file are here.
constexpr std::string_view importCompletedKey = "ZRObjectStoreImportCompleted";

/// The dictionary with one entry more, or exchanged.
Value withEntry(const Value& dictionary, std::string_view key, const Value& value)
{
    auto entries = dictionary.asDictionary() ? dictionary.asDictionary()->entries()
                                             : std::vector<platform::Dictionary::Entry>();
    std::erase_if(entries, [&](const auto& entry) { return entry.first == key; });
    entries.emplace_back(key, value);
    return Value::dictionary(std::move(entries));
}

/// Coordinators by path, so that two rosters on one path share a model and a connection.
struct SharedCoordinators {
    struct Entry {
        Ref<StoreCoordinator> coordinator;
        int users = 0;
    };
    platform::RecursiveMutex monitor;
    std::map<std::string, Entry> byPath ZR_GUARDED_BY(monitor);
};

SharedCoordinators& sharedCoordinators()
{
    static auto* const shared = new SharedCoordinators;
    return *shared;
}

/// Why a store is moved aside: the words of its new name and of the log.
struct MoveAside {
    std::string_view reason;
    std::string_view message;
};

std::optional<MoveAside> moveAsideFor(const Error& error)
{
    if (objectstore::isFault(error, StoreFault::corrupt))
        return MoveAside{"corrupt", "Corrupt roster database file detected, will attempt reimporting"};
    if (objectstore::isFault(error, StoreFault::readFailed))
        return MoveAside{"unknown", "Unknown error reading database file, will attempt reimporting"};
    for (const auto fault :
        {StoreFault::incompatibleHash, StoreFault::saveConflict, StoreFault::unknownModel})
        if (objectstore::isFault(error, fault))
            return MoveAside{
                "incompatible", "Incompatible roster database file detected, will attempt reimporting"};
    return {};
}

/// Moves the store file with what SQLite keeps beside it to the first free "<path>.<n>.<reason>".
std::string moveAsideDatabaseAtPath(const std::string& path, std::string_view reason)
{
    std::string aside;
    for (int n = 1; aside.empty() || platform::fileExists(aside); ++n)
        aside = fmt::format("{}.{}.{}", path, n, reason);
    for (const char* companion : {"", "-wal", "-shm"})
        if (platform::fileExists(path + companion)
            && std::rename((path + companion).c_str(), (aside + companion).c_str()) != 0)
            platform::log(fmt::format("cannot move {}{} aside", path, companion));
    return aside;
}

/// One attempt at the store, and what it made of the file.
class StoreOpener {
public:
    StoreOpener(StoreCoordinator& coordinator, const std::string& path)
        : _coordinator(coordinator), _path(path)
    {
    }

    /// The store, or null; `opening` is told what it does not hold.
    PersistentStore* open(ZRStoreOpening& opening)
    {
        opening.loadFailure = !platform::fileExists(_path);
        if (platform::fileExists(_path + ".new"))
            static_cast<void>(platform::moveToTrash(_path + ".new"));
        PersistentStore* store = add(StoreType::sqlite);
        if (store)
            return store;
        if (const auto aside = moveAsideFor(_error)) {
            platform::log(fmt::format("{}: {}", aside->message, _error.text));
            ZRRoster::logPersistentStoreTracerFailureWithMessage(aside->message, _error);
            const std::string moved = moveAsideDatabaseAtPath(_path, aside->reason);
            noteOpeningProblem(fmt::format("{} ({}); it is kept as {}", aside->message, _error.text, moved));
            opening.loadFailure = true;
            store = add(StoreType::sqlite);
        }
        if (!store && ZRRoster::isInert() && objectstore::isFault(_error, StoreFault::migrationFailed))
            store = addTemporaryCopy(opening);
        if (!store && mayNotUseFile()) {
            noteOpeningProblem(fmt::format("{}; nothing will be saved", _error.text));
            opening.loadFailure = opening.runsWithoutFile = true;
            store = add(StoreType::inMemory);
        }
        if (!store)
            noteOpeningProblem(_error.text);
        return store;
    }

private:
    PersistentStore* add(StoreType type)
    {
        const auto added = _coordinator.addStore(type, _path);
        if (added)
            return *added;
        _error = added.error();
        return nullptr;
    }

    /// A process that must not write completes an older store in a copy of its own.
    PersistentStore* addTemporaryCopy(ZRStoreOpening& opening)
    {
        const auto copy = ZRHindsightTempFileHelper::temporaryDatabaseUrlByCopyingDatabaseAtPath(_path);
        if (!copy) {
            platform::log(fmt::format("Could not create temporary database: {}", copy.error().text));
            return nullptr;
        }
        const auto added = _coordinator.addStore(StoreType::sqlite, *copy);
        if (!added)
            return nullptr;
        opening.loadFailure = false;
        opening.isTemporaryCopy = true;
        return *added;
    }

    bool mayNotUseFile() const
    {
        return objectstore::isFault(_error, StoreFault::notPermitted)
            || objectstore::isFault(_error, StoreFault::migrationFailed);
    }

    StoreCoordinator& _coordinator;
    const std::string _path;
    Error _error;
};

/// Writes what the store's form is, where it does not say so yet; answers whether its collation keys are
/// ours.
bool stampMetadata(StoreCoordinator& coordinator, PersistentStore* store, float version)
{
    const auto metadata = coordinator.metadata(store);
    const Value known = metadata ? *metadata : Value();
    const std::string ours = platform::collationVersion();
    const Value& theirs = known[collationKey];
    const bool isStamped = known[versionKey].asReal() == static_cast<double>(version) && theirs.isString();
    if (!isStamped) {
        Value stamped = withEntry(known, versionKey, Value(static_cast<double>(version)));
        if (!theirs.isString())
            stamped = withEntry(stamped, collationKey, Value(ours));
        if (const auto written = coordinator.setMetadata(store, stamped); !written)
            platform::log(fmt::format("cannot stamp the store: {}", written.error().text));
    }
    return !theirs.isString() || theirs.asText() == ours;
}

/// For who wants no trace of whom he wrote to: from now on the store is its copy in memory.
PersistentStore* movedIntoMemoryIfPreferred(StoreCoordinator& coordinator, PersistentStore* store)
{
    if (!platform::UserDefaults::standard().boolForKey("ZRUseInMemorySQLiteStore"))
        return store;
    const auto moved = coordinator.migrateStore(store, "/dev/null", StoreType::sqlite);
    if (moved)
        return *moved;
    platform::log(fmt::format("cannot move the mail recents into memory: {}", moved.error().text));
    return store;
}

Ref<ZRManagedObjectContext> contextOn(const Ref<StoreCoordinator>& coordinator, bool writesCollationKeys)
{
    auto context = platform::makeRef<ZRManagedObjectContext>(coordinator);
    context->setMergePolicy(objectstore::MergePolicy::memoryWins);
    context->setWritesCollationKeys(writesCollationKeys);
    return context;
}

} // namespace

ZRStoreOpening nts_managedObjectContextWithModel(Ref<const objectstore::Model> model,
    const std::string& databasePath, ZRStoreDataType dataType, float version)
{
    auto& shared = sharedCoordinators();
    const platform::Lock guard(shared.monitor);
    ZRStoreOpening opening;
    if (const auto known = shared.byPath.find(databasePath); known != shared.byPath.end()) {
        ++known->second.users;
        const auto& coordinator = known->second.coordinator;
        // A reset that could not open the store again left none.
        PersistentStore* store = coordinator->stores().empty()
            ? StoreOpener(*coordinator, databasePath).open(opening)
            : coordinator->stores().front();
        if (store)
            opening.context = contextOn(coordinator, stampMetadata(*coordinator, store, version));
        opening.isTemporaryCopy = false; // of an entry that is shared already
        return opening;
    }
    const auto coordinator = StoreCoordinator::make(std::move(model));
    PersistentStore* store = StoreOpener(*coordinator, databasePath).open(opening);
    if (store && dataType == ZRStoreDataType::mailRecents)
        store = movedIntoMemoryIfPreferred(*coordinator, store);
    if (!store) {
        platform::log(
            fmt::format("ManagedObjectContext could not create the store at path: <{}>", databasePath));
        return opening;
    }
    opening.context = contextOn(coordinator, stampMetadata(*coordinator, store, version));
    if (!opening.isTemporaryCopy)
        shared.byPath[databasePath] = {coordinator, 1};
    return opening;
}

void nts_closeStore(const std::string& path)
{
    auto& shared = sharedCoordinators();
    const platform::Lock guard(shared.monitor);
    const auto known = shared.byPath.find(path);
    if (known != shared.byPath.end() && --known->second.users == 0)
        shared.byPath.erase(known);
}

// The roster's own monitor comes after the lock of its context, so it is free while a store is opened; of two
// threads that come here at once, the second one waits at the shared monitor and finds what the first one
// made.
Ref<ZRManagedObjectContext> ZRRoster::managedObjectContext()
{
    const auto known = [this] {
        const platform::Lock guard(_state->monitor);
        const bool isSettled =
            _state->context || _state->kind == State::Kind::inMemory || _state->openingFailed;
        return std::pair(isSettled, _state->context);
    };
    if (const auto [isSettled, context] = known(); isSettled)
        return context;
    const platform::Lock oneAtATime(sharedCoordinators().monitor);
    if (const auto [isSettled, context] = known(); isSettled)
        return context;
    ZRStoreOpening opening = nts_managedObjectContextWithModel(
        rosterModel(), rosterObjectStoreDatabaseFile(), ZRStoreDataType::roster, databaseVersion);
    if (!opening.context) {
        const platform::Lock guard(_state->monitor);
        _state->openingFailed = true;
        return nullptr;
    }
    if (opening.loadFailure)
        nts_SetNeedsToRestoreRosterFromMetaData(true);
    if (opening.runsWithoutFile)
        _state->flags.readOnly = true;
    _state->holdsSharedStore = !opening.isTemporaryCopy;
    setManagedObjectContext(opening.context, true);
    return opening.context;
}

void ZRRoster::logPersistentStoreTracerFailureWithMessage(std::string_view message, const Error& error)
{
    ZRMessageTracer tracer;
    tracer.subdomain = "addStoreToRosterPSC";
    tracer.success = false;
    tracer.signature = fmt::format("Error Domain={}, Code={}", error.domain, error.code);
    tracer.message = std::string(message);
    tracer.log();
}

void ZRRoster::nts_SetNeedsToRestoreRosterFromMetaData(bool needs)
{
    _state->flags.restoreFromMetaData = needs;
}

void ZRRoster::markZRStoreImportCompleted()
{
    _state->flags.importMe = _state->flags.importTips = false;
    auto* const coordinator = storeCoordinator();
    auto* const store = coordinator ? coordinator->firstStore() : nullptr;
    const auto metadata = coordinator ? coordinator->metadata(store) : Error{};
    if (!metadata)
        return platform::log(fmt::format("cannot mark the import: {}", metadata.error().text));
    if (const auto marked = coordinator->setMetadata(store, withEntry(*metadata, importCompletedKey, 1));
        !marked)
        platform::log(fmt::format("cannot mark the import: {}", marked.error().text));
}

Ref<ZRManagedObjectContext> ZRRoster::nts_mailRecentsManagedObjectContext()
{
    if (!_state->mailRecentsContext && ZRServices::registered().mailRecentsContext)
        _state->mailRecentsContext = ZRServices::registered().mailRecentsContext();
    return _state->mailRecentsContext;
}

objectstore::StoreCoordinator* ZRRoster::storeCoordinator()
{
    const auto context = managedObjectContext();
    return context ? context->coordinator().get() : nullptr;
}

void ZRRoster::setManagedObjectContext(Ref<ZRManagedObjectContext> context)
{
    setManagedObjectContext(std::move(context), false);
}

void ZRRoster::setManagedObjectContext(Ref<ZRManagedObjectContext> context, bool takingOwnership)
{
    if (context) {
        context->setMergePolicy(objectstore::MergePolicy::memoryWins);
        if (takingOwnership)
            context->setOwningRoster(this);
    }
    auto coordinator = context ? context->coordinator() : nullptr;
    const platform::Lock guard(_state->monitor);
    _state->ownsContext = takingOwnership;
    _state->coordinator = std::move(coordinator);
    _state->context = std::move(context);
    observeContext();
}

bool ZRRoster::isSharedInstanceOrClone()
{
    if (isSharedInstance())
        return true;
    const auto shared = sharedRoster();
    const auto mine = managedObjectContext();
    const auto theirs = shared ? shared->managedObjectContext() : nullptr;
    return mine && theirs && mine->zrHasCommonStoreWithContext(*theirs);
}

bool ZRRoster::isMemoryBacked()
{
    const auto context = managedObjectContext();
    return context && context->isMemoryBacked();
}

bool ZRRoster::isAggregate()
{
    const auto context = managedObjectContext();
    return context && !context->owningRoster();
}

bool ZRRoster::_isReadOnly() { return _isReadOnlyIgnoresInert(false); }

bool ZRRoster::_isReadOnlyIgnoresInert(bool ignoresInert)
{
    return _state->flags.readOnly || (!ignoresInert && isInert() && !isSharedInstance());
}
