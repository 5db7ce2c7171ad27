#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/exporter/FLKExportOptions.h"
#include "core/exporter/FLKGIFSizeCalculator.h"
#include "core/exporter/FLKMP4SizeCalculator.h"
#include "core/exporter/FLKVideoSizeIntegritySolver.h"
#include "core/platform/FLKUserFeedback.h"

namespace {
using Events = std::vector<std::string>;

// Beeps and field writes land in one list, so the order of the solver's
// steps is visible.
class RecordingFeedback : public FLKUserFeedback {
public:
    explicit RecordingFeedback(std::shared_ptr<Events> events) : events_(std::move(events)) {}
    void beep() override { events_->push_back("beep"); }
    void presentError(const FLKError&) override {}

private:
    std::shared_ptr<Events> events_;
};

class Field : public FLKVideoSizeAdapter {
public:
    Field(std::string name, std::shared_ptr<Events> events) : name_(std::move(name)), events_(std::move(events)) {}
    std::int64_t integerValue() const override { return value_; }
    void setIntegerValue(std::int64_t value) override {
        value_ = value;
        events_->push_back(name_ + "=" + std::to_string(value));
    }
    // What the user types: not one of the solver's writes.
    void type(std::int64_t value) { value_ = value; }

private:
    std::string name_;
    std::shared_ptr<Events> events_;
    std::int64_t value_ = 0;
};

class FLKVideoSizeIntegritySolverTest : public ::testing::Test {
protected:
    void SetUp() override { FLKUserFeedback::setShared(std::make_shared<RecordingFeedback>(events)); }
    void TearDown() override { FLKUserFeedback::setShared(nullptr); }

    std::shared_ptr<FLKVideoSizeIntegritySolver> open(FLKExportType type, FLKSize videoSize) {
        auto options = FLKExportOptions::exportOptionsWithType(type, "/tmp/out", FLKRect(0, 0, 10, 10), videoSize,
                                                               300, 30, 30, std::nullopt);
        auto solver = FLKVideoSizeIntegritySolver::solverWithWidthAdapter(width, height, options);
        events->clear();
        return solver;
    }
    void typeWidth(FLKVideoSizeIntegritySolver& solver, std::int64_t value) {
        width->type(value);
        solver.solveForAdapter(width.get());
    }
    void typeHeight(FLKVideoSizeIntegritySolver& solver, std::int64_t value) {
        height->type(value);
        solver.solveForAdapter(height.get());
    }

    std::shared_ptr<Events> events = std::make_shared<Events>();
    std::shared_ptr<Field> width = std::make_shared<Field>("w", events);
    std::shared_ptr<Field> height = std::make_shared<Field>("h", events);
};
}  // namespace

TEST(FLKVideoSizeCalculator, TypeChoosesTheBounds) {
    auto gif = FLKVideoSizeCalculator::calculatorWithType(FLKExportTypeGIF, {480, 480});
    EXPECT_NE(dynamic_cast<FLKGIFSizeCalculator*>(gif.get()), nullptr);
    EXPECT_EQ(gif->type(), FLKExportTypeGIF);
    EXPECT_EQ(gif->referenceVideoSize(), (FLKSize{480, 480}));
    EXPECT_EQ(gif->minWidth(), 128);
    EXPECT_EQ(gif->maxWidth(), 1440);

    for (FLKExportType type : {FLKExportTypeMP4, FLKExportType{7}}) {
        auto mp4 = FLKVideoSizeCalculator::calculatorWithType(type, {1080, 1920});
        EXPECT_NE(dynamic_cast<FLKMP4SizeCalculator*>(mp4.get()), nullptr);
        EXPECT_EQ(mp4->type(), type);
        EXPECT_EQ(mp4->minHeight(), 240);
        EXPECT_EQ(mp4->maxHeight(), 1920);
    }

    FLKVideoSizeCalculator base;
    base.setMinHeight(50);
    EXPECT_EQ(base.minWidth(), 50);
    EXPECT_EQ(base.maxWidth(), 0);
}

TEST(FLKVideoSizeCalculator, SidesFollowTheRatioAndAreAlwaysEven) {
    auto portrait = FLKVideoSizeCalculator::calculatorWithType(FLKExportTypeMP4, {1080, 1920});
    EXPECT_EQ(portrait->widthToHeightRatio(), 0.5625);
    EXPECT_EQ(portrait->heightForWidth(1200), 2134);
    EXPECT_EQ(portrait->widthForHeight(1000), 562);
    EXPECT_EQ(portrait->widthForHeight(1001), 564);
    EXPECT_EQ(portrait->maxWidthForWidth(500), 500);
    EXPECT_EQ(portrait->maxWidthForWidth(3000), 1080);
    EXPECT_EQ(portrait->maxHeightForHeight(3000), 1920);

    for (FLKSize reference : {FLKSize{886, 1920}, FLKSize{1920, 1080}, FLKSize{1200, 1600}, FLKSize{800, 450}}) {
        auto calculator = FLKVideoSizeCalculator::calculatorWithType(FLKExportTypeMP4, reference);
        double ratio = reference.width / reference.height;
        for (std::int64_t side = 1; side <= 2000; ++side) {
            std::int64_t height = calculator->heightForWidth(side);
            std::int64_t width = calculator->widthForHeight(side);
            ASSERT_EQ(height % 2, 0) << side;
            ASSERT_EQ(width % 2, 0) << side;
            ASSERT_NEAR(static_cast<double>(height), side / ratio, 2.0);
            ASSERT_NEAR(static_cast<double>(width), side * ratio, 2.0);
        }
    }
}

TEST(FLKVideoSizeCalculator, RatioUsesTheReferenceWidthAsAFloat) {
    FLKVideoSizeCalculator calculator;
    calculator.setReferenceVideoSize({0.1, 1.0});
    EXPECT_EQ(calculator.widthToHeightRatio(), static_cast<double>(0.1f));
    EXPECT_NE(calculator.widthToHeightRatio(), 0.1);
}

TEST_F(FLKVideoSizeIntegritySolverTest, OpensAtThePresetSizeWithinTheBounds) {
    open(FLKExportTypeMP4, {1080, 1920});
    EXPECT_EQ(width->integerValue(), 1080);
    EXPECT_EQ(height->integerValue(), 1920);

    auto options = FLKExportOptions::exportOptionsWithType(FLKExportTypeMP4, "/tmp/out", {}, {1440, 2560}, 1, 30, 30,
                                                           std::nullopt);
    events->clear();
    FLKVideoSizeIntegritySolver solver(width, height, options);
    EXPECT_EQ(*events, (Events{"h=1920", "w=1080"}));
}

TEST_F(FLKVideoSizeIntegritySolverTest, TooWideAWidthRestoresThePreviousWidth) {
    auto solver = open(FLKExportTypeMP4, {1080, 1920});
    typeWidth(*solver, 1200);
    EXPECT_EQ(*events, (Events{"w=1080", "beep", "h=1920"}));

    events->clear();
    typeWidth(*solver, 5000);
    EXPECT_EQ(*events, (Events{"w=1920", "beep", "w=1080", "beep", "h=1920"}));
}

TEST_F(FLKVideoSizeIntegritySolverTest, HeightEditsFollowTheRatioWithoutAlert) {
    auto solver = open(FLKExportTypeMP4, {1080, 1920});
    typeHeight(*solver, 1000);
    EXPECT_EQ(*events, (Events{"w=562"}));
    events->clear();
    typeHeight(*solver, 1001);
    EXPECT_EQ(*events, (Events{"w=564"}));
    events->clear();
    typeWidth(*solver, 720);
    EXPECT_EQ(*events, (Events{"h=1280"}));
}

TEST_F(FLKVideoSizeIntegritySolverTest, TooTallAHeightIsClampedThenFollowedByTheWidth) {
    auto solver = open(FLKExportTypeMP4, {1080, 1920});
    typeHeight(*solver, 2500);
    EXPECT_EQ(*events, (Events{"h=1920", "beep", "w=1080"}));
}

TEST_F(FLKVideoSizeIntegritySolverTest, HeightOverflowingTheWidthUsesThePreviousWidth) {
    auto solver = open(FLKExportTypeMP4, {1920, 886});
    EXPECT_EQ(width->integerValue(), 1920);
    typeHeight(*solver, 1000);
    EXPECT_EQ(*events, (Events{"h=886", "beep", "w=1920"}));
}

TEST_F(FLKVideoSizeIntegritySolverTest, OtherAdaptersAreIgnored) {
    auto solver = open(FLKExportTypeMP4, {1080, 1920});
    Field stranger("x", events);
    stranger.type(99999);
    solver->solveForAdapter(&stranger);
    EXPECT_TRUE(events->empty());
}

TEST_F(FLKVideoSizeIntegritySolverTest, VideoSizeAppliesTheLowerBounds) {
    auto solver = open(FLKExportTypeMP4, {1920, 1080});
    width->type(100);
    EXPECT_EQ(solver->videoSize(), (FLKSize{426, 240}));

    width->type(1280);
    height->type(720);
    EXPECT_EQ(solver->videoSize(), (FLKSize{1280, 720}));
}

TEST_F(FLKVideoSizeIntegritySolverTest, GIFSizesStayBetween128And1440) {
    auto solver = open(FLKExportTypeGIF, {480, 480});
    typeWidth(*solver, 5000);
    EXPECT_EQ(*events, (Events{"w=1440", "beep", "h=1440"}));

    width->type(10);
    height->type(10);
    EXPECT_EQ(solver->videoSize(), (FLKSize{128, 128}));
}
