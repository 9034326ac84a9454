// How operations come to run: when their turn has come, their dependencies are met and a thread is free.
#include "platform/run/OperationQueue.h"

#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/run/ProcessMark.h"
#include "platform/run/Thread.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <map>
#include <thread>

namespace platform {

namespace {

// One lock for the state of all operations, since dependencies reach across queues. It is held for a few
// instructions at a time, never while anybody's code runs.
struct Shared {
    Mutex mutex{LockRank::queue};
    Condition finished;
};

Shared& shared()
{
    static const NeverDestroyed<Shared> only;
    return *only;
}

} // namespace

struct Operation::State {
    const ProcessMark mark;
    std::atomic<bool> cancelled = false;
    std::atomic<bool> executing = false;
    std::atomic<bool> finished = false;
    Block completion;
    // Below: guarded by shared().mutex.
    std::weak_ptr<OperationQueue::State> queue;
    std::size_t blockers = 0;
    std::vector<Ref<Operation>> dependents;
};

struct OperationQueue::State : std::enable_shared_from_this<State> {
    using Number = std::uint64_t;
    using Started = std::vector<std::pair<Number, Ref<Operation>>>;

    const ProcessMark mark;
    std::shared_ptr<const CountObserver> observer;
    // Below: guarded by shared().mutex.
    std::size_t width = 1;
    bool suspended = false;
    /// Something that waits may be cancelled. Spares a suspended queue the search.
    bool mayHoldCancelled = false;
    std::size_t running = 0;
    Number lastNumber = 0;
    /// All that have not finished, and those of them that have not begun, in the order added.
    std::map<Number, Ref<Operation>> operations;
    std::map<Number, Operation*> waiting;
    std::vector<Block> whenEmpty;

    static std::size_t realWidth(std::size_t width)
    {
        return width == kDefaultWidth ? std::max(2U, std::thread::hardware_concurrency()) : width;
    }

    // A cancelled operation only has to be finished, so nothing holds it back.
    bool mayBegin(const Operation& operation) const
    {
        const auto& state = *operation._state;
        return state.cancelled || (!suspended && state.blockers == 0);
    }

    /// The next that may begin, taken out of the waiting ones; absent when none may.
    std::pair<Number, Ref<Operation>> takeNext()
    {
        if (suspended && !mayHoldCancelled)
            return {0, nullptr};
        for (auto at = waiting.begin(); at != waiting.end(); ++at)
            if (mayBegin(*at->second)) {
                const auto number = at->first;
                waiting.erase(at);
                return {number, operations.at(number)};
            }
        mayHoldCancelled = false;
        return {0, nullptr};
    }

    /// Takes as many operations as there are threads to spare. The caller starts them outside the lock.
    Started takeStartable()
    {
        Started started;
        while (running < width && !waiting.empty()) {
            auto next = takeNext();
            if (!next.second)
                break;
            ++running;
            started.push_back(std::move(next));
        }
        return started;
    }

    void start(Started started)
    {
        for (auto& [number, operation] : started) {
            const auto work = [self = shared_from_this(), number = number, operation = operation]() mutable {
                self->work(number, std::move(operation));
            };
            // Without a thread to give, the work is done here: late is better than never.
            if (!startThread("roster-work", work))
                runLogged(work);
        }
    }

    /// The life of a thread: one operation after another, as long as there are any.
    void work(Number number, Ref<Operation> operation)
    {
        while (operation) {
            run(*operation);
            finish(number, operation);
            Lock lock(shared().mutex);
            std::pair<Number, Ref<Operation>> next;
            if (running <= width)
                next = takeNext();
            if (!next.second)
                --running;
            lock.unlock();
            std::tie(number, operation) = std::move(next);
        }
    }

    static void run(Operation& operation)
    {
        auto& state = *operation._state;
        state.executing = true;
        if (!state.cancelled)
            runLogged([&] { operation.main(); });
        if (const auto completion = std::exchange(state.completion, nullptr))
            runLogged(completion);
        state.executing = false;
    }

    void finish(Number number, const Ref<Operation>& operation)
    {
        std::vector<Ref<Operation>> freed;
        std::vector<Block> emptied;
        Lock lock(shared().mutex);
        operation->_state->finished = true;
        freed.swap(operation->_state->dependents);
        std::erase_if(freed, [](const auto& dependent) { return --dependent->_state->blockers > 0; });
        const auto self = operations.extract(number);
        const auto count = operations.size();
        if (count == 0)
            emptied.swap(whenEmpty);
        shared().finished.notifyAll();
        lock.unlock();

        for (const auto& dependent : freed)
            lookAgain(*dependent);
        tellCount(count);
        for (const auto& block : emptied)
            runLogged(block);
    }

    void tellCount(std::size_t count) const
    {
        if (observer)
            runLogged([&] { (*observer)(count); });
    }

    /// Something about a waiting operation changed: its queue sees whether it may begin now.
    static void lookAgain(const Operation& operation)
    {
        Lock lock(shared().mutex);
        const auto queue = operation._state->queue.lock();
        if (!queue)
            return;
        if (operation._state->cancelled)
            queue->mayHoldCancelled = true;
        auto started = queue->takeStartable();
        lock.unlock();
        queue->start(std::move(started));
    }

    void lookAgain()
    {
        Lock lock(shared().mutex);
        auto started = takeStartable();
        lock.unlock();
        start(std::move(started));
    }
};

Operation::Operation() : _state(std::make_unique<State>()) { }
Operation::~Operation() = default;

void Operation::cancel()
{
    _state->cancelled = true;
    if (!_state->mark.isForeign())
        OperationQueue::State::lookAgain(*this);
}

bool Operation::isCancelled() const { return _state->cancelled; }
bool Operation::isExecuting() const { return _state->executing; }
bool Operation::isFinished() const { return _state->finished; }

void Operation::addDependency(const Ref<Operation>& other)
{
    Lock lock(shared().mutex);
    if (other->_state->finished)
        return;
    ++_state->blockers;
    other->_state->dependents.emplace_back(this);
}

void Operation::setCompletion(Block completion) { _state->completion = std::move(completion); }

void Operation::waitUntilFinished() const
{
    if (_state->mark.isForeign())
        return;
    Lock lock(shared().mutex);
    while (!_state->finished)
        shared().finished.wait(shared().mutex);
}

OperationQueue::OperationQueue(std::size_t width) : _state(std::make_shared<State>())
{
    _state->width = State::realWidth(width);
}

OperationQueue::~OperationQueue() { cancelAll(); }

void OperationQueue::add(const Ref<Operation>& operation)
{
    if (_state->mark.isForeign())
        return;
    Lock lock(shared().mutex);
    const auto number = ++_state->lastNumber;
    operation->_state->queue = _state;
    if (operation->_state->cancelled)
        _state->mayHoldCancelled = true;
    _state->operations.emplace(number, operation);
    _state->waiting.emplace(number, operation.get());
    const auto count = _state->operations.size();
    auto started = _state->running < _state->width ? _state->takeStartable() : State::Started();
    lock.unlock();
    _state->tellCount(count);
    _state->start(std::move(started));
}

void OperationQueue::async(Block block) { add(makeRef<BlockOperation>(std::move(block))); }

void OperationQueue::setWidth(std::size_t width)
{
    if (_state->mark.isForeign())
        return;
    Lock lock(shared().mutex);
    _state->width = State::realWidth(width);
    lock.unlock();
    _state->lookAgain();
}

std::size_t OperationQueue::width() const
{
    if (_state->mark.isForeign())
        return 0;
    Lock lock(shared().mutex);
    return _state->width;
}

void OperationQueue::setSuspended(bool suspended)
{
    if (_state->mark.isForeign())
        return;
    Lock lock(shared().mutex);
    _state->suspended = suspended;
    lock.unlock();
    _state->lookAgain();
}

bool OperationQueue::isSuspended() const
{
    if (_state->mark.isForeign())
        return false;
    Lock lock(shared().mutex);
    return _state->suspended;
}

void OperationQueue::cancelAll()
{
    if (_state->mark.isForeign())
        return;
    Lock lock(shared().mutex);
    for (const auto& [number, operation] : _state->operations)
        operation->_state->cancelled = true;
    _state->mayHoldCancelled = true;
    lock.unlock();
    _state->lookAgain();
}

std::vector<Ref<Operation>> OperationQueue::operations() const
{
    std::vector<Ref<Operation>> all;
    if (_state->mark.isForeign())
        return all;
    Lock lock(shared().mutex);
    for (const auto& [number, operation] : _state->operations)
        all.push_back(operation);
    return all;
}

std::size_t OperationQueue::operationCount() const
{
    if (_state->mark.isForeign())
        return 0;
    Lock lock(shared().mutex);
    return _state->operations.size();
}

void OperationQueue::waitUntilAllFinished() const
{
    if (_state->mark.isForeign())
        return;
    Lock lock(shared().mutex);
    while (!_state->operations.empty())
        shared().finished.wait(shared().mutex);
}

bool OperationQueue::waitUntilFinished(double seconds) const
{
    if (_state->mark.isForeign())
        return true;
    const auto& clock = Clock::current();
    const double deadline = clock.monotonic() + seconds;
    Lock lock(shared().mutex);
    while (!_state->operations.empty())
        if (!clock.wait(shared().finished, shared().mutex, deadline))
            return _state->operations.empty();
    return true;
}

void OperationQueue::whenEmpty(Block block)
{
    if (_state->mark.isForeign())
        return;
    Lock lock(shared().mutex);
    if (!_state->operations.empty()) {
        _state->whenEmpty.push_back(std::move(block));
        return;
    }
    lock.unlock();
    runLogged(block);
}

void OperationQueue::setCountObserver(CountObserver observer)
{
    _state->observer = std::make_shared<const CountObserver>(std::move(observer));
}

OperationQueue& concurrentQueue()
{
    static const NeverDestroyed<Ref<OperationQueue>> queue(
        makeRef<OperationQueue>(OperationQueue::kDefaultWidth));
    return **queue;
}

void dispatchConcurrent(Block block) { concurrentQueue().async(std::move(block)); }

} // namespace platform
