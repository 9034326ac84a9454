// How a path becomes an open store, and what stands in the way.
#include "objectstore/StoreOpening.h"

#include "objectstore/Migration.h"
#include "objectstore/PredicateSQL.h"
#include "objectstore/Transaction.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>
#include <sqlite3.h>

#include <cerrno>
#include <cstring>
#include <random>

namespace objectstore {

namespace {

[[noreturn]] void refuse(StoreFault fault, const std::string& path, std::string_view why)
{
    throw StoreFailure(storeError(fault, fmt::format("{}: {}", path, why)));
}

enum class Found { nothing, emptyFile, something };

/// Looks at the path without opening it: a descriptor of ours on the file would drop SQLite's locks.
Found lookAt(const std::string& path)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT)
            return Found::nothing;
        refuse(errno == EACCES ? StoreFault::notPermitted : StoreFault::internal, path, std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode))
        refuse(StoreFault::corrupt, path, "not a file");
    if (status.st_size > 0)
        return Found::something;
    struct stat log;
    if (stat((path + "-wal").c_str(), &log) == 0 && log.st_size > 0)
        refuse(StoreFault::corrupt, path, "cut to nothing, while its write-ahead log holds data");
    return Found::emptyFile;
}

/// Makes the file private before SQLite, which then gives its companions the same mode, opens it.
void makeFile(const std::string& path)
{
    const int descriptor = open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
    if (descriptor >= 0) {
        close(descriptor);
        return;
    }
    switch (errno) {
    case EEXIST:
        return;
    case EACCES:
    case EPERM:
    case EROFS:
        refuse(StoreFault::notPermitted, path, std::strerror(errno));
    case EMFILE:
    case ENFILE:
        refuse(StoreFault::noDescriptors, path, std::strerror(errno));
    case ENOSPC:
    case EDQUOT:
        refuse(StoreFault::diskFull, path, std::strerror(errno));
    case ENOMEM:
        refuse(StoreFault::noMemory, path, std::strerror(errno));
    default:
        refuse(StoreFault::internal, path, std::strerror(errno));
    }
}

std::string newIdentifier()
{
    std::random_device device;
    std::string text;
    for (int i = 0; i < 4; ++i)
        text += fmt::format("{:08X}", device());
    return text;
}

bool hasEngineTables(StoreState& store)
{
    return store.connection->integer("SELECT count(*) FROM sqlite_schema WHERE name = 'store_state'") > 0;
}

bool hasAnyTable(StoreState& store)
{
    return store.connection->integer("SELECT count(*) FROM sqlite_schema") > 0;
}

void create(StoreState& store, const Model& model)
{
    createSchema(*store.connection, model);
    store.loadEntityNumbers(model, true);
    writeMeta(store, kMetaSchema, model.schemaText());
    writeMeta(store, kMetaModelHash, model.schemaHash());
    writeMeta(store, kMetaIdentifier, newIdentifier());
}

/// SQLite reads what a file lacks of its last page as zeros, so a file that was cut inside a page is told
/// here. While a log lies beside it, that page may be on its way.
void refuseCutPage(StoreState& store)
{
    struct stat file;
    struct stat log;
    if (stat(store.path.c_str(), &file) != 0
        || (stat((store.path + "-wal").c_str(), &log) == 0 && log.st_size > 0))
        return;
    const std::int64_t pageSize = store.connection->integer("PRAGMA page_size");
    if (pageSize > 0 && file.st_size % pageSize != 0)
        refuse(StoreFault::corrupt, store.path, "cut off inside a page");
}

/// Says what the file is before anything is written to it: nobody's database is touched but our own.
void refuseForeign(StoreState& store, const Model& model, const StoreOptions& options)
{
    if (!hasAnyTable(store)) {
        if (store.isReadOnly)
            refuse(StoreFault::unknownModel, store.path, "an empty database, opened for reading only");
        return;
    }
    if (!hasEngineTables(store))
        refuse(StoreFault::unknownModel, store.path, "a database, but no store");
    const std::string stored = readMeta(store, kMetaSchema);
    if (!isEarlierSchema(stored, model.schemaText()))
        refuse(StoreFault::unknownModel, store.path, "a store of another model");
    if (stored != model.schemaText() && (store.isReadOnly || !options.migratesAutomatically))
        refuse(StoreFault::unknownModel, store.path, "a store of an older model");
}

/// In a write transaction: another process may have come first.
void createOrMigrate(StoreState& store, const Model& model, const StoreOptions& options)
{
    // A write transaction reads the commit number, which a new database does not have yet.
    store.connection->prepared("BEGIN IMMEDIATE").run();
    try {
        if (!hasAnyTable(store)) {
            create(store, model);
        } else if (hasEngineTables(store)) {
            refuseForeign(store, model, options);
            const std::string stored = readMeta(store, kMetaSchema);
            if (stored != model.schemaText()) {
                addMissingSchema(store, model, stored);
                store.loadEntityNumbers(model, true);
                writeMeta(store, kMetaSchema, model.schemaText());
                writeMeta(store, kMetaModelHash, model.schemaHash());
            }
        } else {
            refuseForeign(store, model, options);
        }
        store.connection->prepared("COMMIT").run();
    } catch (...) {
        if (store.connection->isInTransaction())
            sqlite3_exec(store.connection->native(), "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

/// True when the store is there and is of exactly this model.
bool fits(StoreState& store, const Model& model)
{
    return hasEngineTables(store) && readMeta(store, kMetaModelHash) == model.schemaHash()
        && readMeta(store, kMetaSchema) == model.schemaText();
}

void configure(StoreState& store)
{
    auto& connection = *store.connection;
    connection.execute("PRAGMA temp_store = MEMORY");
    connection.execute("PRAGMA cache_size = -2000");
    connection.execute("PRAGMA foreign_keys = OFF");
    connection.execute("PRAGMA trusted_schema = OFF");
    if (const int code = registerPredicateFunctions(connection.native()); code != SQLITE_OK)
        sqlite::raise(connection.native(), code, "functions of predicates");
}

} // namespace

std::string readMeta(StoreState& store, std::string_view name)
{
    sqlite::Use find(store.connection->prepared("SELECT value FROM store_meta WHERE name = ?"));
    find->bindText(1, name);
    return find->step() ? std::string(find->bytes(0)) : std::string();
}

void writeMeta(StoreState& store, std::string_view name, std::string_view value)
{
    sqlite::Use write(
        store.connection->prepared("INSERT OR REPLACE INTO store_meta(name, value) VALUES(?, ?)"));
    write->bindText(1, name).bindBytes(2, value).run();
}

std::unique_ptr<StoreState> openStore(
    const Model& model, StoreType type, const std::string& path, const StoreOptions& options)
{
    using Access = sqlite::Connection::Access;
    const bool isInMemory = type == StoreType::inMemory;
    const Found found = isInMemory ? Found::nothing : lookAt(path);
    if (found == Found::nothing && !isInMemory) {
        if (options.isReadOnly)
            refuse(StoreFault::noStore, path, "no such file");
        makeFile(path);
    }
    try {
        auto store =
            std::make_unique<StoreState>(std::make_unique<sqlite::Connection>(isInMemory ? ":memory:" : path,
                options.isReadOnly ? Access::readOnly : Access::readWrite, options.vfs, options.busyTimeout));
        store->path = path;
        store->isInMemory = isInMemory;
        store->isReadOnly = options.isReadOnly;
        if (!isInMemory && !identityOf(path, store->identity))
            refuse(StoreFault::replaced, path, "the file went away while it was opened");
        configure(*store);
        if (!isInMemory)
            refuseCutPage(*store);
        refuseForeign(*store, model, options);
        if (!isInMemory && !options.isReadOnly) {
            if (sqlite3_db_readonly(store->connection->native(), "main") == 1)
                refuse(StoreFault::notPermitted, path, "may not be written");
            store->connection->execute("PRAGMA journal_mode = WAL");
            store->connection->execute("PRAGMA synchronous = FULL");
        }
        if (!fits(*store, model))
            createOrMigrate(*store, model, options);
        store->loadEntityNumbers(model, false);
        return store;
    } catch (...) {
        if (found == Found::nothing && !isInMemory) {
            FileIdentity identity;
            struct stat status;
            // Only what was made here, and is still as empty as it was made.
            if (identityOf(path, identity) && stat(path.c_str(), &status) == 0 && status.st_size == 0)
                unlink(path.c_str());
        }
        throw;
    }
}

} // namespace objectstore
