// A set that can be walked while others change it.
#pragma once

#include "platform/run/Mutex.h"
#include "platform/value/Object.h"

#include <functional>
#include <memory>
#include <unordered_set>
#include <vector>

namespace platform {

/// Members of sets are equal when their content is; for objects that is `isEqual`.
template <class T>
struct ContentHash {
    std::size_t operator()(const T& member) const { return std::hash<T>{}(member); }
};
template <class T>
struct ContentHash<Ref<T>> {
    std::size_t operator()(const Ref<T>& member) const { return member ? member->hash() : 0; }
};
template <class T>
struct ContentEqual {
    bool operator()(const T& a, const T& b) const { return a == b; }
};
template <class T>
struct ContentEqual<Ref<T>> {
    bool operator()(const Ref<T>& a, const Ref<T>& b) const { return a == b || (a && b && a->isEqual(*b)); }
};

} // namespace platform

/// A set whose writers replace it and whose readers keep what they began with.
///
/// It is made for many reads and few writes: a write copies the set.
///
/// Ownership: owns its members; a reader shares the set it reads until it is done.
/// Threads:   any. Blocks run outside the set's lock and may change the set.
/// Errors:    none; what a block throws passes through.
template <class T>
class ZRCopyOnWriteSet {
public:
    using Set = std::unordered_set<T, platform::ContentHash<T>, platform::ContentEqual<T>>;

    /// Adds `object` unless an equal one is there.
    void addObject(const T& object)
    {
        change([&](Set& set) { set.insert(object); });
    }

    void removeObject(const T& object)
    {
        change([&](Set& set) { set.erase(object); });
    }

    bool containsObject(const T& object) const
    {
        return useReadOnlySet([&](const Set& set) { return set.contains(object); });
    }

    /// The member equal to `object`; an empty T when there is none.
    T member(const T& object) const
    {
        return useReadOnlySet([&](const Set& set) {
            const auto at = set.find(object);
            return at == set.end() ? T() : *at;
        });
    }

    std::size_t count() const
    {
        return useReadOnlySet([](const Set& set) { return set.size(); });
    }

    /// In no particular order.
    std::vector<T> allObjects() const
    {
        return useReadOnlySet([](const Set& set) { return std::vector<T>(set.begin(), set.end()); });
    }

    /// Calls `block` with every member the set has now.
    template <class Visitor>
    void each(Visitor&& block) const
    {
        useReadOnlySet([&](const Set& set) {
            for (const auto& object : set)
                block(object);
        });
    }

    /// Answers what `block` makes of the set as it is now.
    template <class Reader>
    auto useReadOnlySet(Reader&& block) const
    {
        const auto set = current();
        return block(*set);
    }

private:
    std::shared_ptr<const Set> current() const
    {
        platform::Lock lock(_monitor);
        return _set;
    }

    template <class Change>
    void change(Change&& apply)
    {
        // Declared before the lock, so that members that end with the former set end outside it.
        std::shared_ptr<const Set> former;
        platform::Lock lock(_monitor);
        auto copy = std::make_shared<Set>(*_set);
        apply(*copy);
        former = std::exchange(_set, std::move(copy));
    }

    mutable platform::RecursiveMutex _monitor;
    std::shared_ptr<const Set> _set ZR_GUARDED_BY(_monitor) = std::make_shared<const Set>();
};
