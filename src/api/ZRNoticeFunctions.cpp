// How a program hears that the roster changed, by itself and by others, and on which thread.
#include "api/ZRNoticeFunctions.h"

#include "api/Border.h"
#include "api/ZRRosterFunctions.h"
#include "api/ZRValueFunctions.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/MainQueue.h"
#include "store/ZRRoster.h"

#include <memory>

using border::guarded;
using platform::MainQueue;
using platform::Notification;
using platform::Object;
using platform::Ref;

int ZRMainQueueGetFileDescriptor()
{
    return guarded([] { return MainQueue::shared().fileDescriptor(); }, -1);
}

void ZRMainQueueDrain()
{
    guarded([] { MainQueue::shared().drain(); });
}

namespace {

/// What the rooms beneath tell each other is no business of programs: it has no contract.
bool isPublic(std::string_view name) { return name.starts_with("ZR") || name.starts_with("kZR"); }

/// Whom a notice is about. Those of own saves name their roster by a text, which tells other processes which
/// it is; in this one a program knows its roster.
ZRTypeRef subjectOf(const Notification& notice)
{
    const auto* name = dynamic_cast<const platform::String*>(notice.object.get());
    const auto roster = name ? ZRGetSharedRoster() : nullptr;
    return roster && border::as<ZRRoster>(roster).notificationID() == name->text()
        ? roster
        : border::borrowed(notice.object.get());
}

/// One observer: its callback, and the gate that ends it. Notices that wait on the main queue share it, so
/// it may outlive its ZRObserver, closed.
struct Listener {
    platform::CallGate gate;
    Ref<const Object> object;
    ZRNoticeCallback callback = nullptr;
    void* refcon = nullptr;

    void tell(const Notification& notice)
    {
        platform::callThrough(gate, [&] {
            const auto subject = subjectOf(notice);
            if (object && !ZREqual(border::borrowed(object.get()), subject))
                return;
            const auto userInfo = border::objectOf(notice.userInfo);
            callback(notice.name.c_str(), subject, border::borrowed(userInfo.get()), refcon);
        });
    }
};

/// Never at once, not even on the main thread: a notice may be posted under the global lock, in the midst of
/// another call of the program.
void tellOnMain(const std::shared_ptr<Listener>& listener, const Notification& notice)
{
    if (isPublic(notice.name))
        MainQueue::shared().async([listener, notice] { listener->tell(notice); });
}

} // namespace

struct ZRObserver {
    std::shared_ptr<Listener> listener;
    platform::Subscription subscription;
};

ZRObserver* ZRObserverCreate(const char* name, ZRTypeRef object, ZRNoticeCallback callback, void* refcon)
{
    return guarded([&]() -> ZRObserver* {
        if (!callback || border::isBareWord(object) != (object == nullptr))
            return nullptr;
        auto observer = std::make_unique<ZRObserver>();
        observer->listener = std::make_shared<Listener>();
        observer->listener->object = Ref<const Object>(border::objectBehind(object));
        observer->listener->callback = callback;
        observer->listener->refcon = refcon;
        const auto wanted = border::optionalText(name);
        observer->subscription = platform::NotificationCenter::shared().subscribe(
            wanted ? std::optional<std::string>(*wanted) : std::nullopt, nullptr,
            [listener = observer->listener](const Notification& notice) { tellOnMain(listener, notice); });
        return observer.release();
    });
}

void ZRObserverDestroy(ZRObserver* observer)
{
    guarded([&] {
        const std::unique_ptr<ZRObserver> ended(observer);
        if (!ended)
            return;
        ended->listener->gate.close();
        ended->subscription.cancel();
    });
}
