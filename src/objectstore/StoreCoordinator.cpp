// How stores are added, removed, moved and described.
#include "objectstore/StoreCoordinator.h"

#include "objectstore/PersistentStore.h"
#include "objectstore/StoreOpening.h"
#include "objectstore/Transaction.h"
#include "platform/value/PropertyList.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

namespace objectstore {

PersistentStore::PersistentStore(StoreType type, std::string path, std::uint32_t number)
    : _type(type), _path(std::move(path)), _number(number)
{
}

PersistentStore::~PersistentStore() = default;

StoreCoordinator::StoreCoordinator(platform::Ref<const Model> model) : _model(std::move(model)) { }
StoreCoordinator::~StoreCoordinator() = default;

platform::Ref<StoreCoordinator> StoreCoordinator::make(platform::Ref<const Model> model)
{
    return platform::makeRef<StoreCoordinator>(std::move(model));
}

namespace {

using platform::Result;
using platform::Value;

std::uint32_t nextNumber()
{
    static std::atomic<std::uint32_t> last = 0;
    return ++last;
}

StoreState& requireOpen(PersistentStore* store)
{
    if (!store || !store->isOpen())
        throw StoreFailure(storeError(StoreFault::noStore, "the store is not open"));
    return store->state();
}

/// Copies page by page into a database that is empty.
void backUp(sqlite::Connection& from, sqlite::Connection& to)
{
    sqlite3_backup* backup = sqlite3_backup_init(to.native(), "main", from.native(), "main");
    if (!backup)
        sqlite::raise(to.native(), sqlite3_errcode(to.native()), "backup");
    const int stepped = sqlite3_backup_step(backup, -1);
    const int finished = sqlite3_backup_finish(backup);
    if (stepped != SQLITE_DONE)
        sqlite::raise(to.native(), finished != SQLITE_OK ? finished : stepped, "backup");
}

/// SQLite fills an empty file as it would a new one, and gives its journal the same mode. The mask of a
/// process for new files belongs to its host.
void makePrivateFile(const std::string& path)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0 && errno == EEXIST)
        throw StoreFailure(
            storeError(StoreFault::notPermitted, fmt::format("{}: there is a file already", path)));
    if (file >= 0)
        close(file);
}

void copyToFile(sqlite::Connection& from, const std::string& path)
{
    makePrivateFile(path);
    try {
        sqlite::Connection target(path, sqlite::Connection::Access::readWrite, "", 0);
        target.execute("PRAGMA synchronous = FULL");
        backUp(from, target);
    } catch (...) {
        unlink(path.c_str());
        throw;
    }
}

} // namespace

Result<PersistentStore*> StoreCoordinator::addStore(
    StoreType type, std::string_view path, const StoreOptions& options)
{
    platform::Lock lock(_mutex);
    std::unique_ptr<PersistentStore> store(new PersistentStore(type, std::string(path), nextNumber()));
    if (auto opened = answering(path,
            [&] {
                store->_state = openStore(*_model, type, store->_path, options);
                store->_identifier = readMeta(store->state(), kMetaIdentifier);
            });
        !opened)
        return opened.error();
    _stores.push_back(std::move(store));
    return _stores.back().get();
}

Result<void> StoreCoordinator::removeStore(PersistentStore* store)
{
    platform::Lock lock(_mutex);
    return answering("", [&] {
        requireOpen(store);
        store->_state.reset();
    });
}

Result<PersistentStore*> StoreCoordinator::migrateStore(
    PersistentStore* store, std::string_view path, StoreType type, const StoreOptions& options)
{
    platform::Lock lock(_mutex);
    return answering(path, [&] {
        StoreState& from = requireOpen(store);
        const bool isInMemory = type == StoreType::inMemory || path == "/dev/null";
        std::unique_ptr<StoreState> moved;
        if (isInMemory) {
            moved = openStore(*_model, StoreType::inMemory, std::string(path), options);
            backUp(*from.connection, *moved->connection);
            moved->loadEntityNumbers(*_model, true);
        } else {
            copyToFile(*from.connection, std::string(path));
            moved = openStore(*_model, type, std::string(path), options);
        }
        store->_state = std::move(moved);
        store->_path = path;
        store->_type = isInMemory ? StoreType::inMemory : type;
        return store;
    });
}

Result<void> StoreCoordinator::copyStore(PersistentStore* store, std::string_view path)
{
    platform::Lock lock(_mutex);
    return answering(path, [&] { copyToFile(*requireOpen(store).connection, std::string(path)); });
}

Result<void> StoreCoordinator::copyDatabase(const std::string& from, const std::string& path)
{
    return answering(from, [&] {
        sqlite::Connection source(from, sqlite::Connection::Access::readOnly, "", StoreOptions().busyTimeout);
        copyToFile(source, path);
    });
}

std::vector<PersistentStore*> StoreCoordinator::stores() const
{
    platform::Lock lock(_mutex);
    std::vector<PersistentStore*> open;
    for (const auto& store : _stores)
        if (store->isOpen())
            open.push_back(store.get());
    return open;
}

PersistentStore* StoreCoordinator::firstStore() const
{
    platform::Lock lock(_mutex);
    const auto open = std::ranges::find_if(_stores, [](const auto& store) { return store->isOpen(); });
    return open == _stores.end() ? nullptr : open->get();
}

bool StoreCoordinator::hasStoreInMemory() const
{
    platform::Lock lock(_mutex);
    return std::ranges::any_of(
        _stores, [](const auto& store) { return store->isOpen() && store->isInMemory(); });
}

PersistentStore* StoreCoordinator::storeNumbered(std::uint32_t number) const
{
    platform::Lock lock(_mutex);
    for (const auto& store : _stores)
        if (store->isOpen() && store->number() == number)
            return store.get();
    return nullptr;
}

PersistentStore* StoreCoordinator::storeAtPath(std::string_view path) const
{
    platform::Lock lock(_mutex);
    for (const auto& store : _stores)
        if (store->isOpen() && store->path() == path)
            return store.get();
    return nullptr;
}

Result<Value> StoreCoordinator::metadata(PersistentStore* store) const
{
    platform::Lock lock(_mutex);
    return answering("metadata", [&]() -> Value {
        StoreState& state = requireOpen(store);
        ReadTransaction transaction(state);
        const std::string bytes = readMeta(state, kMetaCaller);
        if (bytes.empty())
            return Value::dictionary({});
        auto decoded = platform::decodePropertyList(bytes);
        if (!decoded)
            throw StoreFailure(storeError(StoreFault::corrupt, state.path + ": " + decoded.error().text));
        return *decoded;
    });
}

Result<void> StoreCoordinator::setMetadata(PersistentStore* store, const Value& dictionary)
{
    platform::Lock lock(_mutex);
    auto bytes = platform::encodePropertyList(dictionary, platform::PropertyListFormat::binary);
    if (!bytes)
        return bytes.error();
    return answering("metadata", [&] {
        StoreState& state = requireOpen(store);
        WriteTransaction transaction(state);
        writeMeta(state, kMetaCaller, *bytes);
        transaction.commit();
    });
}

} // namespace objectstore
