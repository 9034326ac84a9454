// Who hears of what, and that nobody hears of anything after the token is gone.
#include "platform/notify/NotificationCenter.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"

#include <gmock/gmock.h>

#include <latch>
#include <stdexcept>
#include <thread>

using namespace platform;
using testing::ElementsAre;

namespace {

class Thing final : public Object { };

class NotificationCenterTest : public testing::Test {
protected:
    Subscription hear(std::optional<std::string> name, const Object* object, std::string who)
    {
        return center.subscribe(
            std::move(name), object, [this, who](const Notification&) { heard.push_back(who); });
    }

    std::vector<std::string> post(std::string name, Ref<const Object> object = nullptr)
    {
        heard.clear();
        center.post({std::move(name), std::move(object), {}});
        return heard;
    }

    NotificationCenter center;
    std::vector<std::string> heard;
};

TEST_F(NotificationCenterTest, ChoosesByNameAndObjectInTheOrderSubscribed)
{
    const auto a = makeRef<Thing>(), b = makeRef<Thing>();
    const Subscription all[] = {hear({}, nullptr, "any"), hear("X", nullptr, "X"), hear({}, a.get(), "a"),
        hear("X", b.get(), "X b"), hear("Y", nullptr, "Y"), hear("X", a.get(), "X a")};
    EXPECT_THAT(post("X", a), ElementsAre("any", "X", "a", "X a"));
    EXPECT_THAT(post("X", b), ElementsAre("any", "X", "X b"));
    EXPECT_THAT(post("X"), ElementsAre("any", "X"));
    EXPECT_THAT(post("Y", a), ElementsAre("any", "a", "Y"));
    EXPECT_THAT(post("Z"), ElementsAre("any"));
}

TEST_F(NotificationCenterTest, TellsTextsApartByTheirContent)
{
    const auto token = hear("X", String::make("roster-1").get(), "1");
    EXPECT_THAT(post("X", String::make("roster-1")), ElementsAre("1"));
    EXPECT_THAT(post("X", String::make("roster-2")), ElementsAre());
    EXPECT_THAT(post("X"), ElementsAre());
}

TEST_F(NotificationCenterTest, StopsWithTheToken)
{
    auto first = hear("X", nullptr, "first");
    {
        const auto second = hear("X", nullptr, "second");
        const auto any = hear({}, nullptr, "any");
    }
    EXPECT_THAT(post("X"), ElementsAre("first"));
    first = hear("X", nullptr, "third");
    EXPECT_THAT(post("X"), ElementsAre("third"));
    first.cancel();
    EXPECT_THAT(post("X"), ElementsAre());
}

TEST_F(NotificationCenterTest, LetsCallbacksChangeTheListUnderDelivery)
{
    Subscription self, later, added;
    self = center.subscribe("X", nullptr, [&](const Notification&) {
        heard.emplace_back("self");
        self.cancel();
        later.cancel();
        added = hear("X", nullptr, "added");
    });
    later = hear("X", nullptr, "later");
    EXPECT_THAT(post("X"), ElementsAre("self"));
    EXPECT_THAT(post("X"), ElementsAre("added"));
}

TEST_F(NotificationCenterTest, GoesOnAfterACallbackThatThrows)
{
    const LogCapture log;
    const auto bad =
        center.subscribe("X", nullptr, [](const Notification&) { throw std::runtime_error("bad"); });
    const auto good = hear("X", nullptr, "good");
    EXPECT_THAT(post("X"), ElementsAre("good"));
    EXPECT_TRUE(log.contains("bad"));
}

TEST_F(NotificationCenterTest, KeepsWhatACallbackHoldsNoLongerThanTheToken)
{
    const auto held = std::make_shared<int>(1);
    auto token = center.subscribe("X", nullptr, [held](const Notification&) {});
    token.cancel();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(NotificationCenterTest, WaitsForACallbackOnAnotherThreadBeforeTheTokenIsGone)
{
    std::latch inside(1), mayLeave(1);
    std::atomic<bool> left = false;
    auto token = center.subscribe("X", nullptr, [&](const Notification&) {
        inside.count_down();
        mayLeave.wait();
        left = true;
    });
    std::thread poster([&] { center.post({"X", nullptr, {}}); });
    inside.wait();
    std::thread releaser([&] { mayLeave.count_down(); });
    token.cancel();
    EXPECT_TRUE(left);
    poster.join();
    releaser.join();
}

// The captured object must be dead for no callback: the sanitizers watch.
TEST_F(NotificationCenterTest, NeverCallsIntoWhatIsGone)
{
    std::atomic<bool> stop = false;
    std::thread poster([&] {
        while (!stop)
            center.post({"X", nullptr, {}});
    });
    for (int i = 0; i < 300; ++i) {
        auto counter = std::make_unique<std::atomic<int>>(0);
        auto token =
            center.subscribe("X", nullptr, [raw = counter.get()](const Notification&) { raw->fetch_add(1); });
        if (i % 10 == 0)
            while (counter->load() == 0)
                std::this_thread::yield();
        token.cancel();
    }
    stop = true;
    poster.join();
}

TEST_F(NotificationCenterTest, OutlivedByATokenDoesNoHarm)
{
    Subscription token;
    {
        NotificationCenter brief;
        token = brief.subscribe("X", nullptr, [](const Notification&) {});
    }
    token.cancel();
}

TEST_F(NotificationCenterTest, PostsOnTheMainQueueWithoutWaiting)
{
    MainQueue::shared().fileDescriptor();
    Value info;
    const auto token = center.subscribe("X", nullptr, [&](const Notification& n) { info = n.userInfo; });
    center.postOnMain({"X", nullptr, Value::dictionary({{"key", 1}})});
    EXPECT_TRUE(info.isAbsent());
    MainQueue::shared().drain();
    EXPECT_EQ(info["key"], Value(1));
    MainQueue::shared().abandon();
}

TEST(DistributedNotificationCenterTest, IsAbsentUntilOneIsInstalled)
{
    const auto absent = DistributedNotificationCenter::shared();
    const auto token = absent->subscribe({}, {}, [](const DistributedNotification&) { FAIL(); });
    absent->post({"X", {}, {}});
    EXPECT_TRUE(MainQueue::shared().sync([] {}));
    EXPECT_FALSE(token);
}

TEST(DistributedNotificationCenterTest, OfThisProcessFiltersAndDeliversOnTheMainQueue)
{
    const auto before = DistributedNotificationCenter::install(makeLocalDistributedNotificationCenter());
    const auto center = DistributedNotificationCenter::shared();
    std::vector<std::string> heard;
    const auto note = [&](std::string who) {
        return [&heard, who](const DistributedNotification& notice) {
            EXPECT_TRUE(MainQueue::shared().isMainThread());
            heard.push_back(who + notice.name + notice.object.value_or("-"));
        };
    };
    {
        const Subscription tokens[] = {center->subscribe({}, {}, note("any ")),
            center->subscribe("X", "o", note("X o ")), center->subscribe({}, "o", note("o "))};
        center->post({"X", "o", {}});
        center->post({"Y", {}, {}});
        MainQueue::shared().sync([] {});
    }
    EXPECT_THAT(heard, ElementsAre("any Xo", "X o Xo", "o Xo", "any Y-"));
    DistributedNotificationCenter::install(before);
}

} // namespace
