#include <gtest/gtest.h>

#include <cmath>

#include "FLKBarLettering.h"
#include "FLKFrameLayer.h"
#include "FLKMockAppLayout.h"
#include "FLKRecordingScript.h"

namespace {

TEST(FLKMockAppLayoutTest, CardsKeepToTheirColumnsAndThePagesHoldTheScriptedScrolling) {
    for (auto [width, height, columns] : {std::tuple{1080, 1920, 1}, {1920, 1080, 2}, {270, 480, 1}}) {
        FLKMockAppLayout layout(width, height, 5);
        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
        EXPECT_EQ(layout.columns(), columns);
        const auto& cards = layout.cards();
        for (size_t i = 0; i < cards.size(); ++i) {
            EXPECT_GE(cards[i].frame.minX(), 0);
            EXPECT_LE(cards[i].frame.maxX(), width);
            EXPECT_LE(cards[i].frame.maxY(), layout.listHeight());
            for (size_t j = i + 1; j < cards.size(); ++j) EXPECT_FALSE(cards[i].frame.intersects(cards[j].frame));
        }
        FLKRecordingScript script(layout, 10);
        FLKRecordingState end = script.stateAt(10);
        EXPECT_GT(end.listOffset, layout.contentHeight() * 1.5);
        EXPECT_LE(end.listOffset, layout.listHeight() - layout.contentHeight());
        EXPECT_LE(end.exploreOffset, layout.gridHeight() - layout.contentHeight());
        EXPECT_EQ(layout.tabFrame(FLKMockAppLayout::kTabCount - 1).maxX(), width);
    }
}

TEST(FLKRecordingScriptTest, TheSessionOpensACardGoesBackAndSwitchesTab) {
    FLKMockAppLayout layout(1080, 1920, 1);
    FLKRecordingScript script(layout, 10);
    FLKRecordingState start = script.stateAt(0);
    EXPECT_EQ(start.listOffset, 0);
    EXPECT_FALSE(start.touch);

    double lastOffset = 0;
    bool sawRipple = false;
    for (int frame = 0; frame < 300; ++frame) {
        FLKRecordingState state = script.stateAt(frame / 30.0);
        EXPECT_GE(state.listOffset, lastOffset - 1e-9) << "the feed only scrolls down, frame " << frame;
        lastOffset = state.listOffset;
        if (state.ripple && !sawRipple) {
            sawRipple = true;
            EXPECT_EQ(state.ripple->card, script.openedCard());
            ASSERT_TRUE(state.touch) << "a ripple starts under a finger, frame " << frame;
            FLKRect card = layout.cards()[static_cast<size_t>(script.openedCard())].frame;
            EXPECT_TRUE(card.offsetBy(0, layout.contentTop() - state.listOffset).containsPoint(state.touch->point));
        }
    }
    EXPECT_TRUE(sawRipple);
    EXPECT_EQ(script.stateAt(4.0).detailProgress, 1);
    EXPECT_EQ(script.stateAt(6.0).detailProgress, 0);
    EXPECT_EQ(script.stateAt(7.0).tabProgress, 0);
    EXPECT_EQ(script.stateAt(9.0).tabProgress, 1);

    // A shorter recording is the same session, quicker.
    FLKRecordingScript quick(layout, 5);
    for (double t : {0.4, 1.3, 2.7, 4.1}) {
        EXPECT_DOUBLE_EQ(quick.stateAt(t).listOffset, script.stateAt(2 * t).listOffset) << t;
        EXPECT_DOUBLE_EQ(quick.stateAt(t).detailProgress, script.stateAt(2 * t).detailProgress) << t;
    }
}

TEST(FLKFrameLayerTest, CopiesAreClippedToTheFrameAndTheGivenRowsAndCanBeDimmed) {
    FLKCanvas canvas(4, 4);
    canvas.fill(FLKRoundedRect{FLKRect(0, 0, 4, 4), 0}, FLKPaint::hex(0xc86420));
    FLKFrameLayer layer = FLKFrameLayer::fromCanvas(canvas);
    EXPECT_EQ(layer.row(2)[0], 0x20);  // blue first
    EXPECT_EQ(layer.row(2)[2], 0xc8);

    FLKPixelBuffer frame(8, 8);
    layer.copyInto(frame, 1, 3, 6, 2, 3, 8, 0.5f);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            const uint8_t* p = &frame.bgra[static_cast<size_t>(y) * frame.stride + static_cast<size_t>(x) * 4];
            bool inside = x >= 6 && y >= 3 && y < 5;
            EXPECT_EQ(p[2], inside ? 0x64 : 0) << x << "," << y;
            EXPECT_NEAR(p[3], inside ? 0x80 : 0, 1) << x << "," << y;
        }
    }
}

TEST(FLKBarLetteringTest, InkStaysInsideTheMeasuredBoxAndUnknownCharactersLeaveGaps) {
    FLKBarLettering letters(4);
    FLKCanvas canvas(80, 40);
    letters.draw(canvas, "M?4", 10, 10, FLKPaint::hex(0xffffff));
    const double right = 10 + letters.widthOf("M?4"), bottom = 10 + letters.height();
    const double gapStart = 10 + letters.widthOf("M") + 1, gapEnd = 10 + letters.widthOf("M?") - 2 * 4 - 1;
    bool inkInFirst = false, inkInLast = false;
    for (int y = 0; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            if (canvas.alphaAt(x, y) == 0) continue;
            EXPECT_TRUE(x >= 9 && x <= right && y >= 9 && y <= bottom) << x << "," << y;
            EXPECT_FALSE(x > gapStart && x < gapEnd) << "ink in the gap at " << x;
            inkInFirst |= x < gapStart;
            inkInLast |= x > gapEnd;
        }
    }
    EXPECT_TRUE(inkInFirst);
    EXPECT_TRUE(inkInLast);
}

}  // namespace
