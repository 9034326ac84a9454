// One observer on the real notification center that serves many.
#pragma once

#include "platform/run/CopyOnWriteSet.h"
#include "store/ZRSafeNotificationEntry.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

/// Passes what the real center tells it on to its entries: the mirror inside a ZRSafeNotificationCenter,
/// which has one for each way of leaving name and object open.
///
/// However many entries ask for one name and object, it observes them on the real center once.
///
/// Ownership: borrows the real center, owns its entries.
/// Threads:   any. Selectors run on the posting thread, outside all locks, in no particular order.
/// Errors:    none.
class ZR_EXPORT ZRSafeNotificationReflector final : public platform::Object {
public:
    /// `name` says in log lines which one it is.
    ZRSafeNotificationReflector(platform::NotificationCenter& center, std::string name);

    platform::Ref<ZRSafeNotificationEntry> addSafeObserver(const platform::Object* target,
        ZRSafeNotificationEntry::Selector selector, std::optional<std::string> name,
        const platform::Object* object);
    /// As `ZRSafeNotificationCenter::removeObserver`; answers false when the entry is not one of these.
    bool removeObserver(const platform::Ref<ZRSafeNotificationEntry>& entry);
    /// Posts to every entry there is now that asked for `notification`.
    void notificationFunnel(const platform::Notification& notification);

    /// What tells one name and object from others: text objects by their content, the rest by identity.
    static std::string signatureForName(
        const std::optional<std::string>& name, const platform::Object* object);

    /// In no particular order.
    std::vector<platform::Ref<ZRSafeNotificationEntry>> observers() const { return _observers.allObjects(); }
    /// How often the real center called, and how often an entry's target was then told.
    std::int64_t receivedNotifications() const { return _receivedNotifications; }
    std::int64_t reflectedNotifications() const { return _reflectedNotifications; }
    const std::string& name() const { return _name; }
    std::string description() const override;

private:
    struct Registration;

    ~ZRSafeNotificationReflector() override;
    std::shared_ptr<Registration> registerOnCenter(
        const std::optional<std::string>& name, const platform::Object* object);
    void receive(Registration& registration, const platform::Notification& notification);
    bool enter(Registration& registration);
    void leave(Registration& registration);
    platform::Subscription dropOne(const std::string& signature) ZR_REQUIRES(_monitor);

    platform::NotificationCenter& _center;
    const std::string _name;
    ZRCopyOnWriteSet<platform::Ref<ZRSafeNotificationEntry>> _observers;
    std::atomic<std::int64_t> _receivedNotifications{0};
    std::atomic<std::int64_t> _reflectedNotifications{0};
    platform::RecursiveMutex _monitor;
    std::unordered_map<std::string, std::shared_ptr<Registration>> _notificationSignatures ZR_GUARDED_BY(
        _monitor);
};
