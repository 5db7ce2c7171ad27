#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "core/platform/FLKManualMainQueue.h"
#include "core/scene/FLKPlane.h"
#include "core/scene/FLKSprite.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKSelection.h"
#include "editing/FLKSelectionEditingWidgetViewModel.h"

namespace {

std::shared_ptr<FLKSprite> spriteWithFrame(const FLKRect& frame) {
    auto sprite = std::make_shared<FLKSprite>();
    sprite->setShape(FLKPlane::planeWithFrame(frame));
    return sprite;
}

void expectRect(const FLKRect& actual, const FLKRect& expected) {
    EXPECT_NEAR(actual.origin.x, expected.origin.x, 1e-9);
    EXPECT_NEAR(actual.origin.y, expected.origin.y, 1e-9);
    EXPECT_NEAR(actual.size.width, expected.size.width, 1e-9);
    EXPECT_NEAR(actual.size.height, expected.size.height, 1e-9);
}

FLKEvent mouse(FLKEventType type, double x, double y) { return FLKEvent::mouseEvent(type, {x, y}); }

FLKEvent commandScroll(double deltaY) {
    FLKEvent event;
    event.type = FLKEventType::scrollWheel;
    event.modifierFlags = FLKEventModifierFlagCommand;
    event.scrollingDeltaY = deltaY;
    return event;
}

class SelectionEditingTest : public ::testing::Test {
protected:
    void SetUp() override {
        viewModel = std::make_shared<FLKSelectionEditingWidgetViewModel>(cursors, queue, &pipeline);
    }

    // Mouse moved, down, the drag points, then up.
    void drag(std::initializer_list<FLKPoint> path) {
        auto it = path.begin();
        viewModel->canvasViewDidReceiveMouseMovedEvent(nullptr, mouse(FLKEventType::mouseMoved, it->x, it->y));
        viewModel->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, it->x, it->y));
        for (++it; it != path.end(); ++it) {
            viewModel->canvasViewDidReceiveMouseDraggedEvent(nullptr, mouse(FLKEventType::mouseDragged, it->x, it->y));
        }
        viewModel->canvasViewDidReceiveMouseUpEvent(nullptr, mouse(FLKEventType::mouseUp, 0, 0));
    }

    std::shared_ptr<FLKCursorManager> cursors = std::make_shared<FLKCursorManager>();
    std::shared_ptr<FLKManualMainQueue> queue = std::make_shared<FLKManualMainQueue>();
    FLKActionPipeline pipeline;
    std::shared_ptr<FLKSelectionEditingWidgetViewModel> viewModel;
};

TEST(FLKSelectionTest, EmptySelectionHasNullBoundsAndAbsentCentre) {
    FLKSelection selection;
    EXPECT_TRUE(selection.bounds().isNull());
    EXPECT_EQ(selection.center().x, -3.4028234663852886e38);
    EXPECT_EQ(selection.center().y, -3.4028234663852886e38);
    EXPECT_FALSE(selection.hitTest({0, 0}));
}

TEST(FLKSelectionTest, BoundsIgnoreEmptyShapesAndCopyKeepsObjects) {
    FLKSelection selection;
    selection.addObject(spriteWithFrame({10, 10, 20, 20}));
    selection.addObject(std::make_shared<FLKSprite>());  // no shape: a zero rectangle, ignored
    selection.addObject(spriteWithFrame({40, 0, 10, 5}));
    expectRect(selection.bounds(), {10, 0, 40, 30});
    EXPECT_EQ(selection.center(), (FLKPoint{30, 15}));

    auto copy = selection.copy();
    copy->removeAllObjects();
    EXPECT_EQ(selection.count(), 3u);
}

TEST(FLKSelectionTest, StretchRightEdgeOfTwoSquaresKeepsTheirLayout) {
    auto left = spriteWithFrame({0, 0, 50, 50});
    auto right = spriteWithFrame({50, 0, 50, 50});
    FLKSelection selection;
    selection.addObject(left);
    selection.addObject(right);

    selection.stretchBy({10, 0}, 3);
    expectRect(left->bounds(), {0, 0, 55, 50});
    expectRect(right->bounds(), {55, 0, 55, 50});

    // Edge 0 moves the min-x and min-y sides; the far sides stay put.
    FLKSelection single;
    auto square = spriteWithFrame({0, 0, 100, 100});
    single.addObject(square);
    single.stretchBy({10, 20}, 0);
    expectRect(square->bounds(), {10, 20, 90, 80});
}

TEST_F(SelectionEditingTest, HandlePickingPrefersCornersThenSidesThenMinX) {
    viewModel->selection()->addObject(spriteWithFrame({0, 0, 100, 100}));
    struct Case {
        FLKPoint pointer;
        size_t edge;
        int64_t cursor;
    };
    const Case cases[] = {
        {{5, 5}, 0, FLKCursorTypeUpLeftDownRight},       // corner beats both sides
        {{107, -7}, 2, FLKCursorTypeUpRightDownLeft},    // 7,7 off: inside the radius
        {{108, -8}, 1, FLKCursorTypeUpDown},             // 8,8 off: outside, but on the top band
        {{50, 96}, 5, FLKCursorTypeUpDown},
        {{-9, 50}, 7, FLKCursorTypeLeftRight},
        {{103, 50}, 3, FLKCursorTypeLeftRight},
        {{-5, 95}, 6, FLKCursorTypeUpRightDownLeft},
        {{50, 50}, FLKSelection::kNoEdge, FLKCursorTypeOpenHand},
        {{150, 50}, FLKSelection::kNoEdge, FLKCursorTypeArrow},
    };
    for (const auto& c : cases) {
        viewModel->canvasViewDidReceiveMouseMovedEvent(nullptr, mouse(FLKEventType::mouseMoved, c.pointer.x, c.pointer.y));
        EXPECT_EQ(viewModel->currentEdge(), c.edge) << c.pointer.x << "," << c.pointer.y;
        EXPECT_EQ(cursors->cursorType(), c.cursor) << c.pointer.x << "," << c.pointer.y;
    }
    EXPECT_FALSE(viewModel->swallowsEvent(mouse(FLKEventType::mouseMoved, 150, 50), nullptr));

    // A selection narrower than twice the reach: the pointer is near both sides.
    viewModel->selection()->removeAllObjects();
    viewModel->selection()->addObject(spriteWithFrame({0, 0, 15, 100}));
    viewModel->canvasViewDidReceiveMouseMovedEvent(nullptr, mouse(FLKEventType::mouseMoved, 8, 50));
    EXPECT_EQ(viewModel->currentEdge(), 7u);
    EXPECT_EQ(viewModel->edgeOffset(), (FLKPoint{-8, 0}));
    EXPECT_TRUE(viewModel->swallowsEvent(mouse(FLKEventType::mouseMoved, 8, 50), nullptr));
}

TEST_F(SelectionEditingTest, DraggingRightHandlePastLeftSideDropsTheCrossingSteps) {
    auto square = spriteWithFrame({0, 0, 100, 100});
    viewModel->selection()->addObject(square);
    drag({{100, 50}, {60, 50}, {20, 50}, {-20, 50}, {-60, 50}});
    EXPECT_GT(square->bounds().width(), 0);
    expectRect(square->bounds(), {0, 0, 20, 100});
    EXPECT_EQ(pipeline.undoQueue().size(), 1u);
}

TEST_F(SelectionEditingTest, UnchangedDragsRecordNothing) {
    // Sizes that scale exactly, so "back where it was" is bit for bit.
    auto square = spriteWithFrame({0, 0, 64, 64});
    viewModel->selection()->addObject(square);
    drag({{32, 32}, {50, 60}, {32, 32}});  // move there and back
    drag({{64, 32}, {128, 32}, {64, 32}});  // stretch there and back
    drag({{32, 32}});                       // a click
    EXPECT_TRUE(pipeline.undoQueue().empty());
    EXPECT_EQ(viewModel->transformingAction(), nullptr);
    expectRect(square->bounds(), {0, 0, 64, 64});
}

TEST_F(SelectionEditingTest, MoveThenUndoRestoresTheExactSprite) {
    auto sprite = spriteWithFrame({10.25, 20.5, 100, 50});
    viewModel->selection()->addObject(sprite);
    const FLKJSON before = sprite->serialized();

    drag({{50, 40}, {53.3, 41.1}, {71.7, 12.9}});
    EXPECT_EQ(cursors->cursorType(), FLKCursorTypeClosedHand);
    EXPECT_NEAR(viewModel->cumulativeMoveOffset().x, 21.7, 1e-9);
    EXPECT_NEAR(viewModel->cumulativeMoveOffset().y, -27.1, 1e-9);
    const FLKJSON after = sprite->serialized();
    ASSERT_NE(before, after);

    // The live selection changes meanwhile; restoring goes by identifier.
    viewModel->selection()->removeAllObjects();
    pipeline.undo();
    EXPECT_EQ(sprite->serialized(), before);
    pipeline.redo();
    EXPECT_EQ(sprite->serialized(), after);
}

TEST_F(SelectionEditingTest, EscapeMidDragCommitsTheEdit) {
    auto sprite = spriteWithFrame({0, 0, 100, 100});
    viewModel->selection()->addObject(sprite);
    viewModel->canvasViewDidReceiveMouseMovedEvent(nullptr, mouse(FLKEventType::mouseMoved, 50, 50));
    viewModel->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, 50, 50));
    viewModel->canvasViewDidReceiveMouseDraggedEvent(nullptr, mouse(FLKEventType::mouseDragged, 60, 70));
    EXPECT_TRUE(viewModel->swallowsEvent(mouse(FLKEventType::mouseDragged, 60, 70), nullptr));

    viewModel->canvasViewDidReceiveCancelOperation(nullptr);
    EXPECT_EQ(cursors->cursorType(), FLKCursorTypeArrow);
    ASSERT_EQ(pipeline.undoQueue().size(), 1u);
    expectRect(sprite->bounds(), {10, 20, 100, 100});
    pipeline.undo();
    expectRect(sprite->bounds(), {0, 0, 100, 100});
}

TEST_F(SelectionEditingTest, CommandScrollBurstIsOneUndoStep) {
    auto sprite = spriteWithFrame({0, 0, 100, 100});
    viewModel->selection()->addObject(sprite);
    for (int step = 0; step < 5; ++step) {
        viewModel->canvasViewDidReceiveScrollWheelEvent(nullptr, commandScroll(1));
        queue->advanceBy(0.4);
    }
    EXPECT_TRUE(pipeline.undoQueue().empty());
    EXPECT_NE(viewModel->transformingAction(), nullptr);
    const double width = sprite->bounds().width();
    EXPECT_NEAR(width, 100 * std::pow(1.1, 5), 1e-6);

    queue->advanceBy(0.2);
    EXPECT_EQ(pipeline.undoQueue().size(), 1u);
    EXPECT_EQ(viewModel->transformingAction(), nullptr);
    EXPECT_EQ(viewModel->mouseScrollEndTimer(), nullptr);

    // A wheel step without Command is not this widget's.
    viewModel->canvasViewDidReceiveScrollWheelEvent(nullptr, mouse(FLKEventType::scrollWheel, 0, 0));
    queue->advanceBy(1);
    EXPECT_EQ(pipeline.undoQueue().size(), 1u);

    pipeline.undo();
    expectRect(sprite->bounds(), {0, 0, 100, 100});
}

TEST_F(SelectionEditingTest, PinchNeedsCommandAndFollowsItsPhases) {
    auto sprite = spriteWithFrame({0, 0, 100, 100});
    viewModel->selection()->addObject(sprite);
    FLKEvent pinch;
    pinch.type = FLKEventType::magnify;
    pinch.magnification = 0.5;
    for (auto phase : {FLKEventPhaseBegan, FLKEventPhaseChanged, FLKEventPhaseEnded}) {
        pinch.phase = phase;
        viewModel->canvasViewDidReceiveMagnifyEvent(nullptr, pinch);
    }
    expectRect(sprite->bounds(), {0, 0, 100, 100});
    EXPECT_TRUE(pipeline.undoQueue().empty());

    pinch.modifierFlags = FLKEventModifierFlagCommand;
    for (auto phase : {FLKEventPhaseBegan, FLKEventPhaseChanged, FLKEventPhaseEnded}) {
        pinch.phase = phase;
        viewModel->canvasViewDidReceiveMagnifyEvent(nullptr, pinch);
    }
    expectRect(sprite->bounds(), {-25, -25, 150, 150});
    EXPECT_EQ(pipeline.undoQueue().size(), 1u);
}

}  // namespace
