// Operations: their order, their width, their end.
#include "platform/run/OperationQueue.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/run/WorkQueue.h"
#include "support/Forked.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <latch>
#include <stdexcept>
#include <thread>

using namespace platform;
using testing::ElementsAre;

namespace {

class OperationQueueTest : public testing::Test {
protected:
    /// An operation that notes its name.
    Ref<Operation> noting(const std::string& name)
    {
        return makeRef<BlockOperation>([this, name] { notes.add(name); });
    }

    test::Heard notes;
};

TEST_F(OperationQueueTest, OfWidthOneKeepsTheOrder)
{
    const auto queue = makeRef<OperationQueue>(1);
    std::vector<std::string> expected;
    for (int i = 0; i < 200; ++i) {
        expected.push_back(std::to_string(i));
        queue->add(noting(expected.back()));
    }
    queue->waitUntilAllFinished();
    EXPECT_EQ(notes.texts(), expected);
}

TEST_F(OperationQueueTest, RunsAsManyAtATimeAsItIsWide)
{
    const auto queue = makeRef<OperationQueue>(3);
    // All three must be inside at once for any to leave.
    std::latch inside(3);
    std::atomic<int> now = 0, most = 0;
    for (int i = 0; i < 3; ++i)
        queue->async([&] { inside.arrive_and_wait(); });
    for (int i = 0; i < 50; ++i)
        queue->async([&] {
            const int here = ++now;
            int seen = most;
            while (here > seen && !most.compare_exchange_weak(seen, here)) { }
            std::this_thread::yield();
            --now;
        });
    queue->waitUntilAllFinished();
    EXPECT_LE(most, 3);
}

TEST_F(OperationQueueTest, HoldsAnOperationBackUntilItsDependenciesHaveFinished)
{
    const auto queue = makeRef<OperationQueue>(4), other = makeRef<OperationQueue>(1);
    std::latch go(1);
    const auto first = makeRef<BlockOperation>([&] {
        go.wait();
        notes.add("1");
    });
    const auto second = noting("2"), third = noting("3");
    second->addDependency(first);
    third->addDependency(second);
    third->addDependency(first);
    other->add(third);
    queue->add(second);
    queue->add(noting("0"));
    queue->add(first);
    queue->operations().front()->cancel();
    go.count_down();
    other->waitUntilAllFinished();
    queue->waitUntilAllFinished();
    // The second was cancelled: it finishes without running, and so holds the third back no more.
    EXPECT_TRUE(second->isCancelled());
    EXPECT_TRUE(second->isFinished());
    EXPECT_THAT(notes.texts(), testing::UnorderedElementsAre("0", "1", "3"));
    const auto order = notes.texts();
    EXPECT_LT(std::ranges::find(order, "1"), std::ranges::find(order, "3"));
}

TEST_F(OperationQueueTest, BeginsNothingWhileSuspended)
{
    const auto queue = makeRef<OperationQueue>(2);
    queue->setSuspended(true);
    queue->add(noting("1"));
    queue->add(noting("2"));
    EXPECT_FALSE(queue->waitUntilFinished(0));
    EXPECT_EQ(queue->operationCount(), 2U);
    EXPECT_THAT(notes.texts(), ElementsAre());
    queue->setSuspended(false);
    queue->waitUntilAllFinished();
    EXPECT_THAT(notes.texts(), testing::UnorderedElementsAre("1", "2"));
}

TEST_F(OperationQueueTest, EmptiesWhenAllIsCancelledEvenWhileSuspended)
{
    const auto queue = makeRef<OperationQueue>(1);
    queue->setSuspended(true);
    const auto operation = noting("1");
    operation->setCompletion([this] { notes.add("100"); });
    queue->add(operation);
    queue->add(noting("2"));
    queue->cancelAll();
    queue->waitUntilAllFinished();
    EXPECT_THAT(notes.texts(), ElementsAre("100"));
}

TEST_F(OperationQueueTest, LetsARunningOperationSeeThatItIsCancelled)
{
    class Endless final : public Operation {
    public:
        void main() override
        {
            begun.set_value();
            while (!isCancelled())
                std::this_thread::yield();
        }
        std::promise<void> begun;
    };
    const auto queue = makeRef<OperationQueue>(1);
    const auto endless = makeRef<Endless>();
    queue->add(endless);
    endless->begun.get_future().wait();
    EXPECT_TRUE(endless->isExecuting());
    endless->cancel();
    endless->waitUntilFinished();
    EXPECT_FALSE(endless->isExecuting());
}

TEST_F(OperationQueueTest, FinishesAnOperationThatThrows)
{
    const LogCapture log;
    const auto queue = makeRef<OperationQueue>(1);
    queue->async([] { throw std::runtime_error("no luck"); });
    queue->add(noting("1"));
    queue->waitUntilAllFinished();
    EXPECT_THAT(notes.texts(), ElementsAre("1"));
    EXPECT_TRUE(log.contains("no luck"));
}

TEST_F(OperationQueueTest, WaitsNoLongerThanItWasAskedTo)
{
    ManualClock clock;
    const ClockScope scope(clock);
    const auto queue = makeRef<OperationQueue>(1);
    std::latch go(1);
    queue->async([&] { go.wait(); });
    auto waiting = std::async(std::launch::async, [&] { return queue->waitUntilFinished(2.0); });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    // Moved again and again, since the other thread may not have read its starting time yet.
    while (waiting.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
        clock.advance(2.0);
    EXPECT_FALSE(waiting.get());
    go.count_down();
    EXPECT_TRUE(queue->waitUntilFinished(2.0));
}

TEST_F(OperationQueueTest, TellsWhenItIsEmpty)
{
    const auto queue = makeRef<OperationQueue>(1);
    queue->setSuspended(true);
    queue->add(noting("1"));
    std::promise<void> empty;
    queue->whenEmpty([&] {
        notes.add("2");
        empty.set_value();
    });
    queue->setSuspended(false);
    empty.get_future().wait();
    queue->whenEmpty([this] { notes.add("3"); });
    EXPECT_THAT(notes.texts(), ElementsAre("1", "2", "3"));
}

TEST_F(OperationQueueTest, CancelsWhatWaitsWhenItsLastOwnerGoes)
{
    std::latch begun(1), go(1), gone(1);
    const auto last = noting("2");
    last->setCompletion([&] { gone.count_down(); });
    {
        const auto queue = makeRef<OperationQueue>(1);
        queue->async([&] {
            begun.count_down();
            go.wait();
            notes.add("1");
        });
        queue->add(last);
        begun.wait();
    }
    go.count_down();
    gone.wait();
    EXPECT_THAT(notes.texts(), ElementsAre("1"));
}

TEST_F(OperationQueueTest, IsEmptyAndTakesNothingInAForkedChild)
{
    const auto queue = makeRef<OperationQueue>(1);
    queue->setSuspended(true);
    queue->add(noting("1"));
    EXPECT_TRUE(test::inForkedChild([&] {
        queue->waitUntilAllFinished();
        queue->add(noting("2"));
        queue->cancelAll();
        return queue->operationCount() == 0 && queue->waitUntilFinished(1000);
    }));
    queue->cancelAll();
    queue->waitUntilAllFinished();
}

class CountingDelegate : public ZRWorkQueueDelegate {
public:
    void zrWorkQueue(ZRWorkQueue& queue, std::size_t count) override
    {
        counts.push_back(count);
        if (count == 0) {
            queue.setDelegate(nullptr);
            empty.set_value();
        }
    }
    std::vector<std::size_t> counts;
    std::promise<void> empty;
};

TEST(WorkQueueTest, TellsItsDelegateEachNewCountUntilItIsTakenAway)
{
    CountingDelegate delegate;
    const auto queue = makeRef<ZRWorkQueue>(1);
    queue->setSuspended(true);
    queue->setDelegate(&delegate);
    for (int i = 0; i < 3; ++i)
        queue->async([] {});
    queue->setSuspended(false);
    delegate.empty.get_future().wait();
    EXPECT_THAT(delegate.counts, ElementsAre(1, 2, 3, 2, 1, 0));
    queue->async([] {});
    queue->waitUntilAllFinished();
    EXPECT_EQ(queue->delegate(), nullptr);
    EXPECT_EQ(delegate.counts.size(), 6U);
}

} // namespace
