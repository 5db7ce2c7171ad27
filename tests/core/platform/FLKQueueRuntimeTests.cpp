#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/platform/FLKDispatchQueue.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/platform/FLKThreadReaper.h"

TEST(FLKDispatchQueue, RunsBlocksOneAtATimeInOrderAndSyncWaitsForEarlierOnes) {
    FLKDispatchQueue queue("org.flickwell.test.serial");
    EXPECT_EQ(queue.label(), "org.flickwell.test.serial");
    std::vector<int> order;  // touched only on the queue
    std::atomic<int> running = 0;
    bool overlapped = false;
    for (int i = 0; i < 500; ++i) {
        queue.async([&, i] {
            if (running.fetch_add(1) != 0) overlapped = true;
            order.push_back(i);
            running.fetch_sub(1);
        });
    }
    std::vector<int> seen;
    bool onQueue = false;
    queue.sync([&] {
        seen = order;
        onQueue = queue.isCurrent();
    });
    EXPECT_FALSE(queue.isCurrent());
    EXPECT_TRUE(onQueue);
    EXPECT_FALSE(overlapped);
    ASSERT_EQ(seen.size(), 500u);
    for (int i = 0; i < 500; ++i) EXPECT_EQ(seen[i], i);
}

TEST(FLKDispatchQueue, SyncFromItsOwnThreadRunsInlineAndRethrows) {
    FLKDispatchQueue queue("org.flickwell.test.inline");
    std::vector<std::string> steps;
    queue.sync([&] {
        steps.push_back("outer");
        queue.sync([&] { steps.push_back("inner"); });
        steps.push_back("after");
    });
    EXPECT_EQ(steps, (std::vector<std::string>{"outer", "inner", "after"}));
    EXPECT_THROW(queue.sync([] { throw std::runtime_error("boom"); }), std::runtime_error);
    int value = 0;
    queue.sync([&] { value = 7; });  // the queue survives a throwing block
    EXPECT_EQ(value, 7);
}

TEST(FLKDispatchQueue, DestructionDrainsSubmittedBlocks) {
    std::atomic<int> count = 0;
    {
        FLKDispatchQueue queue("org.flickwell.test.drain");
        for (int i = 0; i < 200; ++i) queue.async([&] { count.fetch_add(1); });
    }
    EXPECT_EQ(count.load(), 200);
}

TEST(FLKDispatchQueue, QueueReleasedByItsOwnBlockEndsCleanly) {
    auto queue = FLKDispatchQueue::make("org.flickwell.test.self");
    std::promise<void> released, drained;
    // The first block holds the last reference once the test lets go.
    queue->async([keep = queue, go = released.get_future().share()] { go.wait(); });
    queue->async([&] { drained.set_value(); });
    queue.reset();
    released.set_value();
    EXPECT_EQ(drained.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

namespace {
std::atomic<bool> gWorkerExited{false};
// Destroyed as its thread ends; the pause makes a missing join show.
struct ThreadExitMarker {
    ~ThreadExitMarker() {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        gWorkerExited = true;
    }
};
}  // namespace

// A program joins such workers before main() returns, so they never run
// during static destruction.
TEST(FLKDispatchQueue, WorkerOfAQueueReleasedByItsOwnBlockIsJoinedAtShutdown) {
    flk::joinReleasedThreads();
    auto queue = FLKDispatchQueue::make("org.flickwell.test.reaped");
    std::promise<void> letGo, released;
    // The block holds the last reference once the test has let go.
    queue->async([keep = queue, go = letGo.get_future().share(), &released]() mutable {
        thread_local ThreadExitMarker marker;
        (void)marker;
        go.wait();
        keep.reset();
        released.set_value();
    });
    queue.reset();
    letGo.set_value();
    released.get_future().wait();
    EXPECT_EQ(flk::joinReleasedThreads(), 1u);
    EXPECT_TRUE(gWorkerExited);
}

TEST(FLKManualMainQueue, RunsNothingUntilToldThenDelayedTasksInTimeOrder) {
    FLKManualMainQueue queue;
    std::vector<std::string> log;
    std::vector<double> times;
    queue.postAfter(2.0, [&] { log.push_back("c"); times.push_back(queue.now()); });
    queue.postAfter(1.0, [&] { log.push_back("a"); times.push_back(queue.now()); });
    queue.postAfter(1.0, [&] { log.push_back("b"); });
    queue.post([&] { log.push_back("now"); });
    EXPECT_TRUE(log.empty());

    EXPECT_EQ(queue.advanceBy(0.5), 1u);
    EXPECT_EQ(log, std::vector<std::string>{"now"});
    EXPECT_DOUBLE_EQ(queue.now(), 0.5);

    queue.advanceBy(1.0);
    EXPECT_EQ(log, (std::vector<std::string>{"now", "a", "b"}));
    EXPECT_DOUBLE_EQ(queue.now(), 1.5);

    queue.advanceBy(10.0);
    EXPECT_EQ(log, (std::vector<std::string>{"now", "a", "b", "c"}));
    EXPECT_EQ(times, (std::vector<double>{1.0, 2.0}));
    EXPECT_DOUBLE_EQ(queue.now(), 11.5);
}

TEST(FLKManualMainQueue, WorkPostedByATaskRunsBeforeLaterDelayedTasks) {
    FLKManualMainQueue queue;
    std::vector<std::string> log;
    queue.postAfter(1.0, [&] {
        log.push_back("a");
        queue.post([&] { log.push_back("a-follow-up"); });
        queue.postAfter(0.5, [&] { log.push_back("a-delayed"); });
    });
    queue.postAfter(2.0, [&] { log.push_back("b"); });
    queue.advanceBy(3.0);
    EXPECT_EQ(log, (std::vector<std::string>{"a", "a-follow-up", "a-delayed", "b"}));
}

TEST(FLKManualMainQueue, AcceptsTasksFromOtherThreadsAndRunsThemOnTheMainThread) {
    FLKManualMainQueue queue;
    std::atomic<int> ranOnMain = 0;
    bool otherThreadIsMain = true;
    std::thread poster([&] {
        otherThreadIsMain = queue.isMainThread();
        for (int i = 0; i < 100; ++i) queue.post([&] { ranOnMain += queue.isMainThread() ? 1 : 0; });
    });
    poster.join();
    EXPECT_FALSE(otherThreadIsMain);
    EXPECT_EQ(queue.runPending(), 100u);
    EXPECT_EQ(ranOnMain.load(), 100);
}

TEST(FLKRunLoopMainQueue, RunsPostedTasksOnTheRunningThreadUntilStopped) {
    FLKRunLoopMainQueue queue;
    std::vector<int> order;  // main thread only
    bool allOnMain = true;
    std::thread poster([&] {
        for (int i = 0; i < 50; ++i) {
            queue.post([&, i] {
                order.push_back(i);
                allOnMain = allOnMain && queue.isMainThread();
            });
        }
        queue.postAfter(0.001, [&] { queue.stop(); });
    });
    queue.run();
    poster.join();
    ASSERT_EQ(order.size(), 50u);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(order[i], i);
    EXPECT_TRUE(allOnMain);
}

TEST(FLKRunLoopMainQueue, RunUntilEndsWhenTheConditionHolds) {
    FLKRunLoopMainQueue queue;
    bool done = false;
    queue.postAfter(0.002, [&] { done = true; });
    EXPECT_TRUE(queue.runUntil([&] { return done; }, 60.0));

    // A stop from another thread ends a run that is waiting with nothing to do.
    std::thread stopper([&] { queue.stop(); });
    queue.run();
    stopper.join();
}
