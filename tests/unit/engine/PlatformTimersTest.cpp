// Real timers on real time: the tests wait on what they expect (bounded), never for a fixed time.

#include <atomic>
#include <future>
#include <mutex>
#include <vector>

#include "TestHelpers.h"
#include "platform/QtMainThreadScheduler.h"
#include "platform/ThreadSerialQueueFactory.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

TEST(ThreadSerialQueueTest, RunsTasksAndTicksOneAtATimeInOrder) {
    ThreadSerialQueueFactory factory;
    auto queue = factory.createSerialQueue("com.glimmerfold.test");
    std::mutex mutex;
    std::vector<int> order;
    std::atomic<int> running{0};
    std::atomic<bool> overlapped{false};
    auto record = [&](int value) {
        overlapped = overlapped || running.fetch_add(1) != 0;
        {
            std::lock_guard lock(mutex);
            order.push_back(value);
        }
        running.fetch_sub(1);
    };
    for (int i = 0; i < 100; ++i) {
        queue->async([&, i] { record(i); });
    }
    std::promise<void> ticked;
    std::atomic<int> ticks{0};
    auto timer = queue->scheduleRepeating(1ms, 0ms, [&] {
        record(-1);
        if (++ticks == 5) {
            ticked.set_value();
        }
    });
    ASSERT_EQ(ticked.get_future().wait_for(5s), std::future_status::ready);
    timer->cancel();
    queue.reset();  // joins

    EXPECT_FALSE(overlapped);
    std::vector<int> tasks;
    std::ranges::copy_if(order, std::back_inserter(tasks), [](int v) { return v >= 0; });
    ASSERT_EQ(tasks.size(), 100u);
    EXPECT_TRUE(std::ranges::is_sorted(tasks));
    EXPECT_GE(ticks.load(), 5);
}

TEST(ThreadSerialQueueTest, CancelDoesNotWaitForARunningTickAndDestructionRunsWhatWasSubmitted) {
    ThreadSerialQueueFactory factory;
    auto queue = factory.createSerialQueue("q");
    std::promise<void> entered;
    std::promise<void> release;
    auto released = release.get_future().share();
    std::atomic<int> ticks{0};
    auto timer = queue->scheduleRepeating(1ms, 0ms, [&] {
        if (ticks++ == 0) {
            entered.set_value();
            released.wait();
        }
    });
    ASSERT_EQ(entered.get_future().wait_for(5s), std::future_status::ready);
    timer->cancel();  // would dead-lock here if cancel waited for the tick
    EXPECT_FALSE(timer->isActive());
    release.set_value();
    std::promise<void> drained;
    queue->async([&] { drained.set_value(); });
    ASSERT_EQ(drained.get_future().wait_for(5s), std::future_status::ready);
    EXPECT_EQ(ticks.load(), 1);

    // The first tick comes at once, however long the interval.
    std::promise<void> ticked;
    auto hourly = queue->scheduleRepeating(1h, 1ms, [&] { ticked.set_value(); });
    ASSERT_EQ(ticked.get_future().wait_for(5s), std::future_status::ready);
    std::atomic<int> done{0};
    std::promise<void> hold;
    auto held = hold.get_future().share();
    queue->async([&] { held.wait(); });
    for (int i = 0; i < 10; ++i) {
        queue->async([&] { ++done; });
    }
    hold.set_value();
    queue.reset();
    EXPECT_EQ(done.load(), 10);
    EXPECT_FALSE(hourly->isActive()) << "a timer may outlive its queue";
    hourly->cancel();
}

TEST(QtMainThreadSchedulerTest, OneShotFiresOnceAndRepeatingTimerMayCancelItself) {
    int argc = 0;
    QCoreApplication app(argc, nullptr);
    QtMainThreadScheduler scheduler;
    int onceFired = 0;
    int repeats = 0;
    std::unique_ptr<Timer> repeating;
    auto once = scheduler.scheduleOnce(1ms, [&] { ++onceFired; });
    repeating = scheduler.scheduleRepeating(1ms, [&] {
        if (++repeats == 3) {
            repeating.reset();  // destroyed from its own handler
        }
    });
    processEventsUntil([&] { return !repeating && !once->isActive(); });
    EXPECT_EQ(onceFired, 1);
    EXPECT_FALSE(once->isActive());
    EXPECT_EQ(repeats, 3);
    QCoreApplication::processEvents();  // the deferred deletion runs here without incident
}

}  // namespace
}  // namespace gf::test
