// How transactions begin and end, and which Error a refusal is.
#include "objectstore/Transaction.h"

#include "objectstore/StoreErrors.h"

#include <fmt/format.h>

#include <sqlite3.h>

#include <cerrno>

namespace objectstore {

namespace {

void refuseInChild(const StoreState& store)
{
    if (store.mark.isForeign())
        throw StoreFailure(storeError(StoreFault::foreignProcess,
            fmt::format("{}: opened before this process was forked", store.path)));
}

std::int64_t readCommitNumber(StoreState& store)
{
    return store.connection->integer("SELECT commitNumber FROM store_state WHERE id = 1");
}

/// A short command comes to most pages once, and reads them faster into the same little memory than into ever
/// more. Who saves, or reads again and again, comes back to them.
constexpr int kManyReadings = 100;

void keepMorePages(StoreState& store)
{
    if (store.readings >= 0)
        store.connection->execute("PRAGMA cache_size = -16000");
    store.readings = -1;
}

/// Who saves again and again, as an import does, writes the same pages of the indexes each time: they go to
/// the database once for many saves.
void keepLongLog(StoreState& store)
{
    if (store.writings++ == 1)
        store.connection->execute("PRAGMA wal_autocheckpoint = 8000");
}

} // namespace

void refuseReplaced(const StoreState& store)
{
    if (!store.isReplaced())
        return;
    FileIdentity now;
    const std::string_view what =
        identityOf(store.path, now) ? "another file stands in its place" : "the file is gone";
    throw StoreFailure(storeError(StoreFault::replaced, fmt::format("{}: {}", store.path, what)));
}

ReadTransaction::ReadTransaction(StoreState& store) : _store(store)
{
    if (store.transactionDepth == 0) {
        refuseInChild(store);
        refuseReplaced(store);
        if (store.readings >= 0 && ++store.readings == kManyReadings)
            keepMorePages(store);
        store.connection->prepared("BEGIN").run();
        try {
            store.commitNumber = readCommitNumber(store);
        } catch (...) {
            if (store.connection->isInTransaction())
                sqlite3_exec(store.connection->native(), "ROLLBACK", nullptr, nullptr, nullptr);
            throw;
        }
    }
    ++store.transactionDepth;
}

ReadTransaction::~ReadTransaction()
{
    if (--_store.transactionDepth > 0 || !_store.connection->isInTransaction())
        return;
    // Ending what only read cannot lose anything, so a failure is of no interest.
    if (sqlite3_exec(_store.connection->native(), "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK)
        sqlite3_exec(_store.connection->native(), "ROLLBACK", nullptr, nullptr, nullptr);
}

WriteTransaction::WriteTransaction(StoreState& store) : _store(store)
{
    if (store.transactionDepth != 0)
        throw StoreFailure(storeError(
            StoreFault::internal, fmt::format("{}: a write within another transaction", store.path)));
    refuseInChild(store);
    refuseReplaced(store);
    keepMorePages(store);
    keepLongLog(store);
    store.connection->prepared("BEGIN IMMEDIATE").run();
    store.transactionDepth = 1;
    store.isWriting = true;
    try {
        store.commitNumber = readCommitNumber(store);
    } catch (...) {
        rollBack();
        throw;
    }
}

WriteTransaction::~WriteTransaction()
{
    if (_isOpen)
        rollBack();
}

void WriteTransaction::commit()
{
    _store.connection->prepared("COMMIT").run();
    _isOpen = false;
    _store.transactionDepth = 0;
    _store.isWriting = false;
}

void WriteTransaction::rollBack() noexcept
{
    if (_store.connection->isInTransaction())
        sqlite3_exec(_store.connection->native(), "ROLLBACK", nullptr, nullptr, nullptr);
    _isOpen = false;
    _store.transactionDepth = 0;
    _store.isWriting = false;
}

namespace {

StoreFault faultOfRefusedOpening(int systemError)
{
    switch (systemError) {
    case EACCES:
    case EPERM:
    case EROFS:
        return StoreFault::notPermitted;
    case EMFILE:
    case ENFILE:
        return StoreFault::noDescriptors;
    case ENOSPC:
    case EDQUOT:
        return StoreFault::diskFull;
    case ENOMEM:
        return StoreFault::noMemory;
    default:
        return StoreFault::internal;
    }
}

StoreFault faultOfInputOutput(const sqlite::Failure& failure)
{
    switch (failure.code()) {
    case SQLITE_IOERR_READ:
    case SQLITE_IOERR_SHORT_READ:
        return StoreFault::readFailed;
    case SQLITE_IOERR_NOMEM:
        return StoreFault::noMemory;
    case SQLITE_IOERR_WRITE:
    case SQLITE_IOERR_FSYNC:
    case SQLITE_IOERR_DIR_FSYNC:
    case SQLITE_IOERR_TRUNCATE:
        return failure.systemError() == ENOSPC || failure.systemError() == EDQUOT ? StoreFault::diskFull
                                                                                  : StoreFault::writeFailed;
    default: {
        const StoreFault fault = faultOfRefusedOpening(failure.systemError());
        return fault == StoreFault::internal ? StoreFault::writeFailed : fault;
    }
    }
}

StoreFault faultOf(const sqlite::Failure& failure)
{
    switch (failure.primaryCode()) {
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
        return StoreFault::corrupt;
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_READONLY:
        return StoreFault::notPermitted;
    case SQLITE_CANTOPEN:
        return faultOfRefusedOpening(failure.systemError());
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return StoreFault::busy;
    case SQLITE_FULL:
        return StoreFault::diskFull;
    case SQLITE_NOMEM:
        return StoreFault::noMemory;
    case SQLITE_CONSTRAINT:
        return StoreFault::constraint;
    case SQLITE_IOERR:
        return faultOfInputOutput(failure);
    default:
        return StoreFault::internal;
    }
}

} // namespace

platform::Error errorOf(const sqlite::Failure& failure, std::string_view path)
{
    return storeError(faultOf(failure), fmt::format("{}: {}", path, failure.what()));
}

} // namespace objectstore
