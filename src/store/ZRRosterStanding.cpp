// How a roster stands among the processes of its user: locks, versions, holders, notices, sync.
#include "store/ZRRosterStanding.h"

#include "core/ZRFrameworkBundle.h"
#include "core/ZRInfo.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/StoreFacts.h"
#include "platform/files/Directories.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/processes/NoticeLog.h"
#include "platform/run/Clock.h"
#include "platform/text/Compare.h"
#include "store/ZRFileLock.h"
#include "store/ZRProcessesAround.h"
#include "store/ZRRoster.h"
#include "store/ZRSyncManager.h"

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unicode/uversion.h>
#include <unistd.h>

using platform::Value;

namespace {

using FileLock = ZRRosterStanding::FileLock;
using Versions = ZRRosterStanding::Versions;

/// The process whose number a lock file begins with; none in an empty or blank one.
std::optional<ZRRosterStanding::Process> writtenIn(const std::string& path)
{
    const auto text = platform::readFile(path);
    const long number = text ? std::strtol(text->c_str(), nullptr, 10) : 0;
    return number > 0 ? std::optional(zrProcessNumbered(number)) : std::nullopt;
}

/// Whether the kernel refuses to share the lock: somebody holds it.
platform::Result<bool> isLockedByKernel(const std::string& path)
{
    const platform::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file && errno == ENOENT)
        return false;
    if (!file)
        return platform::fileError(path, "cannot be read", errno);
    return flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

std::string icuVersion()
{
    UVersionInfo version{};
    u_getVersion(version);
    char text[U_MAX_VERSION_STRING_LENGTH] = "";
    u_versionToString(version, text);
    return text;
}

void readFacts(ZRRoster& roster, Versions& versions)
{
    auto* const coordinator = roster.storeCoordinator();
    auto* const store = coordinator ? coordinator->firstStore() : nullptr;
    if (!store)
        return;
    if (const auto facts = objectstore::factsOf(*coordinator, *store)) {
        versions.commit = facts->commitNumber;
        versions.modelHash = facts->modelHash;
        versions.storeIdentifier = facts->identifier;
    }
    if (const auto metadata = coordinator->metadata(store)) {
        versions.database = (*metadata)["ZRDatabaseVersion"].asReal();
        versions.collation = (*metadata)["ZRCollationVersion"].asText();
        versions.isCollationOurs = versions.collation == platform::collationVersion();
    }
}

Versions versionsOf(ZRRoster& roster) ZR_NTS
{
    Versions versions;
    readFacts(roster, versions);
    if (const auto info = roster.nts_Info())
        versions.lastSaved = info->nts_ValueForProperty("LastSavedVersion").asText();
    versions.roster = ZRFrameworkBundle().version();
    versions.sqlite = objectstore::sqliteVersion();
    versions.icu = icuVersion();
    return versions;
}

ZRRosterStanding::Notices noticesNow()
{
    const auto file = platform::userNoticeFile();
    if (!file)
        return {"", file.error().text};
    if (!platform::isPlainFile(*file))
        return {*file, "there is no such file"};
    if (access(file->c_str(), R_OK | W_OK) != 0)
        return {*file, platform::fileError(*file, "cannot be used", errno).text};
    return {*file, ""};
}

ZRRosterStanding::Sync syncNow()
{
    const Value last = ZRSyncManager::lastSyncDate();
    return {.isEnabled = !ZRRoster::shouldDisableSync(),
        .tool = ZRSyncManager::toolPath().value_or(""),
        .next = ZRSyncManager::sharedSyncManager().scheduledSyncDate(),
        .last = last.isDate() ? std::optional(last.asDate()) : std::nullopt};
}

} // namespace

platform::Result<FileLock> zrStandingOfFileLock(const std::string& lockFile)
{
    ZRFileLock lock;
    ZRInitFileLock(lock, lockFile, 0, false);
    const auto isLocked = isLockedByKernel(lock.pathN);
    if (!isLocked)
        return isLocked.error();
    FileLock standing;
    standing.isHeld = *isLocked;
    struct stat marker { };
    if (lstat(lock.path.c_str(), &marker) == 0) {
        const double touched = static_cast<double>(marker.st_mtim.tv_sec);
        standing.markerAge = platform::Clock::current().now() - touched;
        // Without kernel locks, an empty marker counts by its age alone.
        if (marker.st_size == 0 && *standing.markerAge < lock.timeout)
            standing.isHeld = true;
    }
    standing.process = writtenIn(*isLocked ? lock.pathN : lock.path);
    return standing;
}

ZRRosterStanding zrStandingOfRoster(ZRRoster& roster)
{
    const auto versions = locked(roster, ZRAccess::read, [&]() ZR_NTS { return versionsOf(roster); });
    return {.versions = versions,
        .holders = zrHoldersOfFile(roster.rosterDatabaseFile()),
        .notices = noticesNow(),
        .sync = syncNow()};
}
