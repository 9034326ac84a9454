// Where a process that must not write gets a store that it can complete: a copy that goes with the process.
#pragma once

#include "platform/value/Error.h"

#include <string>

/// Copies of databases for looking back: a store of an older form is completed in a copy, and the original
/// stays as it is.
///
/// Ownership: class-level operations; the copies are removed when the process ends.
/// Threads:   any.
/// Errors:    as answered; on one nothing is left behind.
class ZRHindsightTempFileHelper {
public:
    /// A consistent copy of the database, with what its write-ahead log holds, in a private directory of its
    /// own. Answers the path of the copy, which has the name of the original.
    static platform::Result<std::string> temporaryDatabaseUrlByCopyingDatabaseAtPath(const std::string& path);
};
