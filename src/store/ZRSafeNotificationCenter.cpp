// Which reflector serves an observer.
#include "store/ZRSafeNotificationCenter.h"

#include "core/ZRLog.h"
#include "platform/run/NeverDestroyed.h"

using platform::makeRef;
using platform::NotificationCenter;
using platform::Object;
using platform::Ref;

ZRSafeNotificationCenter::ZRSafeNotificationCenter(NotificationCenter& center)
    : _exactReflector(makeRef<ZRSafeNotificationReflector>(center, "Exact"))
    , _wildcardNameReflector(makeRef<ZRSafeNotificationReflector>(center, "Wildcard Name"))
    , _wildcardObjectReflector(makeRef<ZRSafeNotificationReflector>(center, "Wildcard Object"))
    , _wildcardReflector(makeRef<ZRSafeNotificationReflector>(center, "Wildcard"))
{
}

Ref<ZRSafeNotificationCenter> ZRSafeNotificationCenter::defaultCenter()
{
    static const platform::NeverDestroyed<Ref<ZRSafeNotificationCenter>> only(
        initWithNotificationCenter(NotificationCenter::shared()));
    return *only;
}

Ref<ZRSafeNotificationCenter> ZRSafeNotificationCenter::initWithNotificationCenter(NotificationCenter& center)
{
    return makeRef<ZRSafeNotificationCenter>(center);
}

const Ref<ZRSafeNotificationReflector>& ZRSafeNotificationCenter::reflectorForName(
    const std::optional<std::string>& name, const Object* object) const
{
    if (name)
        return object ? _exactReflector : _wildcardObjectReflector;
    return object ? _wildcardNameReflector : _wildcardReflector;
}

Ref<ZRSafeNotificationEntry> ZRSafeNotificationCenter::addSafeObserver(
    const Object* target, Selector selector, std::optional<std::string> name, const Object* object)
{
    const auto& reflector = reflectorForName(name, object);
    return reflector->addSafeObserver(target, std::move(selector), std::move(name), object);
}

void ZRSafeNotificationCenter::removeObserver(const Ref<ZRSafeNotificationEntry>& entry)
{
    if (entry)
        reflectorForName(entry->name(), entry->object())->removeObserver(entry);
}

void ZRSafeNotificationCenter::removeObserversInCollection(
    const std::vector<Ref<ZRSafeNotificationEntry>>& entries)
{
    for (const auto& entry : entries)
        removeObserver(entry);
}

void ZRSafeNotificationCenter::dumpObservers() const
{
    for (const auto& reflector :
        {_exactReflector, _wildcardNameReflector, _wildcardObjectReflector, _wildcardReflector}) {
        ZRDLog("{}", reflector->description());
        for (const auto& entry : reflector->observers())
            ZRDLog("    {}", entry->description());
    }
}

void ZRSafeNotificationCenter::dumpStatistics() const
{
    for (const auto& reflector :
        {_exactReflector, _wildcardNameReflector, _wildcardObjectReflector, _wildcardReflector})
        ZRDLog("{}: {} received, {} reflected", reflector->name(), reflector->receivedNotifications(),
            reflector->reflectedNotifications());
}
