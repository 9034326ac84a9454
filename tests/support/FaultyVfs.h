// What if the disk fails just now? A layer under SQLite that lets a test decide it, call by call.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>

namespace test {

/// A SQLite VFS that does what the default one does, and asks the test before each call that can fail.
///
/// It keeps no pages and delays nothing: what reached the real file before a fault stays there, which is what
/// a process finds after a crash of the process, not of the machine.
///
/// Ownership: registered as the default VFS while it lives; connections opened meanwhile must be closed
/// first. Threads:   the hook runs on the thread that uses the connection; change it only while none is used.
/// Errors:    those that the hook answers.
class FaultyVfs {
public:
    enum class Operation : std::uint8_t { read, write, sync, truncate, lock, shareMemory };
    /// Those that a save can meet.
    static constexpr std::array kOperations{
        Operation::write, Operation::sync, Operation::truncate, Operation::lock, Operation::shareMemory};

    /// What a test lets go wrong.
    struct Fault {
        const char* name;
        Operation operation;
        int code;
        /// SQLite may get over it, or what is tested may make no such call at all.
        bool mayPass;
    };

    /// Asked before each operation with the file's path ("-wal" and "-shm" belong to the database): SQLITE_OK
    /// lets it pass, anything else is its result. A failed write leaves the first half of its bytes behind.
    using Hook = std::function<int(Operation, std::string_view path)>;

    FaultyVfs() : _real(sqlite3_vfs_find(nullptr)), _vfs(*_real)
    {
        _vfs.zName = "faulty";
        _vfs.pNext = nullptr;
        _vfs.pAppData = this;
        _vfs.szOsFile = static_cast<int>(sizeof(File)) + _real->szOsFile;
        _vfs.xOpen = open;
        // The rest of the real VFS reads only its own data, so it is called with the real one.
        _vfs.xDelete = [](sqlite3_vfs* vfs, const char* path, int sync) {
            return real(vfs)->xDelete(real(vfs), path, sync);
        };
        _vfs.xAccess = [](sqlite3_vfs* vfs, const char* path, int flags, int* result) {
            return real(vfs)->xAccess(real(vfs), path, flags, result);
        };
        _vfs.xFullPathname = [](sqlite3_vfs* vfs, const char* path, int size, char* full) {
            return real(vfs)->xFullPathname(real(vfs), path, size, full);
        };
        sqlite3_vfs_register(&_vfs, 1);
    }
    FaultyVfs(const FaultyVfs&) = delete;
    FaultyVfs& operator=(const FaultyVfs&) = delete;
    ~FaultyVfs()
    {
        sqlite3_vfs_unregister(&_vfs);
        sqlite3_vfs_register(_real, 1);
    }

    void setHook(Hook hook) { _hook = std::move(hook); }

    /// Lets everything pass and counts what it sees of one operation.
    void count(Operation counted, int& calls)
    {
        calls = 0;
        setHook([counted, &calls](Operation operation, std::string_view) {
            calls += operation == counted;
            return SQLITE_OK;
        });
    }

    /// The n-th call of one operation (from 1) fails with `code`, once.
    void failOnce(Operation failing, int n, int code)
    {
        setHook([failing, n, code, seen = 0](Operation operation, std::string_view) mutable {
            return operation == failing && ++seen == n ? code : SQLITE_OK;
        });
    }

    void letPass() { _hook = nullptr; }

private:
    struct File {
        sqlite3_file base;
        FaultyVfs* owner;
        const char* path;
        sqlite3_file* real;
    };

    static sqlite3_vfs* real(sqlite3_vfs* vfs) { return static_cast<FaultyVfs*>(vfs->pAppData)->_real; }
    static sqlite3_file* real(sqlite3_file* file) { return reinterpret_cast<File*>(file)->real; }

    static int ask(sqlite3_file* file, Operation operation)
    {
        const auto* self = reinterpret_cast<File*>(file);
        return self->owner->_hook ? self->owner->_hook(operation, self->path ? self->path : "") : SQLITE_OK;
    }

    static int open(sqlite3_vfs* vfs, const char* path, sqlite3_file* file, int flags, int* openedFlags)
    {
        auto* self = reinterpret_cast<File*>(file);
        *self = {{nullptr}, static_cast<FaultyVfs*>(vfs->pAppData), path,
            reinterpret_cast<sqlite3_file*>(self + 1)};
        std::memset(self->real, 0, static_cast<std::size_t>(real(vfs)->szOsFile));
        const int result = real(vfs)->xOpen(real(vfs), path, self->real, flags, openedFlags);
        if (self->real->pMethods)
            self->base.pMethods = methods();
        return result;
    }

    static int read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset)
    {
        const int fault = ask(file, Operation::read);
        return fault ? fault : real(file)->pMethods->xRead(real(file), bytes, count, offset);
    }

    static int write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset)
    {
        const int fault = ask(file, Operation::write);
        const int written = fault ? count / 2 : count;
        const int result = real(file)->pMethods->xWrite(real(file), bytes, written, offset);
        return fault ? fault : result;
    }

    static int truncate(sqlite3_file* file, sqlite3_int64 size)
    {
        const int fault = ask(file, Operation::truncate);
        return fault ? fault : real(file)->pMethods->xTruncate(real(file), size);
    }

    static int sync(sqlite3_file* file, int flags)
    {
        const int fault = ask(file, Operation::sync);
        return fault ? fault : real(file)->pMethods->xSync(real(file), flags);
    }

    static int lock(sqlite3_file* file, int level)
    {
        const int fault = ask(file, Operation::lock);
        return fault ? fault : real(file)->pMethods->xLock(real(file), level);
    }

    static int lockShared(sqlite3_file* file, int offset, int count, int flags)
    {
        const int fault = flags & SQLITE_SHM_LOCK ? ask(file, Operation::lock) : SQLITE_OK;
        return fault ? fault : real(file)->pMethods->xShmLock(real(file), offset, count, flags);
    }

    static int shareMemory(sqlite3_file* file, int page, int size, int extend, void volatile** memory)
    {
        const int fault = ask(file, Operation::shareMemory);
        return fault ? fault : real(file)->pMethods->xShmMap(real(file), page, size, extend, memory);
    }

    static const sqlite3_io_methods* methods();

    sqlite3_vfs* _real;
    sqlite3_vfs _vfs;
    Hook _hook;
};

inline const sqlite3_io_methods* FaultyVfs::methods()
{
    static const sqlite3_io_methods table{3,
        [](sqlite3_file* file) { return real(file)->pMethods->xClose(real(file)); }, read, write, truncate,
        sync,
        [](sqlite3_file* file, sqlite3_int64* size) {
            return real(file)->pMethods->xFileSize(real(file), size);
        },
        lock, [](sqlite3_file* file, int level) { return real(file)->pMethods->xUnlock(real(file), level); },
        [](sqlite3_file* file, int* isReserved) {
            return real(file)->pMethods->xCheckReservedLock(real(file), isReserved);
        },
        [](sqlite3_file* file, int operation, void* argument) {
            return real(file)->pMethods->xFileControl(real(file), operation, argument);
        },
        [](sqlite3_file* file) { return real(file)->pMethods->xSectorSize(real(file)); },
        [](sqlite3_file* file) { return real(file)->pMethods->xDeviceCharacteristics(real(file)); },
        shareMemory, lockShared, [](sqlite3_file* file) { real(file)->pMethods->xShmBarrier(real(file)); },
        [](sqlite3_file* file, int remove) { return real(file)->pMethods->xShmUnmap(real(file), remove); },
        [](sqlite3_file* file, sqlite3_int64 offset, int size, void** page) {
            return real(file)->pMethods->xFetch(real(file), offset, size, page);
        },
        [](sqlite3_file* file, sqlite3_int64 offset, void* page) {
            return real(file)->pMethods->xUnfetch(real(file), offset, page);
        }};
    return &table;
}

} // namespace test
