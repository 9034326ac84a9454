// Observers that leave while they are being told: from inside, from elsewhere, and with their targets.
#include "store/ZRSafeNotificationCenter.h"

#include "platform/files/Preferences.h"
#include "platform/run/Log.h"

#include <gmock/gmock.h>

#include <latch>
#include <thread>

using namespace platform;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class Thing final : public Object { };

class SafeNotificationTest : public testing::Test {
protected:
    Ref<ZRSafeNotificationEntry> hear(
        std::optional<std::string> name, const Object* object, const std::string& who)
    {
        return safe->addSafeObserver(
            nullptr, [this, who](const Notification&) { heard.push_back(who); }, std::move(name), object);
    }

    std::vector<std::string> post(std::string name, Ref<const Object> object = nullptr)
    {
        heard.clear();
        center.post({std::move(name), std::move(object), {}});
        return heard;
    }

    NotificationCenter center;
    Ref<ZRSafeNotificationCenter> safe = ZRSafeNotificationCenter::initWithNotificationCenter(center);
    std::vector<std::string> heard;
};

TEST_F(SafeNotificationTest, TellsThoseWhoAskedForNameAndObject)
{
    const auto a = makeRef<Thing>(), b = makeRef<Thing>();
    const std::vector entries = {hear({}, nullptr, "any"), hear("X", nullptr, "X"), hear({}, a.get(), "a"),
        hear("X", a.get(), "X a"), hear("X", b.get(), "X b"), hear("X", String::make("t").get(), "X t")};
    EXPECT_THAT(post("X", a), UnorderedElementsAre("any", "X", "a", "X a"));
    EXPECT_THAT(post("X", b), UnorderedElementsAre("any", "X", "X b"));
    EXPECT_THAT(post("X", String::make("t")), UnorderedElementsAre("any", "X", "X t"));
    EXPECT_THAT(post("X", String::make("u")), UnorderedElementsAre("any", "X"));
    EXPECT_THAT(post("Y", a), UnorderedElementsAre("any", "a"));
    EXPECT_THAT(post("Y"), UnorderedElementsAre("any"));
    safe->removeObserversInCollection(entries);
    EXPECT_THAT(post("X", a), IsEmpty());
}

// Many entries of one name and object are one observer on the real center, and none once they are gone.
TEST_F(SafeNotificationTest, ListensOnTheRealCenterOnceForEachNameAndObject)
{
    const auto reflector = safe->reflectorForName("X", nullptr);
    const auto first = hear("X", nullptr, "first"), second = hear("X", nullptr, "second"),
               other = hear("Y", nullptr, "other");
    post("X");
    EXPECT_EQ(reflector->receivedNotifications(), 1);
    EXPECT_EQ(reflector->reflectedNotifications(), 2);
    safe->removeObserver(first);
    safe->removeObserver(first);
    EXPECT_THAT(post("X"), UnorderedElementsAre("second")) << "one removed twice counts once";
    safe->removeObserver(second);
    post("X");
    EXPECT_EQ(reflector->receivedNotifications(), 2) << "nobody asks for X any more";
    EXPECT_THAT(post("Y"), UnorderedElementsAre("other"));
    const auto again = hear("X", nullptr, "again");
    EXPECT_THAT(post("X"), UnorderedElementsAre("again"));
}

TEST_F(SafeNotificationTest, LeavesEntriesOfOthersAlone)
{
    const auto elsewhere = ZRSafeNotificationCenter::initWithNotificationCenter(center);
    const auto entry = hear("X", nullptr, "heard");
    elsewhere->removeObserver(entry);
    elsewhere->removeObserver(nullptr);
    EXPECT_THAT(post("X"), UnorderedElementsAre("heard"));
}

TEST_F(SafeNotificationTest, LetsSelectorsChangeTheListUnderDelivery)
{
    Ref<ZRSafeNotificationEntry> one, two, added;
    const auto once = [&](const char* who, Ref<ZRSafeNotificationEntry>& self,
                          Ref<ZRSafeNotificationEntry>& other) {
        return safe->addSafeObserver(
            nullptr,
            [this, who, &self, &other, &added](const Notification&) {
                heard.emplace_back(who);
                safe->removeObserver(self);
                safe->removeObserver(other);
                added = hear("X", nullptr, "added");
            },
            "X", nullptr);
    };
    one = once("one", one, two);
    two = once("two", two, one);
    EXPECT_EQ(post("X").size(), 1U) << "the first that is told removes the other before its turn";
    EXPECT_THAT(post("X"), UnorderedElementsAre("added"));
}

TEST_F(SafeNotificationTest, GoesOnAfterASelectorThatThrows)
{
    const LogCapture log;
    const auto bad = safe->addSafeObserver(
        nullptr, [](const Notification&) { throw std::runtime_error("bad selector"); }, "X", nullptr);
    const auto good = hear("X", nullptr, "good");
    EXPECT_THAT(post("X"), UnorderedElementsAre("good"));
    EXPECT_TRUE(log.contains("bad selector"));
}

// A selector may want a lock that the remover holds: a remover that waited for it would wait for ever.
TEST_F(SafeNotificationTest, RemovesWithoutWaitingForACallUnderWay)
{
    std::latch inside(1), removed(1);
    const auto entry = safe->addSafeObserver(
        nullptr,
        [&](const Notification&) {
            inside.count_down();
            removed.wait();
        },
        "X", nullptr);
    const auto reflector = safe->reflectorForName("X", nullptr);
    std::thread poster([&] { center.post({"X", nullptr, {}}); });
    inside.wait();
    safe->removeObserver(entry);
    const auto next = hear("X", nullptr, "next");
    EXPECT_THAT(post("X"), UnorderedElementsAre("next"));
    EXPECT_EQ(reflector->receivedNotifications(), 2) << "the registration that is over passes nothing on";
    removed.count_down();
    poster.join();
    EXPECT_THAT(post("X"), UnorderedElementsAre("next"));
    EXPECT_EQ(reflector->receivedNotifications(), 3);
}

/// Observes from its birth until its destructor.
class Listener final : public Object {
public:
    Listener(ZRSafeNotificationCenter& center, std::atomic<int>& count) : _center(center), _count(count)
    {
        _entry = center.addSafeObserver(*this, &Listener::changed, "X", nullptr);
    }
    void changed(const Notification&)
    {
        EXPECT_FALSE(_isGone);
        ++_count;
    }

private:
    ~Listener() override
    {
        _center.removeObserver(_entry);
        _isGone = true;
    }

    ZRSafeNotificationCenter& _center;
    std::atomic<int>& _count;
    bool _isGone = false;
    Ref<ZRSafeNotificationEntry> _entry;
};

TEST_F(SafeNotificationTest, HoldsATargetOnlyWhileItIsTold)
{
    std::atomic<int> count = 0;
    auto listener = makeRef<Listener>(*safe, count);
    post("X");
    EXPECT_EQ(count, 1);
    listener = nullptr;
    post("X");
    EXPECT_EQ(count, 1);
    EXPECT_THAT(safe->reflectorForName("X", nullptr)->observers(), IsEmpty());
}

/// An observer that removes itself when it is told, if need be on two threads at once.
struct OneShot {
    void hit(ZRSafeNotificationCenter& center)
    {
        armed.wait();
        center.removeObserver(Ref<ZRSafeNotificationEntry>(entry));
        if (!wasHit.exchange(true))
            done.count_down();
    }

    ZRSafeNotificationEntry* entry = nullptr;
    std::latch armed{1}, done{1};
    std::atomic<bool> wasHit = false;
};

// Threads that post, and threads whose listeners and one-shot observers live for a moment: the sanitizers
// judge, and a wait in a circle would not end.
TEST_F(SafeNotificationTest, StaysSoundWhenManyComeAndGo)
{
    std::atomic<int> count = 0;
    std::atomic<bool> over = false;
    std::vector<std::thread> posters, comers;
    for (int i = 0; i < 2; ++i)
        posters.emplace_back([&] {
            while (!over)
                center.post({"X", nullptr, {}});
        });
    for (int i = 0; i < 3; ++i)
        comers.emplace_back([&] {
            for (int round = 0; round < 300; ++round) {
                const auto listener = makeRef<Listener>(*safe, count);
                const auto shot = std::make_shared<OneShot>();
                const auto entry = safe->addSafeObserver(
                    listener.get(), [this, shot](const Notification&) { shot->hit(*safe); }, "X", nullptr);
                shot->entry = entry.get();
                shot->armed.count_down();
                shot->done.wait();
            }
        });
    for (auto& comer : comers)
        comer.join();
    over = true;
    for (auto& poster : posters)
        poster.join();
    EXPECT_THAT(safe->reflectorForName("X", nullptr)->observers(), IsEmpty());
    const auto late = hear("X", nullptr, "late");
    EXPECT_THAT(post("X"), UnorderedElementsAre("late"));
}

TEST_F(SafeNotificationTest, MayEndInsideADelivery)
{
    const auto entry = safe->addSafeObserver(
        nullptr,
        [this](const Notification&) {
            safe = nullptr;
            heard.emplace_back("last");
        },
        "X", nullptr);
    EXPECT_THAT(post("X"), UnorderedElementsAre("last"));
    EXPECT_THAT(post("X"), IsEmpty());
}

TEST_F(SafeNotificationTest, TellsInTheLogWhoListensAndHowOften)
{
    Preferences::shared().setArgument("ZRSafeNCPostingLogEnabled", true);
    const LogCapture log;
    const auto entry = hear("X", nullptr, "heard");
    post("X");
    safe->dumpObservers();
    safe->dumpStatistics();
    Preferences::shared().setArgument("ZRSafeNCPostingLogEnabled", {});
    EXPECT_TRUE(log.contains("[SafeNCPosting] Post X -> " + entry->description()));
    EXPECT_TRUE(log.contains("    " + entry->description()));
    EXPECT_TRUE(log.contains(safe->reflectorForName("X", nullptr)->description()));
    EXPECT_TRUE(log.contains("Wildcard Object: 1 received, 1 reflected"));
    EXPECT_TRUE(log.contains("Exact: 0 received, 0 reflected"));
}

} // namespace
