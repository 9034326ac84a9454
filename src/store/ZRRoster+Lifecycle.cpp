// How the rosters of a process come to be: the shared one, others on directories, and those in memory.
#include "core/ZRFailure.h"
#include "core/ZRGlobalLock.h"
#include "core/ZRLog.h"
#include "core/ZRProfile.h"
#include "objectstore/PersistentStore.h"
#include "platform/files/Files.h"
#include "platform/files/PathUtils.h"
#include "platform/files/Trash.h"
#include "platform/files/UserDefaults.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/processes/Helper.h"
#include "platform/processes/NoticeLog.h"
#include "platform/run/Clock.h"
#include "platform/run/Dispatch.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"
#include "store/ZRFileLock.h"
#include "store/ZRInitialImports.h"
#include "store/ZRModelTable.h"
#include "store/ZRRecordConstraint.h"
#include "store/ZRRosterState.h"
#include "store/ZRServices.h"
#include "store/ZRStoreFile.h"

#include <fmt/format.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <unistd.h>

using platform::Ref;
using platform::Value;

namespace {

/// Told between processes by whoever sets the picture of the user, and by us within ours.
constexpr char kUserPictureDidChange[] = "org.quillon.UserPictureDidChangeNotification";

/// What the process knows of its one shared roster. Never destroyed: it outlives every exit handler.
struct Process {
    std::atomic<bool> isInited = false;
    // Under the global lock.
    Ref<ZRRoster> shared;
    bool wasTried = false;
    std::set<std::string> importedDirectories;
    std::string openingReport;
    platform::MainQueue::Token housekeeping;
    platform::Subscription userPicture;
    std::atomic<int> createEmpty = -1;
    std::atomic<bool> isInert = false;
};

Process& process()
{
    static auto* const the = new Process;
    return *the;
}

void _ZRExitFunction()
{
    constexpr double patience = 2.0;
    if (const auto& cancel = ZRServices::registered().cancelBackgroundWork; cancel && process().shared)
        cancel(patience);
    ZRProfile::write();
}

/// Recycles stores of models that nobody knows any more; corrupt ones stay, for who wants to rescue them.
void recycleIncompatibleStores(const std::string& storeFile)
{
    for (int n = 1;; ++n) {
        const std::string aside = fmt::format("{}.{}.incompatible", storeFile, n);
        if (!platform::fileExists(aside) || !platform::moveToTrash(aside))
            return;
        for (const char* companion : {"-wal", "-shm"})
            if (platform::fileExists(aside + companion))
                static_cast<void>(platform::moveToTrash(aside + companion));
    }
}

void doHousekeeping(const std::string& directory, const std::string& storeFile)
{
    constexpr double oneDay = 86400;
    const auto preferences = ZRUserDefaults::rosterPreferences();
    const bool isVerbose = preferences->objectForKey("ZRMetadataValidationLogLevel").asInteger() > 0;
    const Value last = preferences->objectForKey("ZRMetadataLastOilChange");
    const double now = platform::Clock::current().now();
    if (isVerbose)
        platform::log(fmt::format("Metadata last validated {}", last.description()));
    if (last.isDate() && now - last.asDate().seconds <= oneDay
        && platform::isDirectory(directory + "/Metadata"))
        return recycleIncompatibleStores(storeFile);
    if (isVerbose)
        platform::log("Metadata needs validated");
    preferences->setObject(Value(platform::Date{now}), "ZRMetadataLastOilChange");
    ZRRoster::_launchOrWaitForDaemon();
    recycleIncompatibleStores(storeFile);
}

void scheduleHousekeeping(ZRRoster& roster)
{
    constexpr double delay = 5.0;
    const std::string directory = roster.databaseDirectory(),
                      storeFile = roster.rosterObjectStoreDatabaseFile();
    process().housekeeping = platform::MainQueue::shared().after(
        delay, [=] { zr_dispatch_concurrent([=] { doHousekeeping(directory, storeFile); }); });
}

/// Unless a host has a carrier of its own.
void useNoticesOfOtherProcesses()
{
    using Center = platform::DistributedNotificationCenter;
    if (!Center::isInstalled())
        Center::install(platform::userNoticeLog());
}

bool isFileLockVerbose() { return platform::UserDefaults::standard().boolForKey("ZRFileLockDebug"); }

/// What the shared roster has beyond any other: the default directory, preferences, the other processes.
bool nts_InitDefaultContactManager(ZRRoster& roster) ZR_NTS
{
    if (!nts_InitRosterWithDatabaseDirectory(roster, ZRRoster::rosterDirectory()))
        return false;
    roster.localizedDefaults();
    useNoticesOfOtherProcesses();
    ZRRosterAccess::observeOtherProcesses(roster);
    ZRInitFileLock(ZRRoster::zrFileLock(), roster.rosterLockFile(), 0, isFileLockVerbose());
    return true;
}

void giveUpFileLock(int code, ZRSourcePlace where = ZRSourcePlace::current())
{
    auto& lock = ZRRoster::zrFileLock();
    platform::log(
        fmt::format("-[ZRRoster sharedRoster] Can't ZRACQUIRE_FILE_LOCK {}:{}", where.file, where.line));
    noteOpeningProblem(platform::fileError(lock.pathN, "cannot be locked", code).text);
    ZRFreeFileLock(lock);
}

} // namespace

ZRServices& ZRServices::registered()
{
    static auto* const services = new ZRServices;
    return *services;
}

Ref<ZRRoster> ZRRosterAccess::make(ZRRoster::State::Kind kind)
{
    auto roster = Ref<ZRRoster>::adopt(new ZRRoster);
    roster->_state->kind = kind;
    return roster;
}

ZRRoster::ZRRoster() : _state(std::make_unique<State>()) { }

ZRRoster::~ZRRoster()
{
    forgetMidnightTimer(*this);
    _state->observers.clear();
    _state->didSave.cancel();
    _state->didCatchUp.cancel();
    _state->didLoseStore.cancel();
    if (_state->ownsContext && _state->context)
        _state->context->setOwningRoster(nullptr);
    _state->context = nullptr;
    _state->coordinator = nullptr;
    if (_state->holdsSharedStore)
        nts_closeStore(rosterObjectStoreDatabaseFile());
}

void ZRRoster::init()
{
    throw std::logic_error("-[ZRRoster init], there can be only one ZRRoster instance in an application");
}

Ref<ZRRoster> ZRRoster::sharedRoster()
{
    if (process().isInited.load(std::memory_order_acquire))
        return process().shared;
    const ZRGlobalLockScope lock;
    nts_CreateSharedRoster();
    return process().shared;
}

void ZRRoster::nts_CreateSharedRoster()
{
    if (process().isInited.load(std::memory_order_relaxed))
        return;
    if (const auto roster = nts_SharedRoster()) {
        process().isInited.store(true, std::memory_order_release);
        process().userPicture =
            platform::DistributedNotificationCenter::shared()->subscribe(kUserPictureDidChange, std::nullopt,
                [roster](const auto&) { roster->rebroadcastUserPictureDidChange(); });
        scheduleHousekeeping(*roster);
    }
}

void ZRRoster::rebroadcastUserPictureDidChange()
{
    platform::NotificationCenter::shared().postOnMain(
        {kUserPictureDidChange, Ref<const platform::Object>(this), Value()});
}

// The thread may wait for the port: no caller does, who perhaps holds the lock.
void ZRRoster::_launchOrWaitForDaemon()
{
    if (const auto& instead = ZRServices::registered().launchOrWaitForDaemon)
        return instead();
    if (std::string_view(program_invocation_short_name) == "RosterManager")
        return;
    zr_dispatch_concurrent([] {
        if (!platform::tellHelper())
            platform::log(
                fmt::format("Error, could not create MachMessagePort for {}", platform::kHelperPort));
    });
}

Ref<ZRRoster> ZRRoster::nts_SharedRoster()
{
    if (process().shared || process().wasTried)
        return process().shared;
    process().wasTried = true;
    ZRReadProcessSwitches();
    auto roster = ZRRosterAccess::make(State::Kind::shared);
    if (!nts_InitDefaultContactManager(*roster))
        return nullptr;
    std::atexit(_ZRExitFunction);

    const ZRFileLockScope fileLock(&zrFileLock());
    if (!fileLock.isHeld()) {
        giveUpFileLock(errno);
        return nullptr;
    }
    nts_OpenContactManager(*roster);
    if (!roster->managedObjectContext()) {
        platform::log("Could not initialize the shared roster");
        return nullptr;
    }
    process().shared = roster;
    nts_DoInitialImports(*roster);
    return roster;
}

bool ZRRoster::nts_hasSharedInstance()
{
    if (!process().isInited.load(std::memory_order_acquire))
        static_cast<void>(sharedRoster());
    return bool(process().shared);
}

bool nts_shouldImportInto(const std::string& directory)
{
    return process().importedDirectories.insert(directory).second;
}

Ref<ZRRoster> ZRRoster::rosterWithDatabaseDirectory(const std::string& directory, bool doInitialImports)
{
    const auto shared = sharedRoster();
    return shared ? locked(*shared, ZRAccess::write,
               [&]() ZR_NTS { return nts_RosterWithDatabaseDirectory(directory, doInitialImports); })
                  : nullptr;
}

Ref<ZRRoster> ZRRoster::nts_RosterWithDatabaseDirectory(const std::string& directory, bool doInitialImports)
{
    if (!nts_SharedRoster())
        return nullptr;
    auto roster = ZRRosterAccess::make(State::Kind::onDirectory);
    if (!nts_InitRosterWithDatabaseDirectory(*roster, platform::standardizedPath(directory)))
        return nullptr;
    // Held where it can be: a directory that this user may only read is opened without.
    const ZRFileLockScope fileLock(&ZRFileLockForPath(roster->rosterLockFile()));
    nts_OpenContactManager(*roster);
    if (!roster->managedObjectContext())
        return nullptr;
    if (doInitialImports)
        nts_DoInitialImports(*roster);
    else
        nts_RestoreFromMetaDataIfNeeded(*roster);
    return roster;
}

Ref<ZRRoster> ZRRoster::parallelUniverseRoster()
{
    auto roster = ZRRosterAccess::make(State::Kind::parallel);
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        auto& state = ZRRosterAccess::state(*roster);
        state.directory = _state->directory;
        state.imagesDirectory = rosterImagesDirectory();
        state.flags.readOnly = _state->flags.readOnly;
        {
            const platform::Lock guard(_state->monitor);
            state.constraints = _state->constraints;
        }
        const auto mine = managedObjectContext();
        auto context = platform::makeRef<ZRManagedObjectContext>(mine->coordinator());
        context->setWritesCollationKeys(mine->writesCollationKeys());
        roster->setManagedObjectContext(std::move(context), true);
        return roster;
    });
}

Ref<ZRRoster> ZRRoster::emptyMemoryBackedRoster()
{
    auto roster = ZRRosterAccess::make(State::Kind::inMemory);
    const auto coordinator = objectstore::StoreCoordinator::make(rosterModel());
    if (const auto store = coordinator->addStore(objectstore::StoreType::inMemory, ""); !store) {
        platform::log(fmt::format("Error creating memory-backed roster: {}", store.error().text));
        return nullptr;
    }
    roster->setRosterImagesDirectory(rosterTempImagesDirectory());
    auto context = platform::makeRef<ZRManagedObjectContext>(coordinator);
    context->setWritesCollationKeys(true);
    roster->setManagedObjectContext(std::move(context), true);
    return roster;
}

std::string ZRRoster::openingReport() { return process().openingReport; }
bool ZRRoster::isSharedInstance() const { return this == process().shared.get(); }

std::string ZRRoster::notificationID() const
{
    return fmt::format("{}-{:x}", _state->directory, reinterpret_cast<std::uintptr_t>(this) & 0xffff);
}

void noteOpeningProblem(const std::string& text)
{
    auto& report = process().openingReport;
    report += (report.empty() ? "" : "; ") + text;
}

bool ZRRoster::shouldCreateEmptyDatabase() { return process().createEmpty == 1; }
void ZRRoster::setShouldCreateEmptyDatabase(bool empty) { process().createEmpty = empty ? 1 : 0; }
bool ZRRoster::isInert() { return process().isInert; }
void ZRRoster::setIsInert(bool inert) { process().isInert = inert; }
