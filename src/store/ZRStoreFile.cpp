// The file under a roster, before anything is opened.
#include "store/ZRStoreFile.h"

#include "core/ZRLog.h"
#include "platform/files/Files.h"
#include "platform/files/PathUtils.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Log.h"
#include "store/ZRRosterState.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::string_view importTipCards = "ZRImportTipCards";
constexpr mode_t privateDirectory = 0700;

bool hasBoth(mode_t mode, mode_t read, mode_t write) { return (mode & read) && (mode & write); }

/// Asks the file system without opening the file: closing a descriptor of it would drop the locks of SQLite.
bool isImmutable(const std::string& path)
{
    struct statx file { };
    return statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, 0, &file) == 0
        && (file.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
}

bool isReadOnly(const std::string& path)
{
    struct stat file { };
    return lstat(path.c_str(), &file) == 0
        && (isImmutable(path) || _checkForReadWriteAccess(file.st_mode, file.st_uid, file.st_gid) != 0);
}

void prepareForNewStore(ZRRosterFlags& flags, const std::string& directory, bool fileExists)
{
    const bool wantsSamples = !ZRRoster::shouldCreateEmptyDatabase();
    ZRUserDefaults::rosterPreferences()->setBool(wantsSamples, importTipCards);
    flags.importTips = wantsSamples;
    if (fileExists || !ZRPathUtils_MakeCompletePath(directory, privateDirectory))
        return;
    flags.importMe = wantsSamples;
    flags.needConversion = true;
}

} // namespace

int _checkForReadWriteAccess(mode_t mode, uid_t owner, gid_t group)
{
    if (mode & (S_IXUSR | S_IXGRP | S_IXOTH))
        return 0;
    if (geteuid() == owner)
        return hasBoth(mode, S_IRUSR, S_IWUSR) ? 0 : -1;
    if (getegid() == group)
        return hasBoth(mode, S_IRGRP, S_IWGRP) ? 0 : -1;
    // The supplementary groups are looked through only when the call for them fails, which leaves nothing to
    // find.
    return hasBoth(mode, S_IROTH, S_IWOTH) ? 0 : -1;
}

bool nts_InitRosterWithDatabaseDirectory(ZRRoster& roster, const std::string& directory)
{
    auto& state = ZRRosterAccess::state(roster);
    state.directory = directory;
    const std::string path = roster.rosterObjectStoreDatabaseFile();
    if (platform::isDirectory(path)) {
        platform::log("-[ZRRoster sharedRoster] Error: The Roster datafile is a directory!");
        noteOpeningProblem(path + " is a directory, not a roster");
        return false;
    }
    const bool fileExists = platform::fileExists(path);
    if (!fileExists || !ZRUserDefaults::rosterPreferences()->boolForKey(importTipCards))
        prepareForNewStore(state.flags, directory, fileExists);
    ZRRosterAccess::observeReverts(roster);
    ZRRosterAccess::observeOwnProcess(roster);
    return true;
}

void nts_OpenContactManager(ZRRoster& roster)
{
    auto& state = ZRRosterAccess::state(roster);
    const std::string path = roster.rosterObjectStoreDatabaseFile();
    state.flags.readOnly = isReadOnly(path);
    if (!platform::fileExists(roster.rosterSaveFile()))
        return;
    ZRDebugLog(
        "-[ZRRoster -nts_OpenContactManagerWithMode:cacheSchema:] save file exists, indicating you want to "
        "force rebuilding the database from metadata.");
    state.flags.restoreFromMetaData = true;
    for (const char* companion : {"", "-wal", "-shm"})
        if (unlink((path + companion).c_str()) != 0 && errno != ENOENT)
            std::perror("failed to remove data file (no data corruption detected)");
}
