// Work in the background: operations with dependencies, and the queues that run them on threads.
#pragma once

#include "platform/run/Executor.h"
#include "platform/value/Object.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace platform {

class OperationQueue;

/// One piece of work that is run once by an OperationQueue.
///
/// It is not started by hand, and it is not run again.
///
/// Ownership: shared; a queue shares it until it has finished.
/// Threads:   `main` and the completion run on a thread of the queue; all else on any thread.
/// Errors:    an exception that leaves `main` is logged, and the operation counts as finished.
class Operation : public Object {
public:
    Operation();

    /// The work. Long work asks `isCancelled` and returns early.
    virtual void main() = 0;

    /// Asks it to stop. One that has not begun never begins, and finishes as soon as its turn comes; its
    /// dependencies no longer hold it back.
    void cancel();
    bool isCancelled() const;
    bool isExecuting() const;
    /// `main` has returned or was skipped, and the completion has run.
    bool isFinished() const;
    /// Not to begin before `other` has finished (also when that one was cancelled). Before it is added to a
    /// queue only. The operation must not depend on itself in a circle.
    void addDependency(const Ref<Operation>& other);
    /// Runs after `main`, also when that was skipped. Before it is added to a queue only.
    void setCompletion(Block completion);
    void waitUntilFinished() const;

protected:
    ~Operation() override;

private:
    friend class OperationQueue;
    struct State;
    std::unique_ptr<State> _state;
};

/// An operation made of a function.
class BlockOperation final : public Operation {
public:
    explicit BlockOperation(Block block) : _block(std::move(block)) { }
    void main() override { _block(); }

private:
    ~BlockOperation() override = default;
    Block _block;
};

/// Runs operations in the order they were added, as far as their dependencies allow, `width` at a time.
///
/// Threads are started when there is work and end when there is none.
///
/// Ownership: shares its operations until they have finished. Destroying a queue cancels what has not begun
///            and waits for nothing: what runs, runs to its end.
/// Threads:   any.
/// Errors:    none. In a child forked from the process that made it, a queue takes nothing and is empty.
class OperationQueue : public Object, public Executor {
public:
    /// As many at a time as there are processors.
    static constexpr std::size_t kDefaultWidth = 0;
    using CountObserver = std::function<void(std::size_t)>;

    explicit OperationQueue(std::size_t width = kDefaultWidth);

    void add(const Ref<Operation>& operation);
    /// Adds a BlockOperation.
    void async(Block block) override;

    void setWidth(std::size_t width);
    std::size_t width() const;
    /// While suspended, nothing begins; what runs goes on.
    void setSuspended(bool suspended);
    bool isSuspended() const;

    /// Cancels every operation that has not finished.
    void cancelAll();
    /// Those that have not finished, in the order added.
    std::vector<Ref<Operation>> operations() const;
    std::size_t operationCount() const;

    /// Waits until the queue is empty. Not for the queue's own threads.
    void waitUntilAllFinished() const;
    /// The same for at most `seconds`. Answers whether the queue is empty.
    bool waitUntilFinished(double seconds) const;
    /// Runs `block` once, as soon as the queue is empty: here if it is so now, else on the thread of the last
    /// operation.
    void whenEmpty(Block block);

    /// `observer` is called with each new count, on the thread of the change, outside all locks. Set it
    /// before the first operation.
    void setCountObserver(CountObserver observer);

protected:
    ~OperationQueue() override;

private:
    friend class Operation;
    struct State;
    std::shared_ptr<State> _state;
};

/// The process's queue for short independent work, a few threads wide. Never destroyed.
OperationQueue& concurrentQueue();
/// Runs `block` there.
void dispatchConcurrent(Block block);

} // namespace platform
