// Where objects go whose last owner let go on a thread without the lock.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGlobalLock.h"

#include <atomic>

/// What can stand on the list: a base of the objects whose end must run under the global lock.
///
/// Ownership: on the list it belongs to the list, which calls `finishRelease` once; that ends it.
/// Threads:   `finishRelease` runs on whatever thread takes the lock next.
/// Errors:    none.
class ZR_EXPORT ReleasedHandle {
protected:
    ReleasedHandle() = default;
    ReleasedHandle(const ReleasedHandle&) = delete;
    ReleasedHandle& operator=(const ReleasedHandle&) = delete;
    ~ReleasedHandle() = default;

    /// Ends the object, or takes it back when somebody found it in a cache meanwhile. The lock is held.
    virtual void finishRelease() noexcept ZR_NTS = 0;

private:
    friend class ReleasedHandles;
    ReleasedHandle* _next = nullptr;
};

/// The list of handles whose last owner is gone and that nobody has taken care of yet.
///
/// A last release may come from any thread, also one that holds other locks, so it waits for nothing: it puts
/// the object here, and the next one to take the global lock ends it. The list is no queue for other work.
///
/// Ownership: owns what is on it.
/// Threads:   `push` any, without a lock; `drain` under the global lock.
/// Errors:    none.
class ZR_EXPORT ReleasedHandles {
public:
    /// The list that the global lock drains. Its first use registers it there.
    static ReleasedHandles& shared();

    /// `handle` must not be on a list.
    void push(ReleasedHandle& handle) noexcept;
    /// Ends what is on the list, first come first, and what that puts on it, until it is empty.
    void drain() noexcept ZR_NTS;
    bool isEmpty() const noexcept { return _last.load(std::memory_order_relaxed) == nullptr; }

private:
    std::atomic<ReleasedHandle*> _last = nullptr;
};
