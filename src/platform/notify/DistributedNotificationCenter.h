// How one process of the user tells the others that something happened.
#pragma once

#include "platform/notify/Subscription.h"
#include "platform/value/Value.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {

/// What is told between processes: plain values only.
struct DistributedNotification {
    std::string name;
    std::optional<std::string> object;
    /// A dictionary of property-list values, or absent.
    Value userInfo;
};

/// Passes notifications to every process of the user that listens, the poster included.
///
/// Notices are hints: one may be lost with its poster, none is repeated.
///
/// Ownership: owns the callbacks until their tokens go.
/// Threads:   any; callbacks run on the main queue.
/// Errors:    none; a notice that cannot be passed on is logged.
class DistributedNotificationCenter {
public:
    using Callback = std::function<void(const DistributedNotification&)>;

    virtual ~DistributedNotificationCenter() = default;

    /// Returns without waiting for any listener.
    virtual void post(const DistributedNotification& notification) = 0;
    /// An absent name or object matches any.
    [[nodiscard]] virtual Subscription subscribe(
        std::optional<std::string> name, std::optional<std::string> object, Callback callback) = 0;

    /// The one in use: where none was installed, the service is absent, and posts and subscriptions do
    /// nothing.
    static std::shared_ptr<DistributedNotificationCenter> shared();
    /// Whether somebody has chosen one by `install`, be it none.
    static bool isInstalled();
    /// Replaces it and answers the former; null makes the service absent.
    static std::shared_ptr<DistributedNotificationCenter> install(
        std::shared_ptr<DistributedNotificationCenter> center);
};

/// One that reaches this process only: for tests, and for hosts that keep to themselves.
std::shared_ptr<DistributedNotificationCenter> makeLocalDistributedNotificationCenter();

} // namespace platform
