// How a roster stands among the processes of its user: locks, versions, holders, notices, sync.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Error.h"
#include "platform/value/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class ZRRoster;

/// What people who look after a roster are shown. It is the moment of asking, and may be old when it is read.
///
/// Ownership: a plain value.
/// Threads:   like any plain value.
/// Errors:    what cannot be found out is left empty, or says why in a text.
struct ZRRosterStanding {
    struct Process {
        std::int64_t id = 0;
        /// As the kernel has it; empty for one that has ended.
        std::string name;
    };

    /// The lock of the directory between processes.
    struct FileLock {
        bool isHeld = false;
        /// Who holds it, or left the marker; absent when that is not written there.
        std::optional<Process> process;
        /// How long ago, in seconds, the marker of a writer was touched; absent without a marker. One that
        /// nobody holds was left by a process that was killed: the next writer takes it over.
        std::optional<double> markerAge;

        bool hasStaleMarker() const { return !isHeld && markerAge; }
    };

    struct Versions {
        /// The number of the store's last commit, of any process.
        std::int64_t commit = 0;
        std::string storeIdentifier;
        /// The hash of the schema of the file, and the number that its metadata has.
        std::string modelHash;
        double database = 0;
        /// The locale and ICU version of the sorting keys in the store, and whether they are this process's:
        /// if not, it sorts in memory.
        std::string collation;
        bool isCollationOurs = false;
        /// Which version of the system wrote the store last; empty when none says so.
        std::string lastSaved;
        std::string roster, sqlite, icu;
    };

    /// Processes, other than this one, that have the store file open.
    struct Holders {
        std::vector<Process> processes;
        /// Processes of this user whose files the kernel does not show, such as privileged ones. Those of
        /// other users are never shown, and cannot open a private file either, unless they are the system's.
        std::size_t unseen = 0;
        /// Why nobody can be seen; empty when the kernel tells.
        std::string problem;
    };

    /// The file through which processes tell each other of changes.
    struct Notices {
        std::string file;
        /// Why nothing is heard; empty when all is well.
        std::string problem;
    };

    struct Sync {
        /// False when saves start none: the preference "ZRDisableSync", or the process's own choice.
        bool isEnabled = false;
        /// The program; empty when it is not there.
        std::string tool;
        std::optional<platform::Date> next, last;
    };

    Versions versions;
    Holders holders;
    Notices notices;
    Sync sync;
};

/// Who holds the file lock with that marker (`ZRRoster::rosterLockFile`). It waits for nobody and makes no
/// file, so that it can be asked before the roster is opened, which may wait.
ZR_EXPORT platform::Result<ZRRosterStanding::FileLock> zrStandingOfFileLock(const std::string& lockFile);

/// Everything else, of an open roster on a directory. Changes nothing.
ZR_EXPORT ZRRosterStanding zrStandingOfRoster(ZRRoster& roster);
