// Observing notifications so that an observer may leave at any moment.
#pragma once

#include "store/ZRSafeNotificationReflector.h"

/// A notification center whose observers can be removed while they are being told, on any thread and under
/// any lock.
///
/// It posts nothing itself: whatever is posted to the real center behind it arrives.
///
/// Ownership: borrows the real center. It owns its entries, and borrows their targets as those say.
/// Threads:   any. Selectors run on the posting thread, in no particular order.
/// Errors:    what a selector throws is logged, and the next observer is told.
class ZR_EXPORT ZRSafeNotificationCenter final : public platform::Object {
public:
    using Selector = ZRSafeNotificationEntry::Selector;

    /// The one on the notification center of the process. Never destroyed.
    static platform::Ref<ZRSafeNotificationCenter> defaultCenter();
    static platform::Ref<ZRSafeNotificationCenter> initWithNotificationCenter(
        platform::NotificationCenter& center);

    /// Calls `selector` for notifications called `name` (absent: any) about `object` (null: any), for as long
    /// as the entry is not removed. The target is held while it is told, so it may be null only for a
    /// selector that needs nobody.
    platform::Ref<ZRSafeNotificationEntry> addSafeObserver(const platform::Object* target, Selector selector,
        std::optional<std::string> name, const platform::Object* object);
    /// The same for an operation of the target.
    template <class Target>
    platform::Ref<ZRSafeNotificationEntry> addSafeObserver(Target& target,
        void (Target::*selector)(const platform::Notification&), std::optional<std::string> name,
        const platform::Object* object)
    {
        return addSafeObserver(
            static_cast<const platform::Object*>(&target),
            [&target, selector](const platform::Notification& notice) { (target.*selector)(notice); },
            std::move(name), object);
    }

    /// From the return on the observer is not told again. A call under way on another thread goes on to its
    /// end and is not waited for. A null entry, a removed one and one of another center do nothing.
    void removeObserver(const platform::Ref<ZRSafeNotificationEntry>& entry);
    void removeObserversInCollection(const std::vector<platform::Ref<ZRSafeNotificationEntry>>& entries);

    /// Which of the four serves observers that ask like this: "Exact" for both, "Wildcard Name" for an object
    /// alone, "Wildcard Object" for a name alone, "Wildcard" for neither.
    const platform::Ref<ZRSafeNotificationReflector>& reflectorForName(
        const std::optional<std::string>& name, const platform::Object* object) const;

    /// Log lines: each reflector with its entries, or with its counts.
    void dumpObservers() const;
    void dumpStatistics() const;

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    explicit ZRSafeNotificationCenter(platform::NotificationCenter& center);

    const platform::Ref<ZRSafeNotificationReflector> _exactReflector;
    const platform::Ref<ZRSafeNotificationReflector> _wildcardNameReflector;
    const platform::Ref<ZRSafeNotificationReflector> _wildcardObjectReflector;
    const platform::Ref<ZRSafeNotificationReflector> _wildcardReflector;
};
