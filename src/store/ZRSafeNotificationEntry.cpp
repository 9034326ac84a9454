// Whether an observer is told, and how its target stays alive meanwhile.
#include "store/ZRSafeNotificationEntry.h"

#include "core/ZRLog.h"
#include "platform/run/Executor.h"

#include <fmt/format.h>

using platform::Notification;
using platform::Object;
using platform::Ref;
using platform::String;

ZRSafeNotificationEntry::ZRSafeNotificationEntry(
    const Object* target, Selector selector, std::optional<std::string> name, const Object* object)
    : _target(target)
    , _selector(std::move(selector))
    , _name(std::move(name))
    , _object(object)
    , _text(dynamic_cast<const String*>(object))
{
}

bool ZRSafeNotificationEntry::shouldPostNotification(const Notification& notification) const
{
    if (_name && *_name != notification.name)
        return false;
    if (!_object || _object == notification.object.get())
        return true;
    return _text && notification.object && _text->isEqual(*notification.object);
}

// A target whose last owner has gone is on its way into its destructor, where it removes its entries: until
// it has done so it is there to be asked.
bool ZRSafeNotificationEntry::holdTarget(Ref<const Object>& target) const
{
    platform::Lock lock(_mutex);
    if (_closed || (_target && !_target->retainIfOwned()))
        return false;
    target = Ref<const Object>::adopt(_target);
    return true;
}

bool ZRSafeNotificationEntry::postNotification(const Notification& notification) const
{
    Ref<const Object> target;
    if (!shouldPostNotification(notification) || !holdTarget(target))
        return false;
    ZRDLog("[SafeNCPosting] Post {} -> {}", notification.name, description());
    platform::runLogged([&] { _selector(notification); });
    return true;
}

void ZRSafeNotificationEntry::close()
{
    platform::Lock lock(_mutex);
    _closed = true;
}

std::string ZRSafeNotificationEntry::description() const
{
    return fmt::format("<ZRSafeNotificationEntry {}: target {}, name {}, object {}>",
        static_cast<const void*>(this), static_cast<const void*>(_target), _name ? *_name : "any",
        _text         ? fmt::format("\"{}\"", _text->text())
            : _object ? fmt::format("{}", static_cast<const void*>(_object))
                      : "any");
}
