// How long a callback may be called: as long as its token lives, and not a moment longer.
#pragma once

#include "platform/run/Mutex.h"

#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace platform {

/// The switch between one callback and those who call it. A publisher keeps it with the callback; the
/// subscriber's token turns it off.
///
/// It does not know the callback: see `Observers` for a list of them.
///
/// Ownership: shared by publisher and token.
/// Threads:   any.
/// Errors:    none.
class CallGate {
public:
    /// Asks to call. After true, call and then `leave`; after false, do not call.
    bool enter();
    void leave();
    /// Turns calls away for good, then waits for those under way on other threads. It does not wait for one
    /// on this thread, so a callback may close its own gate.
    void close();
    bool isClosed() const;

private:
    mutable Mutex _mutex;
    Condition _left;
    std::vector<std::thread::id> _inside ZR_GUARDED_BY(_mutex);
    bool _closed ZR_GUARDED_BY(_mutex) = false;
};

/// The token of a subscriber. When its destructor has returned, the callback never starts again.
///
/// A callback under way on another thread is waited for; so nobody destroys a token while holding a lock that
/// the callback takes.
///
/// Ownership: owned by the subscriber; moved, not copied. An empty one stands for no subscription.
/// Threads:   one at a time.
/// Errors:    none.
class [[nodiscard]] Subscription {
public:
    Subscription() = default;
    /// `forget` takes the callback out of its publisher, after the gate was closed.
    Subscription(std::shared_ptr<CallGate> gate, std::function<void()> forget)
        : _gate(std::move(gate)), _forget(std::move(forget))
    {
    }
    Subscription(Subscription&&) noexcept = default;
    Subscription& operator=(Subscription&& other) noexcept;
    ~Subscription() { cancel(); }

    void cancel();
    explicit operator bool() const { return _gate != nullptr; }

private:
    std::shared_ptr<CallGate> _gate;
    std::function<void()> _forget;
};

/// A list of callbacks that may change while it is called.
///
/// Ownership: owns the callbacks; tokens may outlive the list.
/// Threads:   any. Callbacks run on the calling thread, outside all locks, in the order subscribed.
/// Errors:    what a callback throws is logged, and the next is called.
template <class... Arguments>
class Observers {
public:
    using Callback = std::function<void(const Arguments&...)>;

    Subscription subscribe(Callback callback);
    /// Calls everybody who is subscribed now and still is when the turn comes.
    void call(const Arguments&... arguments) const;
    std::size_t count() const;

private:
    struct Entry {
        CallGate gate;
        Callback callback;
    };
    struct List {
        Mutex mutex;
        std::vector<std::shared_ptr<Entry>> entries ZR_GUARDED_BY(mutex);
    };
    std::shared_ptr<List> _list = std::make_shared<List>();
};

/// Calls `call` unless the gate is closed, and logs what it throws.
void callThrough(CallGate& gate, const std::function<void()>& call);

template <class... Arguments>
Subscription Observers<Arguments...>::subscribe(Callback callback)
{
    auto entry = std::make_shared<Entry>();
    entry->callback = std::move(callback);
    {
        Lock lock(_list->mutex);
        _list->entries.push_back(entry);
    }
    std::shared_ptr<CallGate> gate(entry, &entry->gate);
    return {std::move(gate), [list = std::weak_ptr(_list), raw = entry.get()] {
                std::shared_ptr<Entry> last;
                if (const auto held = list.lock()) {
                    Lock lock(held->mutex);
                    for (auto& candidate : held->entries)
                        if (candidate.get() == raw)
                            last = candidate;
                    std::erase(held->entries, last);
                }
            }};
}

template <class... Arguments>
void Observers<Arguments...>::call(const Arguments&... arguments) const
{
    std::vector<std::shared_ptr<Entry>> entries;
    {
        Lock lock(_list->mutex);
        entries = _list->entries;
    }
    for (const auto& entry : entries)
        callThrough(entry->gate, [&] { entry->callback(arguments...); });
}

template <class... Arguments>
std::size_t Observers<Arguments...>::count() const
{
    Lock lock(_list->mutex);
    return _list->entries.size();
}

} // namespace platform
