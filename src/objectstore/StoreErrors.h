// What can go wrong with a store, as codes; and what a caller's mistake with an object raises.
#pragma once

#include "platform/value/Error.h"

#include <stdexcept>
#include <string>

namespace objectstore {

inline constexpr char kStoreErrorDomain[] = "ObjectStore";

/// The codes of errors in the domain "ObjectStore".
enum class StoreFault : long {
    /// Anything SQLite refuses that has no code of its own here; the text says what.
    internal = 1,
    /// Another process held the lock for longer than the time-out. Nothing was changed; try again.
    busy = 2,
    diskFull = 3,
    noMemory = 4,
    noDescriptors = 5,
    /// A row violates a unique index.
    constraint = 6,
    /// The file was removed or another put in its place while the store was open. Nothing was written.
    replaced = 7,
    /// The coordinator has no store to answer with, or not that one.
    noStore = 8,
    /// A write or a sync of the file failed. Nothing or everything of it may be there; opening again tells.
    writeFailed = 9,
    /// Used in a child process that was forked while the store was open.
    foreignProcess = 10,
    /// A read of the file itself failed.
    readFailed = 256,
    /// Not a database, or one that is malformed or cut off.
    corrupt = 259,
    /// The file or its directory may not be read or written.
    notPermitted = 513,
    /// A database, but not of a model that is known here.
    unknownModel = 134100,
    /// An older model whose missing columns and tables could not be added. Nothing was changed.
    migrationFailed = 134110,
    /// Reserved for callers that compare with them; no operation answers these.
    saveConflict = 134020,
    incompatibleHash = 134130,
};

platform::Error storeError(StoreFault fault, std::string text);
inline bool isFault(const platform::Error& error, StoreFault fault)
{
    return error.domain == kStoreErrorDomain && error.code == static_cast<long>(fault);
}

/// The row behind an object is gone: another context or process deleted it, or the object has no store.
class InaccessibleObject : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The object was in a file that is gone, or that another one replaced; the Error has StoreFault::replaced.
class ObjectOfReplacedStore final : public InaccessibleObject {
public:
    explicit ObjectOfReplacedStore(platform::Error error);
    const platform::Error& error() const { return _error; }

private:
    platform::Error _error;
};

/// A key that the entity does not have, or a value that its slot cannot hold.
class InvalidKey : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

/// The store could not be read where the answer has no room for an Error: while a fault was filled.
class StoreFailure : public std::runtime_error {
public:
    explicit StoreFailure(platform::Error error);
    const platform::Error& error() const { return _error; }

private:
    platform::Error _error;
};

} // namespace objectstore
