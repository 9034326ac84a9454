// What if the disk fails just now? A layer under SQLite that lets a test decide it, call by call.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
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

    FaultyVfs() : _real(sqlite3_vfs_find(nullptr)), _vfs{*_real, this}
    {
        _vfs.zName = "faulty";
        _vfs.szOsFile += sizeof(Methods);
        _vfs.xOpen = open;
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

    /// The n-th call of one operation (from 1) fails with `code`, once.
    void failOnce(Operation failing, int n, int code)
    {
        _hasFailed = false;
        setHook([this, failing, n, code, seen = 0](Operation operation, std::string_view) mutable {
            if (operation != failing || ++seen != n)
                return SQLITE_OK;
            _hasFailed = true;
            return code;
        });
    }
    /// Whether that call was made.
    bool hasFailed() const { return _hasFailed; }

    void letPass() { _hook = nullptr; }

private:
    /// The real VFS, whose other functions find their own data in the copy.
    struct Vfs : sqlite3_vfs {
        FaultyVfs* owner;
    };
    /// The methods of a real file, some of them ours; they lie behind that file and lead to its owner.
    struct Methods : sqlite3_io_methods {
        const sqlite3_io_methods* real;
        FaultyVfs* owner;
        const char* path;
    };

    static const Methods& methodsOf(sqlite3_file* file)
    {
        return *static_cast<const Methods*>(file->pMethods);
    }

    static int ask(sqlite3_file* file, Operation operation)
    {
        const auto& methods = methodsOf(file);
        const auto& hook = methods.owner->_hook;
        return hook ? hook(operation, methods.path ? methods.path : "") : SQLITE_OK;
    }

    static int open(sqlite3_vfs* vfs, const char* path, sqlite3_file* file, int flags, int* openedFlags)
    {
        auto* const owner = static_cast<Vfs*>(vfs)->owner;
        auto* const real = owner->_real;
        const int result = real->xOpen(real, path, file, flags, openedFlags);
        if (!file->pMethods)
            return result;
        auto* const methods = new (reinterpret_cast<std::byte*>(file) + real->szOsFile)
            Methods{*file->pMethods, file->pMethods, owner, path};
        methods->xRead = read;
        methods->xWrite = write;
        methods->xTruncate = truncate;
        methods->xSync = sync;
        methods->xLock = lock;
        methods->xShmMap = shareMemory;
        methods->xShmLock = lockShared;
        file->pMethods = methods;
        return result;
    }

    static int read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset)
    {
        const int fault = ask(file, Operation::read);
        return fault ? fault : methodsOf(file).real->xRead(file, bytes, count, offset);
    }

    static int write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset)
    {
        const int fault = ask(file, Operation::write);
        const int written = fault ? count / 2 : count;
        const int result = methodsOf(file).real->xWrite(file, bytes, written, offset);
        return fault ? fault : result;
    }

    static int truncate(sqlite3_file* file, sqlite3_int64 size)
    {
        const int fault = ask(file, Operation::truncate);
        return fault ? fault : methodsOf(file).real->xTruncate(file, size);
    }

    static int sync(sqlite3_file* file, int flags)
    {
        const int fault = ask(file, Operation::sync);
        return fault ? fault : methodsOf(file).real->xSync(file, flags);
    }

    static int lock(sqlite3_file* file, int level)
    {
        const int fault = ask(file, Operation::lock);
        return fault ? fault : methodsOf(file).real->xLock(file, level);
    }

    static int lockShared(sqlite3_file* file, int offset, int count, int flags)
    {
        const int fault = flags & SQLITE_SHM_LOCK ? ask(file, Operation::lock) : SQLITE_OK;
        return fault ? fault : methodsOf(file).real->xShmLock(file, offset, count, flags);
    }

    static int shareMemory(sqlite3_file* file, int page, int size, int extend, void volatile** memory)
    {
        const int fault = ask(file, Operation::shareMemory);
        return fault ? fault : methodsOf(file).real->xShmMap(file, page, size, extend, memory);
    }

    sqlite3_vfs* _real;
    Vfs _vfs;
    Hook _hook;
    bool _hasFailed = false;
};

} // namespace test
