// An operation queue that tells its owner how much it has to do.
#pragma once

#include "platform/run/Mutex.h"
#include "platform/run/OperationQueue.h"

class ZRWorkQueue;

/// Who wants to know how many operations a ZRWorkQueue holds.
class ZRWorkQueueDelegate {
public:
    /// `count` operations are in the queue now. On the thread of the change.
    virtual void zrWorkQueue(ZRWorkQueue& queue, std::size_t count) = 0;

protected:
    ~ZRWorkQueueDelegate() = default;
};

/// An OperationQueue with a delegate that hears of every change of its count.
///
/// Ownership: borrows the delegate, which calls `setDelegate(nullptr)` before it goes.
/// Threads:   any. Changing the delegate waits for a call to the former one on another thread, so a delegate
///            takes no lock under which it is changed.
/// Errors:    none.
class ZRWorkQueue : public platform::OperationQueue {
public:
    explicit ZRWorkQueue(std::size_t width = kDefaultWidth);

    void setDelegate(ZRWorkQueueDelegate* delegate);
    ZRWorkQueueDelegate* delegate() const;
    /// Passes `count` on to the delegate. The queue calls it itself.
    void operationCountDidChange(std::size_t count);

private:
    ~ZRWorkQueue() override;

    struct Listener;
    std::shared_ptr<Listener> _listener;
};
