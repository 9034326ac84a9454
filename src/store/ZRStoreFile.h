// The file under a roster, before anything is opened: whether it is there, and whether this user may write
// it.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGlobalLock.h"

#include <string>
#include <sys/types.h>

class ZRRoster;

/// Whether a roster's store lies in the directory: opening that roster makes none.
ZR_EXPORT bool zrHasStoreFile(const std::string& directory);

/// 0 when the calling process may read and write a file of that mode, owner and group, -1 when not.
///
/// The rules are older than most files they judge, and programs rely on them: a mode with any execute bit
/// always passes; the owner's, group's or others' two bits decide otherwise; supplementary groups do not
/// count.
int _checkForReadWriteAccess(mode_t mode, uid_t owner, gid_t group);

/// Gives a new roster its directory, which is made where it is missing, and finds out what opening will have
/// to do. False when the store's path is a directory.
bool nts_InitRosterWithDatabaseDirectory(ZRRoster& roster, const std::string& directory) ZR_NTS;

/// Looks whether the store file can be written, and obeys the marker file that asks for a rebuild. The file
/// lock is held.
void nts_OpenContactManager(ZRRoster& roster) ZR_NTS;
