// How entries come and go while a notification is on its way to them.
#include "store/ZRSafeNotificationReflector.h"

#include <fmt/format.h>

using platform::Lock;
using platform::Notification;
using platform::Object;
using platform::Ref;
using platform::Subscription;

/// That the reflector listens for one name and object, and for how many entries. The reflector's monitor
/// guards it.
///
/// Ending a token waits for calls under way on other threads. A selector may want a lock that the remover
/// holds, so the token never ends while a selector runs: the last call to leave takes it along.
struct ZRSafeNotificationReflector::Registration {
    std::size_t entries = 0;
    std::size_t callsInside = 0;
    bool isOver = false;
    Subscription token;

    /// The token, when its time has come.
    Subscription takeTokenIfIdle() { return isOver && callsInside == 0 ? std::move(token) : Subscription(); }
};

ZRSafeNotificationReflector::ZRSafeNotificationReflector(
    platform::NotificationCenter& center, std::string name)
    : _center(center), _name(std::move(name))
{
}

// Whoever is inside holds a share of the reflector, so no selector runs now.
ZRSafeNotificationReflector::~ZRSafeNotificationReflector()
{
    std::unordered_map<std::string, std::shared_ptr<Registration>> last;
    {
        Lock lock(_monitor);
        last.swap(_notificationSignatures);
    }
    for (const auto& [signature, registration] : last)
        registration->token.cancel();
}

std::string ZRSafeNotificationReflector::signatureForName(
    const std::optional<std::string>& name, const Object* object)
{
    const auto* text = dynamic_cast<const platform::String*>(object);
    return text ? fmt::format("{}-\"{}\"", name.value_or(""), text->text())
                : fmt::format("{}-{}", name.value_or(""), static_cast<const void*>(object));
}

Ref<ZRSafeNotificationEntry> ZRSafeNotificationReflector::addSafeObserver(const Object* target,
    ZRSafeNotificationEntry::Selector selector, std::optional<std::string> name, const Object* object)
{
    auto entry =
        platform::makeRef<ZRSafeNotificationEntry>(target, std::move(selector), std::move(name), object);
    Lock lock(_monitor);
    _observers.addObject(entry);
    auto& registration = _notificationSignatures[signatureForName(entry->name(), object)];
    if (!registration)
        registration = registerOnCenter(entry->name(), object);
    ++registration->entries;
    return entry;
}

std::shared_ptr<ZRSafeNotificationReflector::Registration> ZRSafeNotificationReflector::registerOnCenter(
    const std::optional<std::string>& name, const Object* object)
{
    auto registration = std::make_shared<Registration>();
    registration->token = _center.subscribe(
        name, object, [this, registration](const Notification& notice) { receive(*registration, notice); });
    return registration;
}

bool ZRSafeNotificationReflector::removeObserver(const Ref<ZRSafeNotificationEntry>& entry)
{
    // Ends outside the monitor, which a call that begins just now wants.
    Subscription over;
    Lock lock(_monitor);
    if (!_observers.containsObject(entry))
        return false;
    entry->close();
    over = dropOne(signatureForName(entry->name(), entry->object()));
    _observers.removeObject(entry);
    return true;
}

Subscription ZRSafeNotificationReflector::dropOne(const std::string& signature)
{
    const auto at = _notificationSignatures.find(signature);
    const auto registration = at->second;
    if (--registration->entries > 0)
        return {};
    _notificationSignatures.erase(at);
    registration->isOver = true;
    return registration->takeTokenIfIdle();
}

// From the real center. A selector may let go of the last share of the reflector.
void ZRSafeNotificationReflector::receive(Registration& registration, const Notification& notification)
{
    if (!retainIfOwned())
        return;
    const auto self = Ref<ZRSafeNotificationReflector>::adopt(this);
    if (!enter(registration))
        return;
    notificationFunnel(notification);
    leave(registration);
}

bool ZRSafeNotificationReflector::enter(Registration& registration)
{
    Lock lock(_monitor);
    if (registration.isOver)
        return false;
    ++registration.callsInside;
    return true;
}

void ZRSafeNotificationReflector::leave(Registration& registration)
{
    Subscription over;
    Lock lock(_monitor);
    --registration.callsInside;
    over = registration.takeTokenIfIdle();
}

void ZRSafeNotificationReflector::notificationFunnel(const Notification& notification)
{
    ++_receivedNotifications;
    _observers.each([&](const Ref<ZRSafeNotificationEntry>& entry) {
        if (entry->postNotification(notification))
            ++_reflectedNotifications;
    });
}

std::string ZRSafeNotificationReflector::description() const
{
    return fmt::format("<ZRSafeNotificationReflector {}: {}, {} observers>", static_cast<const void*>(this),
        _name, _observers.count());
}
