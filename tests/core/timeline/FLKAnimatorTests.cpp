#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "core/platform/FLKFrameByFrameClock.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/timeline/FLKAnimator.h"
#include "core/timeline/FLKColorAnimator.h"
#include "core/timeline/FLKColorArrayAnimator.h"
#include "core/timeline/FLKPointAnimator.h"
#include "core/timeline/FLKRectAnimator.h"

namespace {

// An object with animatable properties that remembers every value it was given.
struct Target {
    std::vector<FLKPoint> positions;
    std::vector<FLKRect> exportFrames;
    std::vector<std::vector<FLKColor>> colors;
    std::vector<bool> setOnMainThread;
};

class AnimatorTest : public ::testing::Test {
protected:
    void SetUp() override { FLKMainQueue::setMain(mainQueue); }
    void TearDown() override { FLKMainQueue::setMain(nullptr); }

    std::shared_ptr<FLKAnimator> positionAnimator(FLKPoint from, FLKPoint to,
                                                  std::shared_ptr<FLKUpdatableTimer> timer) {
        return FLKAnimator::animatorWithObject(
            target, "position", from, to,
            [queue = mainQueue](Target& t, const FLKPoint& p) {
                t.positions.push_back(p);
                t.setOnMainThread.push_back(queue->isMainThread());
            },
            std::move(timer));
    }

    // Ticks the clock frame by frame until the animator has left it.
    static int runToEnd(FLKFrameByFrameClock& clock) {
        int ticks = 0;
        while (clock.tick()) ++ticks;
        return ticks;
    }

    std::shared_ptr<FLKManualMainQueue> mainQueue = std::make_shared<FLKManualMainQueue>();
    std::shared_ptr<Target> target = std::make_shared<Target>();
};

TEST_F(AnimatorTest, MemberIsChosenByTheKindOfFromValue) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(60, 100);
    auto any = [](const FLKKeyframeValue&) {};
    auto make = [&](FLKKeyframeValue from, FLKKeyframeValue to) {
        return FLKAnimator::animatorWithObject(std::weak_ptr<void>(target), "key", from, to, any, clock);
    };
    EXPECT_NE(std::dynamic_pointer_cast<FLKRectAnimator>(make(FLKRect(0, 0, 1, 1), FLKRect(1, 1, 2, 2))), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<FLKPointAnimator>(make(FLKPoint{}, FLKPoint{1, 1})), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<FLKColorAnimator>(make(FLKColor::black(), FLKColor::white())), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<FLKColorArrayAnimator>(
                  make(std::vector<FLKColor>{FLKColor::black()}, std::vector<FLKColor>{FLKColor::white()})),
              nullptr);
    EXPECT_EQ(make(FLKSize{1, 2}, FLKSize{3, 4}), nullptr);
    EXPECT_EQ(make(FLKPoint{}, FLKRect(0, 0, 1, 1)), nullptr);
}

TEST_F(AnimatorTest, HalfSecondAtSixtyFpsIsThirtyStepsEndingExactlyAtToValue) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(60, 1000);
    FLKRect from(0, 0, 100, 50), to(30, -60, 160, 110);
    auto animator = FLKAnimator::animatorWithObject(
        target, "exportFrame", from, to, [](Target& t, const FLKRect& r) { t.exportFrames.push_back(r); }, clock);
    ASSERT_NE(animator, nullptr);
    animator->setDuration(0.5);
    EXPECT_EQ(animator->numSteps(), 30u);
    auto keyframes = animator->keyframes();
    ASSERT_EQ(keyframes.size(), 30u);
    for (unsigned i = 0; i < 30; ++i) EXPECT_NEAR(keyframes[i].time, i / 60.0, 1e-12) << i;
    EXPECT_EQ(std::get<FLKRect>(keyframes[0].value), from);
    FLKRect last = std::get<FLKRect>(keyframes[29].value);
    EXPECT_NEAR(last.origin.x, 29.0, 1e-9);
    EXPECT_NEAR(last.size.height, 110 - 2.0, 1e-9);

    animator->startAnimating();
    EXPECT_EQ(runToEnd(*clock), 31);  // 30 steps and the tick that stops
    EXPECT_TRUE(target->exportFrames.empty());
    mainQueue->runPending();
    ASSERT_EQ(target->exportFrames.size(), 31u);
    for (unsigned i = 0; i < 30; ++i) EXPECT_EQ(target->exportFrames[i], std::get<FLKRect>(keyframes[i].value)) << i;
    EXPECT_EQ(target->exportFrames.back(), to);
    EXPECT_FALSE(clock->propagateUpdate(1.0));  // no longer registered
}

TEST_F(AnimatorTest, ThreeStepPointAnimation) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(3, 100);
    auto animator = positionAnimator({0, 0}, {30, 60}, clock);
    animator->setDuration(1.0);
    ASSERT_EQ(animator->numSteps(), 3u);
    std::vector<FLKPoint> values;
    for (const auto& keyframe : animator->keyframes()) values.push_back(std::get<FLKPoint>(keyframe.value));
    EXPECT_EQ(values, (std::vector<FLKPoint>{{0, 0}, {10, 20}, {20, 40}}));

    animator->startAnimating();
    runToEnd(*clock);
    mainQueue->runPending();
    EXPECT_EQ(target->positions, (std::vector<FLKPoint>{{0, 0}, {10, 20}, {20, 40}, {30, 60}}));
}

TEST_F(AnimatorTest, DurationShorterThanAFrameShowsToValueAtTheFirstTick) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(60, 100);
    auto animator = positionAnimator({0, 0}, {5, 5}, clock);
    animator->setDuration(0.01);
    EXPECT_EQ(animator->numSteps(), 0u);
    EXPECT_TRUE(animator->keyframes().empty());
    animator->startAnimating();
    EXPECT_EQ(runToEnd(*clock), 1);
    mainQueue->runPending();
    EXPECT_EQ(target->positions, (std::vector<FLKPoint>{{5, 5}}));
}

TEST_F(AnimatorTest, LateTicksSkipPassedStepsInsteadOfStretching) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(60, 100);
    auto animator = positionAnimator({0, 0}, {30, 0}, clock);  // one unit per step
    animator->setDuration(0.5);
    animator->startAnimating();

    animator->update(0);
    animator->update(2.5 / 60);  // late: steps 1 and 2 have passed, step 3 is shown
    EXPECT_EQ(animator->currentStep(), 5u);
    animator->update(3.5 / 60);  // the next tick goes on from step 5
    animator->update(40.0 / 60);  // far behind: the last step, then done on the next tick
    animator->update(41.0 / 60);
    mainQueue->runPending();
    EXPECT_EQ(target->positions, (std::vector<FLKPoint>{{0, 0}, {3, 0}, {5, 0}, {29, 0}, {30, 0}}));
    EXPECT_DOUBLE_EQ(animator->currentTime(), 41.0 / 60);
}

TEST_F(AnimatorTest, PropertyIsSetOnlyOnTheMainQueueAndNotOnAnObjectThatWentAway) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(60, 100);
    auto animator = positionAnimator({0, 0}, {6, 0}, clock);
    animator->setDuration(0.1);

    std::thread clockThread([&] {
        animator->startAnimating();
        for (int i = 0; i < 3; ++i) clock->tick();
    });
    clockThread.join();
    EXPECT_TRUE(target->positions.empty());
    EXPECT_EQ(mainQueue->runPending(), 3u);
    EXPECT_EQ(target->positions, (std::vector<FLKPoint>{{0, 0}, {1, 0}, {2, 0}}));
    EXPECT_EQ(target->setOnMainThread, (std::vector<bool>{true, true, true}));

    clock->tick();
    std::weak_ptr<Target> gone = target;
    target.reset();
    EXPECT_EQ(mainQueue->runPending(), 1u);  // runs, and finds no object to set
    EXPECT_TRUE(gone.expired());
}

TEST_F(AnimatorTest, StoppingEarlyJumpsToToValueAndLeavesTheClock) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(60, 100);
    auto animator = positionAnimator({0, 0}, {30, 0}, clock);
    animator->setDuration(0.5);
    animator->startAnimating();
    clock->tick();
    clock->tick();
    animator->stopAnimating();
    EXPECT_FALSE(clock->tick());
    mainQueue->runPending();
    EXPECT_EQ(target->positions, (std::vector<FLKPoint>{{0, 0}, {1, 0}, {30, 0}}));
}

TEST_F(AnimatorTest, ColourAnimationStepsInSinglePrecisionComponents) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(4, 100);
    auto animator = FLKAnimator::animatorWithObject(std::weak_ptr<void>(), "color", FLKColor{0, 1, 0.2, 0},
                                                    FLKColor{1, 0, 0.2, 1}, {}, clock);
    animator->setDuration(1.0);
    auto keyframes = animator->keyframes();
    ASSERT_EQ(keyframes.size(), 4u);
    FLKColor third = std::get<FLKColor>(keyframes[2].value);
    EXPECT_EQ(third, (FLKColor{0.5, 0.5, static_cast<float>(0.2), 0.5}));
}

TEST_F(AnimatorTest, ColourArrayAnimationProducesArraysOfElementValues) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(2, 100);
    std::vector<FLKColor> from{FLKColor::black(), FLKColor::white()};
    std::vector<FLKColor> to{FLKColor::white(), FLKColor::clear()};
    auto animator = FLKAnimator::animatorWithObject(
        target, "colors", from, to, [](Target& t, const std::vector<FLKColor>& c) { t.colors.push_back(c); }, clock);
    animator->setDuration(1.0);
    auto keyframes = animator->keyframes();
    ASSERT_EQ(keyframes.size(), 2u);
    EXPECT_EQ(std::get<std::vector<FLKColor>>(keyframes[0].value), from);
    EXPECT_EQ(std::get<std::vector<FLKColor>>(keyframes[1].value),
              (std::vector<FLKColor>{{0.5, 0.5, 0.5, 1}, {0.5, 0.5, 0.5, 0.5}}));
    EXPECT_DOUBLE_EQ(keyframes[1].time, 0.5);

    animator->startAnimating();
    runToEnd(*clock);
    mainQueue->runPending();
    ASSERT_EQ(target->colors.size(), 3u);
    EXPECT_EQ(target->colors.back(), to);
}

}  // namespace
