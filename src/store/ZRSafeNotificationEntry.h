// One observer of notifications: whom to tell, of what, and how.
#pragma once

#include "core/ZRExport.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/Mutex.h"
#include "platform/value/Object.h"

#include <functional>
#include <optional>
#include <string>

/// What adding an observer to a ZRSafeNotificationCenter answers, and what removes it again.
///
/// It ends no observation by itself: who lets go of it without removing it stays an observer.
///
/// Ownership: owns the selector. It borrows the target, which removes the entry at the latest in its
///            destructor and is held while it is told. It borrows the object too, of which it looks at the
///            address only; a text it owns, since that stands for its content.
/// Threads:   any.
/// Errors:    what the selector throws is logged.
class ZR_EXPORT ZRSafeNotificationEntry final : public platform::Object {
public:
    using Selector = std::function<void(const platform::Notification&)>;

    /// `target` may be null: then the selector alone is called. An absent name and a null object match any.
    ZRSafeNotificationEntry(const platform::Object* target, Selector selector,
        std::optional<std::string> name, const platform::Object* object);

    /// Whether name and object are those that the observer asked for.
    bool shouldPostNotification(const platform::Notification& notification) const;
    /// Tells the target, unless it did not ask for this, was removed, or is at its end. Answers whether it
    /// was told.
    bool postNotification(const platform::Notification& notification) const;

    /// From the return on no call begins. One under way on another thread goes on to its end, and nobody
    /// waits for it: so this may be called under any lock.
    void close();

    const std::optional<std::string>& name() const { return _name; }
    const platform::Object* object() const { return _object; }
    std::string description() const override;

private:
    bool holdTarget(platform::Ref<const platform::Object>& target) const;

    const platform::Object* const _target;
    const Selector _selector;
    const std::optional<std::string> _name;
    const platform::Object* const _object;
    const platform::Ref<const platform::String> _text;
    mutable platform::Mutex _mutex{platform::LockRank::leaf};
    bool _closed ZR_GUARDED_BY(_mutex) = false;
};
