// Who gets a notification.
#include "platform/notify/NotificationCenter.h"

#include "platform/run/MainQueue.h"
#include "platform/run/NeverDestroyed.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

namespace platform {

namespace {

struct Observer {
    CallGate gate;
    std::uint64_t number = 0;
    const Object* object = nullptr;
    /// The object, when it is a text: it stands for its content, so it is kept.
    Ref<const String> text;
    NotificationCenter::Callback callback;

    bool wants(const Notification& notification) const
    {
        if (!object || notification.object.get() == object)
            return true;
        const auto* other = text ? dynamic_cast<const String*>(notification.object.get()) : nullptr;
        return other && other->text() == text->text();
    }
};

using ObserverList = std::vector<std::shared_ptr<Observer>>;

} // namespace

struct NotificationCenter::State {
    Mutex mutex;
    std::uint64_t lastNumber ZR_GUARDED_BY(mutex) = 0;
    std::unordered_map<std::string, ObserverList> byName ZR_GUARDED_BY(mutex);
    ObserverList ofAnyName ZR_GUARDED_BY(mutex);

    void remove(const std::optional<std::string>& name, const Observer* observer)
    {
        // Let go outside the lock: what the callback holds may end with it.
        std::shared_ptr<Observer> last;
        Lock lock(mutex);
        auto& list = name ? byName[*name] : ofAnyName;
        const auto at = std::find_if(list.begin(), list.end(),
            [observer](const auto& candidate) { return candidate.get() == observer; });
        if (at != list.end()) {
            last = std::move(*at);
            list.erase(at);
        }
        if (name && list.empty())
            byName.erase(*name);
    }

    ObserverList observersOf(const Notification& notification)
    {
        ObserverList chosen;
        const auto choose = [&](const ObserverList& list) {
            for (const auto& observer : list)
                if (observer->wants(notification))
                    chosen.push_back(observer);
        };
        Lock lock(mutex);
        if (const auto named = byName.find(notification.name); named != byName.end())
            choose(named->second);
        const auto middle = static_cast<std::ptrdiff_t>(chosen.size());
        choose(ofAnyName);
        std::inplace_merge(chosen.begin(), chosen.begin() + middle, chosen.end(),
            [](const auto& a, const auto& b) { return a->number < b->number; });
        return chosen;
    }

    void post(const Notification& notification)
    {
        for (const auto& observer : observersOf(notification))
            callThrough(observer->gate, [&] { observer->callback(notification); });
    }
};

NotificationCenter::NotificationCenter() : _state(std::make_shared<State>()) { }
NotificationCenter::~NotificationCenter() = default;

NotificationCenter& NotificationCenter::shared()
{
    static const NeverDestroyed<NotificationCenter> center;
    return *center;
}

Subscription NotificationCenter::subscribe(
    std::optional<std::string> name, const Object* object, Callback callback)
{
    auto observer = std::make_shared<Observer>();
    observer->object = object;
    observer->text = Ref<const String>(dynamic_cast<const String*>(object));
    observer->callback = std::move(callback);
    {
        Lock lock(_state->mutex);
        observer->number = ++_state->lastNumber;
        (name ? _state->byName[*name] : _state->ofAnyName).push_back(observer);
    }
    std::shared_ptr<CallGate> gate(observer, &observer->gate);
    return {std::move(gate), [state = std::weak_ptr(_state), name = std::move(name), raw = observer.get()] {
                if (const auto held = state.lock())
                    held->remove(name, raw);
            }};
}

void NotificationCenter::post(const Notification& notification) const { _state->post(notification); }

void NotificationCenter::postOnMain(Notification notification) const
{
    MainQueue::shared().async([state = _state, kept = std::move(notification)] { state->post(kept); });
}

} // namespace platform
