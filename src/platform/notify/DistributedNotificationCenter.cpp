// Which service passes notices between processes, and the two that pass none.
#include "platform/notify/DistributedNotificationCenter.h"

#include "platform/notify/NotificationCenter.h"
#include "platform/run/MainQueue.h"
#include "platform/run/NeverDestroyed.h"

namespace platform {

namespace {

class AbsentCenter final : public DistributedNotificationCenter {
public:
    void post(const DistributedNotification&) override { }
    Subscription subscribe(std::optional<std::string>, std::optional<std::string>, Callback) override
    {
        return {};
    }
};

class LocalCenter final : public DistributedNotificationCenter,
                          public std::enable_shared_from_this<LocalCenter> {
public:
    void post(const DistributedNotification& notification) override
    {
        MainQueue::shared().async([self = shared_from_this(), notification] { self->deliver(notification); });
    }

    Subscription subscribe(
        std::optional<std::string> name, std::optional<std::string> object, Callback callback) override
    {
        const auto filter = object ? String::make(*object) : nullptr;
        return _center.subscribe(
            std::move(name), filter.get(), [call = std::move(callback)](const Notification& notice) {
                const auto about = Value(notice.object);
                call({notice.name,
                    about.isString() ? std::optional(std::string(about.asText())) : std::nullopt,
                    notice.userInfo});
            });
    }

private:
    void deliver(const DistributedNotification& notice) const
    {
        Ref<const Object> object;
        if (notice.object)
            object = String::make(*notice.object);
        _center.post({notice.name, object, notice.userInfo});
    }

    NotificationCenter _center;
};

struct Installed {
    Mutex mutex{LockRank::leaf};
    std::shared_ptr<DistributedNotificationCenter> center ZR_GUARDED_BY(
        mutex) = std::make_shared<AbsentCenter>();
    bool isChosen ZR_GUARDED_BY(mutex) = false;
};

Installed& installed()
{
    static const NeverDestroyed<Installed> only;
    return *only;
}

} // namespace

std::shared_ptr<DistributedNotificationCenter> DistributedNotificationCenter::shared()
{
    Lock lock(installed().mutex);
    return installed().center;
}

bool DistributedNotificationCenter::isInstalled()
{
    Lock lock(installed().mutex);
    return installed().isChosen;
}

std::shared_ptr<DistributedNotificationCenter> DistributedNotificationCenter::install(
    std::shared_ptr<DistributedNotificationCenter> center)
{
    if (!center)
        center = std::make_shared<AbsentCenter>();
    Lock lock(installed().mutex);
    installed().isChosen = true;
    return std::exchange(installed().center, std::move(center));
}

std::shared_ptr<DistributedNotificationCenter> makeLocalDistributedNotificationCenter()
{
    return std::make_shared<LocalCenter>();
}

} // namespace platform
