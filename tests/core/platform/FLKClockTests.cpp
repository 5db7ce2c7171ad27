#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/platform/FLKClock.h"
#include "core/platform/FLKDispatchQueue.h"
#include "core/platform/FLKFrameByFrameClock.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/platform/FLKSteadyRefreshSource.h"
#include "core/platform/FLKTimeUpdatable.h"

namespace {
// Records what it is offered; refuses the times it is told to refuse once.
class RecordingUpdatable : public FLKTimeUpdatable {
public:
    explicit RecordingUpdatable(double current = 0) : current_(current) {}

    bool update(double time) override {
        std::lock_guard lock(mutex_);
        offered_.push_back(time);
        onClockQueue_.push_back(clockQueue_ && clockQueue_->isCurrent());
        changed_.notify_all();
        if (refuseNext_) {
            refuseNext_ = false;
            return false;
        }
        return true;
    }
    double currentTime() const override {
        std::lock_guard lock(mutex_);
        return current_;
    }

    void setCurrentTime(double t) {
        std::lock_guard lock(mutex_);
        current_ = t;
    }
    void refuseNext() {
        std::lock_guard lock(mutex_);
        refuseNext_ = true;
    }
    void expectUpdatesOn(std::shared_ptr<FLKDispatchQueue> queue) {
        std::lock_guard lock(mutex_);
        clockQueue_ = std::move(queue);
    }
    std::vector<double> offered() const {
        std::lock_guard lock(mutex_);
        return offered_;
    }
    std::vector<bool> onClockQueue() const {
        std::lock_guard lock(mutex_);
        return onClockQueue_;
    }
    bool waitForUpdates(size_t count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(30), [&] { return offered_.size() >= count; });
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    double current_;                     // guarded by mutex_
    bool refuseNext_ = false;            // guarded by mutex_
    std::vector<double> offered_;        // guarded by mutex_
    std::vector<bool> onClockQueue_;     // guarded by mutex_
    std::shared_ptr<FLKDispatchQueue> clockQueue_;  // guarded by mutex_
};

struct LogCapture {
    std::mutex mutex;
    std::vector<std::string> lines;  // guarded by mutex
    LogCapture() {
        flk::setLogSink([this](const std::string& line) {
            std::lock_guard lock(mutex);
            lines.push_back(line);
        });
    }
    ~LogCapture() { flk::setLogSink({}); }
    std::vector<std::string> taken() {
        std::lock_guard lock(mutex);
        return std::exchange(lines, {});
    }
};

// The test thread is the main thread; time moves only when the test says so.
class FLKClockTest : public ::testing::Test {
protected:
    void SetUp() override { FLKMainQueue::setMain(mainQueue); }
    void TearDown() override { FLKMainQueue::setMain(nullptr); }

    void advance(double seconds) { now = now + seconds; }
    // Delivers one display refresh and waits until the clock queue has handled it.
    void refresh() {
        clock->update();
        clock->clockQueue()->sync([] {});
    }

    std::shared_ptr<FLKManualMainQueue> mainQueue = std::make_shared<FLKManualMainQueue>();
    std::atomic<double> now = 1000.0;
    std::shared_ptr<FLKClock> clock = FLKClock::make([this] { return now.load(); });
};
}  // namespace

TEST(FLKFrameByFrameClock, OffersEachFrameTimeOnceAndFinishesAfterTheLast) {
    FLKFrameByFrameClock clock(30, 90);
    auto updatable = std::make_shared<RecordingUpdatable>();
    clock.addUpdatable(updatable);
    clock.addUpdatable(updatable);  // a set: added once
    for (unsigned i = 0; i < 90; ++i) {
        EXPECT_FALSE(clock.isFinished());
        ASSERT_TRUE(clock.tick());
    }
    EXPECT_TRUE(clock.isFinished());
    EXPECT_EQ(clock.currentFrame(), 90u);
    EXPECT_EQ(clock.numFrames(), 90u);
    EXPECT_EQ(clock.fps(), 30u);
    auto offered = updatable->offered();
    ASSERT_EQ(offered.size(), 90u);
    for (unsigned i = 0; i < 90; ++i) EXPECT_DOUBLE_EQ(offered[i], i / 30.0);
}

// One rule for the whole program: 1.01 s is 30 frames everywhere, and 4.1 s
// is 123 although 4.1 x 30 is 122.99999999999999 in doubles.
TEST(FLKFrameByFrameClock, FramesForADurationAreWholeFramesRoundedOnlyAcrossErrors) {
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(2.5, 30), 75u);
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(2.5, 24), 60u);
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(1.01, 30), 30u);
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(4.1, 30), 123u);
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(7.9 / 30, 30), 7u);
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(0.02, 30), 0u);
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(-1.0, 30), 0u);
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(std::nan(""), 30), 0u);
    EXPECT_EQ(FLKFrameByFrameClock::numFramesForDuration(3.0, 0), 0u);
}

TEST(FLKFrameByFrameClock, ARefusalHoldsTheFrameAndLogsWaiting) {
    LogCapture log;
    FLKFrameByFrameClock clock(25, 10);
    auto first = std::make_shared<RecordingUpdatable>();
    auto refusing = std::make_shared<RecordingUpdatable>();
    auto last = std::make_shared<RecordingUpdatable>();
    for (auto& u : {first, refusing, last}) clock.addUpdatable(u);
    ASSERT_TRUE(clock.tick());

    refusing->refuseNext();
    EXPECT_FALSE(clock.tick());
    EXPECT_EQ(clock.currentFrame(), 1u);
    EXPECT_EQ(log.taken(), std::vector<std::string>{"Waiting"});
    EXPECT_EQ(last->offered(), std::vector<double>{0.0});  // not asked after the refusal

    EXPECT_TRUE(clock.tick());
    EXPECT_EQ(clock.currentFrame(), 2u);
    EXPECT_EQ(first->offered(), (std::vector<double>{0.0, 0.04, 0.04}));
    EXPECT_EQ(refusing->offered(), (std::vector<double>{0.0, 0.04, 0.04}));
    EXPECT_EQ(last->offered(), (std::vector<double>{0.0, 0.04}));
    EXPECT_TRUE(log.taken().empty());
}

TEST(FLKFrameByFrameClock, WithoutUpdatablesNoFrameIsMade) {
    FLKFrameByFrameClock clock(30, 2);
    auto stranger = std::make_shared<RecordingUpdatable>();
    clock.removeUpdateable(stranger);
    EXPECT_FALSE(clock.tick());
    EXPECT_EQ(clock.currentFrame(), 0u);

    auto updatable = std::make_shared<RecordingUpdatable>();
    clock.addUpdatable(updatable);
    clock.removeUpdateable(stranger);
    EXPECT_TRUE(clock.tick());
    clock.removeAllUpdatables();
    EXPECT_FALSE(clock.tick());
    EXPECT_EQ(clock.currentFrame(), 1u);
    EXPECT_FALSE(clock.isFinished());
    EXPECT_THROW(FLKFrameByFrameClock(0, 10), std::invalid_argument);
}

TEST_F(FLKClockTest, RegistrationContinuesFromTheUpdatablesCurrentTime) {
    auto updatable = std::make_shared<RecordingUpdatable>(5.0);
    updatable->expectUpdatesOn(clock->clockQueue());
    clock->addUpdatable(updatable);
    advance(1.0 / 60);
    refresh();
    advance(1.0 / 60);
    refresh();
    auto offered = updatable->offered();
    ASSERT_EQ(offered.size(), 2u);
    EXPECT_NEAR(offered[0], 5.0 + 1.0 / 60, 1e-9);
    EXPECT_NEAR(offered[1], 5.0 + 2.0 / 60, 1e-9);
    EXPECT_EQ(updatable->onClockQueue(), (std::vector<bool>{true, true}));

    // Registering again restarts from the current time, without a second entry.
    updatable->setCurrentTime(12.0);
    clock->addUpdatable(updatable);
    advance(0.5);
    refresh();
    offered = updatable->offered();
    ASSERT_EQ(offered.size(), 3u);
    EXPECT_NEAR(offered[2], 12.5, 1e-9);
}

TEST_F(FLKClockTest, RegistrationOffTheMainThreadGoesThroughTheClockQueue) {
    auto updatable = std::make_shared<RecordingUpdatable>(2.0);
    std::thread worker([&] { clock->addUpdatable(updatable); });
    worker.join();
    clock->clockQueue()->sync([] {});  // registration reads the time when the queue gets to it
    advance(1.0);
    refresh();
    ASSERT_EQ(updatable->offered().size(), 1u);
    EXPECT_NEAR(updatable->offered()[0], 3.0, 1e-9);

    std::thread remover([&] { clock->removeUpdateable(updatable); });
    remover.join();
    refresh();
    EXPECT_EQ(updatable->offered().size(), 1u);
}

TEST_F(FLKClockTest, RemovedAndReleasedUpdatablesDropOut) {
    auto kept = std::make_shared<RecordingUpdatable>();
    auto removed = std::make_shared<RecordingUpdatable>();
    auto released = std::make_shared<RecordingUpdatable>();
    std::weak_ptr<RecordingUpdatable> releasedWeak = released;
    for (auto& u : {kept, removed, released}) clock->addUpdatable(u);
    clock->removeUpdateable(removed);
    clock->removeUpdateable(std::make_shared<RecordingUpdatable>());  // never added
    released.reset();
    EXPECT_TRUE(releasedWeak.expired());  // the clock holds updatables weakly

    refresh();
    EXPECT_EQ(kept->offered().size(), 1u);
    EXPECT_TRUE(removed->offered().empty());

    clock->removeAllUpdatables();
    refresh();
    EXPECT_EQ(kept->offered().size(), 1u);
}

TEST_F(FLKClockTest, StartTakesTheFrameRateFromTheRefreshPeriodAndTicks) {
    clock->setRefreshSource(std::make_shared<FLKSteadyRefreshSource>(FLKRefreshSource::Period{1001, 60000}));
    auto updatable = std::make_shared<RecordingUpdatable>();
    clock->addUpdatable(updatable);
    clock->start();
    EXPECT_EQ(clock->fps(), 60u);
    EXPECT_TRUE(updatable->waitForUpdates(3));
    clock.reset();  // stops the ticker while it may be calling in
}

TEST_F(FLKClockTest, WithoutARefreshSourceTheClockNeverTicks) {
    LogCapture log;
    clock->setRefreshSource(std::make_shared<FLKSteadyRefreshSource>(0u));
    clock->start();
    EXPECT_EQ(clock->fps(), 0u);
    EXPECT_EQ(log.taken(), std::vector<std::string>{"DisplayLink created with error:-6661"});
}

TEST(FLKClock, SharedInstanceIsOneObjectWithItsOwnQueue) {
    auto shared = FLKClock::clock();
    EXPECT_EQ(shared, FLKClock::clock());
    EXPECT_EQ(shared->clockQueue()->label(), "org.flickwell.Flickwell.FLKClock.queue");
}
