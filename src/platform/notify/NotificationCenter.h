// How one part of the process tells the others that something happened.
#pragma once

#include "platform/notify/Subscription.h"
#include "platform/value/Value.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {

/// What is told: its name, whom it is about, and details.
struct Notification {
    std::string name;
    Ref<const Object> object;
    /// A dictionary or absent.
    Value userInfo;
};

/// Passes notifications to those who subscribed, within the process.
///
/// Ownership: owns the callbacks until their tokens go. An object to filter by is borrowed, except a text,
///            which is compared by content.
/// Threads:   any; a callback runs on the thread that posts. Callbacks may post, subscribe and unsubscribe.
/// Errors:    what a callback throws is logged, and the next is called.
class NotificationCenter {
public:
    using Callback = std::function<void(const Notification&)>;

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    /// The center of the process. Never destroyed.
    static NotificationCenter& shared();

    /// Calls `callback` for notifications called `name` (any, when absent) about `object` (any, when null).
    Subscription subscribe(std::optional<std::string> name, const Object* object, Callback callback);

    /// Calls, in the order subscribed, everybody who is subscribed now and still is when the turn comes.
    void post(const Notification& notification) const;
    /// The same on the main queue, without waiting.
    void postOnMain(Notification notification) const;

private:
    struct State;
    std::shared_ptr<State> _state;
};

} // namespace platform
