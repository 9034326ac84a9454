// How the main queue is served: by the host that adopted it, or by a thread of the library.
#include "platform/run/MainQueue.h"

#include "platform/run/Clock.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/run/ProcessMark.h"
#include "platform/run/Thread.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <deque>
#include <exception>
#include <map>
#include <optional>
#include <thread>
#include <vector>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace platform {

namespace {

// How long the end of the process waits for the block that the library's thread is in.
constexpr double kLongestGoodbye = 2.0;

/// Whether this thread is the library's own.
thread_local bool onOwnThread = false;

void pollFor(int descriptor, double seconds)
{
    pollfd wanted{descriptor, POLLIN, 0};
    const double most = std::min(std::max(seconds, 0.0), 86400.0);
    poll(&wanted, 1, seconds < 0 ? -1 : static_cast<int>(std::ceil(most * 1000)));
}

void addToPoll(int set, int descriptor)
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    epoll_ctl(set, EPOLL_CTL_ADD, descriptor, &event);
}

void readEmpty(int descriptor)
{
    std::uint64_t count = 0;
    [[maybe_unused]] const auto ignored = read(descriptor, &count, sizeof count);
}

} // namespace

struct MainQueue::Token::Source {
    enum class Kind { timer, watch };

    std::weak_ptr<MainQueue::State> queue;
    Kind kind = Kind::timer;
    double deadline = 0;
    int descriptor = -1;
    // Below: guarded by the queue's mutex. No block: it has run or was cancelled.
    std::shared_ptr<const Block> block;
    bool queued = false;
};

struct MainQueue::State : std::enable_shared_from_this<State> {
    using Source = Token::Source;
    using Sources = std::vector<std::shared_ptr<Source>>;
    /// A block, or a source whose time has come.
    struct Item {
        Block block;
        std::shared_ptr<Source> source;
    };

    const ProcessMark mark;
    const int poll = epoll_create1(EPOLL_CLOEXEC);
    const int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const int alarm = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);

    Mutex mutex{LockRank::queue};
    Condition changed;
    std::deque<Item> work ZR_GUARDED_BY(mutex);
    std::multimap<double, std::shared_ptr<Source>> timers ZR_GUARDED_BY(mutex);
    Sources watches ZR_GUARDED_BY(mutex);
    /// Who drains at this moment, and how deeply nested.
    std::thread::id server ZR_GUARDED_BY(mutex);
    int depth ZR_GUARDED_BY(mutex) = 0;
    std::optional<std::thread::id> host ZR_GUARDED_BY(mutex);
    bool ownThread ZR_GUARDED_BY(mutex) = false;
    bool ended ZR_GUARDED_BY(mutex) = false;

    State()
    {
        addToPoll(poll, wake);
        addToPoll(poll, alarm);
    }

    bool isMainThread() ZR_REQUIRES(mutex)
    {
        const auto me = std::this_thread::get_id();
        return server == me || host == me;
    }

    void add(Item item)
    {
        Lock lock(mutex);
        if (ended)
            return;
        work.push_back(std::move(item));
        signal();
        beServed();
    }

    void signal()
    {
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto ignored = write(wake, &one, sizeof one);
    }

    void setAlarm() ZR_REQUIRES(mutex)
    {
        itimerspec when{};
        if (!timers.empty()) {
            const double left = std::max(Clock::current().realSecondsUntil(timers.begin()->first), 1e-6);
            when.it_value.tv_sec = static_cast<time_t>(left);
            when.it_value.tv_nsec = static_cast<long>((left - std::floor(left)) * 1e9);
        }
        timerfd_settime(alarm, 0, &when, nullptr);
    }

    void beServed() ZR_REQUIRES(mutex)
    {
        if (host || ownThread || ended)
            return;
        ownThread = startThread("roster-main", [self = shared_from_this()] { self->serve(); });
    }

    /// The life of the library's own thread.
    void serve()
    {
        onOwnThread = true;
        for (;;) {
            pollFor(poll, -1);
            {
                Lock lock(mutex);
                if (isToStop())
                    break;
            }
            drain();
        }
        Lock lock(mutex);
        ownThread = false;
        changed.notifyAll();
    }

    bool isToStop() ZR_REQUIRES(mutex) { return ended || host.has_value(); }

    /// Runs what waits now, on this thread.
    void drain()
    {
        Lock lock(mutex);
        const auto me = std::this_thread::get_id();
        if (ended || (depth > 0 && server != me))
            return;
        server = me;
        ++depth;
        collect();
        for (auto count = work.size(); count > 0 && !work.empty() && !ended; --count) {
            auto item = std::move(work.front());
            work.pop_front();
            lock.unlock();
            run(std::move(item));
            lock.lock();
            if (onOwnThread && isToStop())
                break;
        }
        if (--depth == 0)
            server = {};
        if (!work.empty() || (onOwnThread && isToStop()))
            signal();
        setAlarm();
        changed.notifyAll();
    }

    /// Puts the timers that are due and the descriptors that are readable behind the work that waits.
    void collect() ZR_REQUIRES(mutex)
    {
        readEmpty(wake);
        readEmpty(alarm);
        const double now = Clock::current().monotonic();
        while (!timers.empty() && timers.begin()->first <= now) {
            work.push_back({{}, timers.begin()->second});
            timers.erase(timers.begin());
        }
        if (watches.empty())
            return;
        epoll_event ready[16];
        const int count = epoll_wait(poll, ready, 16, 0);
        for (int i = 0; i < count; ++i)
            for (const auto& watch : watches)
                if (watch->descriptor == ready[i].data.fd && !std::exchange(watch->queued, true))
                    work.push_back({{}, watch});
    }

    void run(Item item)
    {
        if (!item.source)
            return runLogged(item.block);
        std::shared_ptr<const Block> block;
        {
            Lock lock(mutex);
            auto& source = *item.source;
            source.queued = false;
            block = source.block;
            if (source.kind == Source::Kind::timer)
                source.block = nullptr;
        }
        if (block)
            runLogged(*block);
    }

    std::shared_ptr<Source> addSource(Source made)
    {
        Lock lock(mutex);
        if (ended)
            return nullptr;
        auto source = std::make_shared<Source>(std::move(made));
        source->queue = weak_from_this();
        if (source->kind == Source::Kind::timer) {
            timers.emplace(source->deadline, source);
            setAlarm();
        } else {
            watches.push_back(source);
            addToPoll(poll, source->descriptor);
        }
        beServed();
        return source;
    }

    void removeSource(Source& source)
    {
        // Let go outside the lock: what the block holds may end with it.
        std::shared_ptr<const Block> block;
        std::shared_ptr<Source> last;
        Lock lock(mutex);
        block.swap(source.block);
        const auto is = [&](const std::shared_ptr<Source>& other) { return other.get() == &source; };
        if (source.kind == Source::Kind::timer) {
            const auto [from, to] = timers.equal_range(source.deadline);
            const auto at = std::find_if(from, to, [&](const auto& entry) { return is(entry.second); });
            if (at != to) {
                last = at->second;
                timers.erase(at);
            }
        } else if (const auto at = std::find_if(watches.begin(), watches.end(), is); at != watches.end()) {
            epoll_ctl(poll, EPOLL_CTL_DEL, source.descriptor, nullptr);
            last = *at;
            watches.erase(at);
        }
    }

    void adopt()
    {
        Lock lock(mutex);
        const auto me = std::this_thread::get_id();
        if (host == me)
            return;
        host = me;
        signal();
        while (ownThread && server != me)
            changed.wait(mutex);
        // The thread that left may have read the descriptor empty.
        signal();
    }

    void abandon()
    {
        Lock lock(mutex);
        host.reset();
        if (!work.empty() || !timers.empty() || !watches.empty())
            beServed();
        signal();
    }

    /// At exit, before the statics of the host that blocks may use are destroyed. A thread that serves
    /// nothing at this moment is not woken to say goodbye: it ends with the process.
    void end()
    {
        std::deque<Item> dropped;
        std::multimap<double, std::shared_ptr<Source>> droppedTimers;
        Sources droppedWatches;
        Lock lock(mutex);
        ended = true;
        const double deadline = Clock::current().monotonic() + kLongestGoodbye;
        while (ownThread && depth > 0 && server != std::this_thread::get_id())
            if (!Clock::current().wait(changed, mutex, deadline))
                break;
        dropped.swap(work);
        droppedTimers.swap(timers);
        droppedWatches.swap(watches);
    }
};

MainQueue::Token& MainQueue::Token::operator=(Token&& other) noexcept
{
    if (this != &other) {
        cancel();
        _source = std::move(other._source);
    }
    return *this;
}

void MainQueue::Token::cancel() noexcept
{
    const auto source = std::exchange(_source, nullptr);
    if (!source)
        return;
    if (const auto queue = source->queue.lock(); queue && !queue->mark.isForeign())
        queue->removeSource(*source);
}

bool MainQueue::Token::isPending() const
{
    const auto queue = _source ? _source->queue.lock() : nullptr;
    if (!queue || queue->mark.isForeign())
        return false;
    Lock lock(queue->mutex);
    return _source->block != nullptr;
}

MainQueue::MainQueue() : _state(std::make_shared<State>()) { }

MainQueue& MainQueue::shared()
{
    static const NeverDestroyed<MainQueue> queue;
    static const int ends = std::atexit([] {
        if (!queue->_state->mark.isForeign())
            queue->_state->end();
    });
    static_cast<void>(ends);
    return *queue;
}

bool MainQueue::isMainThread() const
{
    if (_state->mark.isForeign())
        return false;
    Lock lock(_state->mutex);
    return _state->isMainThread();
}

bool MainQueue::isAdopted() const
{
    if (_state->mark.isForeign())
        return false;
    Lock lock(_state->mutex);
    return _state->host.has_value();
}

void MainQueue::async(Block block)
{
    if (!_state->mark.isForeign())
        _state->add({std::move(block), nullptr});
}

namespace {

/// A call that another thread waits for. It answers the waiter also when it is dropped without having run.
class Call {
public:
    struct Answer {
        Mutex mutex;
        Condition given;
        bool isGiven ZR_GUARDED_BY(mutex) = false;
        bool hasRun ZR_GUARDED_BY(mutex) = false;
        std::exception_ptr failure ZR_GUARDED_BY(mutex);
    };

    Call(Block block, std::shared_ptr<Answer> answer) : _block(std::move(block)), _answer(std::move(answer))
    {
    }
    ~Call() { give(false, nullptr); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    void run()
    {
        std::exception_ptr failure;
        try {
            _block();
        } catch (...) {
            failure = std::current_exception();
        }
        // The block ends before its caller goes on.
        _block = nullptr;
        give(true, std::move(failure));
    }

private:
    void give(bool hasRun, std::exception_ptr failure)
    {
        Lock lock(_answer->mutex);
        if (std::exchange(_answer->isGiven, true))
            return;
        _answer->hasRun = hasRun;
        _answer->failure = std::move(failure);
        _answer->given.notifyAll();
    }

    Block _block;
    std::shared_ptr<Answer> _answer;
};

} // namespace

bool MainQueue::sync(Block block)
{
    if (_state->mark.isForeign())
        return false;
    if (isMainThread()) {
        block();
        return true;
    }
    const auto answer = std::make_shared<Call::Answer>();
    async([call = std::make_shared<Call>(std::move(block), answer)] { call->run(); });
    Lock lock(answer->mutex);
    while (!answer->isGiven)
        answer->given.wait(answer->mutex);
    if (answer->failure)
        std::rethrow_exception(std::exchange(answer->failure, nullptr));
    return answer->hasRun;
}

MainQueue::Token MainQueue::after(double seconds, Block block)
{
    if (_state->mark.isForeign())
        return {};
    Token::Source source;
    source.deadline = Clock::current().monotonic() + seconds;
    source.block = std::make_shared<const Block>(std::move(block));
    return Token(_state->addSource(std::move(source)));
}

MainQueue::Token MainQueue::watch(int descriptor, Block block)
{
    if (_state->mark.isForeign())
        return {};
    Token::Source source;
    source.kind = Token::Source::Kind::watch;
    source.descriptor = descriptor;
    source.block = std::make_shared<const Block>(std::move(block));
    return Token(_state->addSource(std::move(source)));
}

int MainQueue::fileDescriptor()
{
    if (_state->mark.isForeign())
        return -1;
    _state->adopt();
    return _state->poll;
}

void MainQueue::drain()
{
    if (_state->mark.isForeign())
        return;
    if (!isMainThread())
        _state->adopt();
    _state->drain();
}

void MainQueue::runOnce(double seconds)
{
    if (!isMainThread())
        return;
    pollFor(_state->poll, std::max(seconds, 0.0));
    drain();
}

void MainQueue::abandon()
{
    if (!_state->mark.isForeign())
        _state->abandon();
}

} // namespace platform
