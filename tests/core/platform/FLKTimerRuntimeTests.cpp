#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "core/platform/FLKManualMainQueue.h"
#include "core/platform/FLKTimer.h"

TEST(FLKTimer, OneShotFiresOnceAtItsInterval) {
    auto queue = std::make_shared<FLKManualMainQueue>();
    std::vector<double> firings;
    auto timer = FLKTimer::scheduledTimer(1.0, false, [&](FLKTimer&) { firings.push_back(queue->now()); }, queue);
    queue->advanceBy(0.999);
    EXPECT_TRUE(firings.empty());
    EXPECT_TRUE(timer->isValid());
    queue->advanceBy(0.001);
    queue->advanceBy(10.0);
    EXPECT_EQ(firings, std::vector<double>{1.0});
    EXPECT_FALSE(timer->isValid());
}

TEST(FLKTimer, RepeatingFiresAtEachIntervalUntilInvalidated) {
    auto queue = std::make_shared<FLKManualMainQueue>();
    queue->advanceBy(0.25);  // the cadence counts from scheduling
    std::vector<double> firings;
    std::weak_ptr<FLKTimer> weak = FLKTimer::scheduledTimer(0.5, true, [&](FLKTimer& timer) {
        firings.push_back(queue->now());
        if (firings.size() == 4) timer.invalidate();
    }, queue);
    queue->advanceBy(1.3);
    EXPECT_EQ(firings, (std::vector<double>{0.75, 1.25}));
    queue->advanceBy(10.0);
    EXPECT_EQ(firings, (std::vector<double>{0.75, 1.25, 1.75, 2.25}));
    // Once invalidated the loop lets go of the timer and what its block holds.
    EXPECT_TRUE(weak.expired());
}

TEST(FLKTimer, InvalidatedBeforeItsTimeNeverFires) {
    auto queue = std::make_shared<FLKManualMainQueue>();
    int fired = 0;
    auto once = FLKTimer::scheduledTimer(1.0, false, [&](FLKTimer&) { ++fired; }, queue);
    auto repeating = FLKTimer::scheduledTimer(0.1, true, [&](FLKTimer&) { ++fired; }, queue);
    once->invalidate();
    repeating->invalidate();
    queue->advanceBy(5.0);
    EXPECT_EQ(fired, 0);
    EXPECT_FALSE(repeating->isValid());
}

TEST(FLKTimer, UsesTheInstalledMainQueueByDefault) {
    auto queue = std::make_shared<FLKManualMainQueue>();
    FLKMainQueue::setMain(queue);
    int fired = 0;
    auto timer = FLKTimer::scheduledTimer(0.1, false, [&](FLKTimer&) { ++fired; });
    queue->advanceBy(0.1);
    FLKMainQueue::setMain(nullptr);
    EXPECT_EQ(fired, 1);
}
