#include <gtest/gtest.h>

#include <memory>

#include "core/scene/FLKPlane.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKQuad.h"
#include "core/scene/FLKSprite.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/scene/FLKVideoSprite.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKSceneViewActionsNotifier.h"
#include "editing/FLKTooltipsDispatcher.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKHoverWidgetViewModel.h"
#include "editing/FLKSceneViewModel.h"
#include "editing/FLKSelectionWidgetViewModel.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"

namespace {

FLKEvent mouse(FLKEventType type, FLKPoint p) { return FLKEvent::mouseEvent(type, p); }

class VertexEditingTest : public ::testing::Test {
protected:
    void SetUp() override {
        sprite->setShape(FLKQuad::quadWithFrame({0, 0, 100, 100}));
        viewModel = std::make_shared<FLKVertexEditingWidgetViewModel>(cursors, &pipeline);
        viewModel->setSprite(sprite);
    }

    FLKPoint corner(size_t index) const { return sprite->shape()->createPoints().at(index); }

    std::shared_ptr<FLKSprite> sprite = std::make_shared<FLKSprite>();
    std::shared_ptr<FLKCursorManager> cursors = std::make_shared<FLKCursorManager>();
    FLKActionPipeline pipeline;
    std::shared_ptr<FLKVertexEditingWidgetViewModel> viewModel;
};

TEST_F(VertexEditingTest, ConcaveDragIsRefusedAndTheLastConvexQuadIsRecorded) {
    const auto original = sprite->shape();
    // Bottom right is the third point; grabbed 3 units off, and the offset is kept.
    viewModel->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, {97, 97}));
    ASSERT_EQ(viewModel->currentCornerIndex(), 2u);
    EXPECT_EQ(viewModel->currentDistanceVector(), (FLKPoint{3, 3}));

    viewModel->canvasViewDidReceiveMouseDraggedEvent(nullptr, mouse(FLKEventType::mouseDragged, {57, 57}));
    EXPECT_EQ(corner(2), (FLKPoint{60, 60}));
    viewModel->canvasViewDidReceiveMouseDraggedEvent(nullptr, mouse(FLKEventType::mouseDragged, {17, 17}));
    EXPECT_EQ(corner(2), (FLKPoint{60, 60}));  // (20, 20) would fold the quad in
    EXPECT_TRUE(sprite->shape()->isConvex());

    viewModel->canvasViewDidReceiveMouseUpEvent(nullptr, mouse(FLKEventType::mouseUp, {17, 17}));
    EXPECT_EQ(viewModel->currentCornerIndex(), FLKVertexEditingWidgetViewModel::kNoCorner);
    ASSERT_EQ(pipeline.undoQueue().size(), 1u);
    pipeline.undo();
    EXPECT_TRUE(sprite->shape()->isEqual(*original));
    pipeline.redo();
    EXPECT_EQ(corner(2), (FLKPoint{60, 60}));
}

TEST_F(VertexEditingTest, EarlierCornerWinsAndUnchangedDragRecordsNothing) {
    sprite->setShape(FLKQuad::quadWithFrame({0, 0, 8, 8}));
    // (5, 0) is nearer the top right, but the top left comes first.
    EXPECT_EQ(viewModel->cornerIndexForLocation({5, 0}), 0u);
    EXPECT_EQ(viewModel->cornerIndexForLocation({8, 18}), 2u);
    EXPECT_EQ(viewModel->cornerIndexForLocation({8, 18.01}), FLKVertexEditingWidgetViewModel::kNoCorner);

    viewModel->canvasViewDidReceiveMouseMovedEvent(nullptr, mouse(FLKEventType::mouseMoved, {5, 0}));
    EXPECT_EQ(cursors->cursorType(), FLKCursorTypeCrosshair);
    viewModel->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, {5, 0}));
    viewModel->canvasViewDidReceiveMouseDraggedEvent(nullptr, mouse(FLKEventType::mouseDragged, {9, 1}));
    viewModel->canvasViewDidReceiveMouseDraggedEvent(nullptr, mouse(FLKEventType::mouseDragged, {5, 0}));
    viewModel->canvasViewDidReceiveMouseUpEvent(nullptr, mouse(FLKEventType::mouseUp, {5, 0}));
    EXPECT_TRUE(pipeline.undoQueue().empty());
}

TEST_F(VertexEditingTest, ClickInsideKeepsEditingClickOutsideLeavesIt) {
    viewModel->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, {50, 50}));
    EXPECT_EQ(viewModel->sprite(), sprite);
    EXPECT_TRUE(viewModel->swallowsEvent(mouse(FLKEventType::mouseDown, {50, 50}), nullptr));

    viewModel->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, {150, 50}));
    EXPECT_EQ(viewModel->sprite(), nullptr);
    EXPECT_FALSE(viewModel->swallowsEvent(mouse(FLKEventType::mouseDown, {150, 50}), nullptr));
}

TEST_F(VertexEditingTest, CancelMidDragCommitsAndLeaves) {
    viewModel->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, {0, 0}));
    viewModel->canvasViewDidReceiveMouseDraggedEvent(nullptr, mouse(FLKEventType::mouseDragged, {-10, -5}));
    viewModel->canvasViewDidReceiveCancelOperation(nullptr);
    EXPECT_EQ(viewModel->sprite(), nullptr);
    EXPECT_EQ(viewModel->currentAction(), nullptr);
    EXPECT_EQ(pipeline.undoQueue().size(), 1u);
    // Nothing left over keeps swallowing the canvas's events.
    EXPECT_FALSE(viewModel->swallowsEvent(mouse(FLKEventType::mouseMoved, {0, 0}), nullptr));
}

TEST(FLKSceneViewModelTest, ToggleVertexEditingAndRotateNeedOneSelectedObject) {
    auto scene = std::make_shared<FLKObject>();
    auto container = FLKVideoContainer::videoContainerWithFrame({0, 0, 100, 200});
    auto video = std::make_shared<FLKVideoSprite>();
    container->setVideo(video);
    auto other = FLKVideoContainer::videoContainerWithFrame({300, 0, 100, 200});
    scene->addChild(container);
    scene->addChild(other);

    auto selection = std::make_shared<FLKSelection>();
    auto selecting = std::make_shared<FLKSelectionWidgetViewModel>(scene, selection);
    auto vertices = std::make_shared<FLKVertexEditingWidgetViewModel>(std::make_shared<FLKCursorManager>());
    auto hover = std::make_shared<FLKHoverWidgetViewModel>(scene);
    FLKSceneViewModel sceneViewModel(selecting, vertices, hover);

    // Nothing selected: no sprite to edit.
    sceneViewModel.toggleVertexEditingWidget();
    EXPECT_EQ(vertices->sprite(), nullptr);

    selecting->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, {50, 50}));
    ASSERT_EQ(selecting->selectedObjects().size(), 1u);
    hover->canvasViewDidReceiveMouseMovedEvent(nullptr, mouse(FLKEventType::mouseMoved, {50, 50}));
    EXPECT_EQ(hover->highlightedObject(), container);

    sceneViewModel.toggleVertexEditingWidget();
    EXPECT_EQ(vertices->sprite(), std::dynamic_pointer_cast<FLKShapeEditable>(container));
    EXPECT_EQ(hover->highlightedObject(), nullptr);
    sceneViewModel.toggleVertexEditingWidget();
    EXPECT_EQ(vertices->sprite(), nullptr);

    video->setVideoOrientation(4);
    sceneViewModel.clockwiseRotateSelectedSprite();
    EXPECT_EQ(video->videoOrientation(), 1u);
    sceneViewModel.clockwiseRotateSelectedSprite();
    EXPECT_EQ(video->videoOrientation(), 2u);

    sceneViewModel.viewModelDidDragAndDropInteractable(nullptr, other);
    EXPECT_EQ(selecting->selectedObjects(), std::vector<FLKObject::Ptr>{other});
    selection->addObject(container);
    sceneViewModel.clockwiseRotateSelectedSprite();
    EXPECT_EQ(video->videoOrientation(), 2u);

    // A click on empty canvas clears the selection.
    selecting->canvasViewDidReceiveMouseDownEvent(nullptr, mouse(FLKEventType::mouseDown, {200, 50}));
    EXPECT_TRUE(selecting->selectedObjects().empty());
}

}  // namespace

TEST(FLKSelectionWidgetViewModelTest, AScreenFramedByArtworkIsPickedThroughItButAPictureOnTopIsNot) {
    auto scene = std::make_shared<FLKObject>();
    auto screen = FLKVideoContainer::videoContainerWithFrame({20, 20, 60, 120});
    // Added later: drawn over the screen, as a device's artwork is.
    auto artwork = std::make_shared<FLKTexturedSprite>();
    artwork->setShape(FLKQuad::quadWithFrame({0, 0, 100, 160}));
    auto badge = std::make_shared<FLKTexturedSprite>();
    badge->setShape(FLKQuad::quadWithFrame({30, 30, 10, 10}));
    scene->addChild(screen);
    scene->addChild(artwork);
    scene->addChild(badge);
    ASSERT_LT(screen->zOrder(), artwork->zOrder());

    EXPECT_EQ(FLKSelectionWidgetViewModel::interactableObjectAtLocation(scene, {50, 100}), screen);
    EXPECT_EQ(FLKSelectionWidgetViewModel::interactableObjectAtLocation(scene, {5, 5}), artwork);
    EXPECT_EQ(FLKSelectionWidgetViewModel::interactableObjectAtLocation(scene, {35, 35}), badge);
    EXPECT_EQ(FLKSelectionWidgetViewModel::interactableObjectAtLocation(scene, {150, 5}), nullptr);

    // Artwork that only overlaps the screen covers it.
    artwork->setShape(FLKQuad::quadWithFrame({40, 0, 100, 160}));
    EXPECT_EQ(FLKSelectionWidgetViewModel::interactableObjectAtLocation(scene, {50, 100}), artwork);

    auto hover = std::make_shared<FLKHoverWidgetViewModel>(scene);
    artwork->setShape(FLKQuad::quadWithFrame({0, 0, 100, 160}));
    hover->canvasViewDidReceiveMouseMovedEvent(nullptr, mouse(FLKEventType::mouseMoved, {50, 100}));
    EXPECT_EQ(hover->highlightedObject(), screen);
}

// Through the canvas's notifier, as the canvas delivers events: the hint
// follows the pointer, hides while a button is down and follows corner
// editing switched on from the menu.
TEST(FLKTooltipsDispatcherTest, HintsWhatAClickOrDragWouldDo) {
    auto scene = std::make_shared<FLKScene>();
    auto empty = FLKVideoContainer::videoContainerWithFrame({0, 0, 100, 200});
    auto filled = FLKVideoContainer::videoContainerWithFrame({300, 0, 100, 200});
    filled->setVideo(std::make_shared<FLKVideoSprite>());
    scene->addChild(empty);
    scene->addChild(filled);
    FLKCanvasViewModels canvas(scene, std::make_shared<FLKCursorManager>());
    auto& tooltips = *canvas.tooltips();
    std::vector<std::string> shown;
    tooltips.addPropertyObserver([&](const std::string& name) {
        if (name == "tooltip") shown.push_back(tooltips.tooltip());
    });
    auto send = [&](FLKEventType type, FLKPoint p) { canvas.notifier().canvasViewDidReceiveEvent(nullptr, mouse(type, p)); };

    send(FLKEventType::mouseMoved, {50, 50});
    EXPECT_EQ(tooltips.tooltip(), FLKTooltipsDispatcher::kDropRecording);
    send(FLKEventType::mouseMoved, {350, 50});
    EXPECT_EQ(tooltips.tooltip(), FLKTooltipsDispatcher::kSelect);
    send(FLKEventType::mouseDown, {350, 50});
    EXPECT_EQ(tooltips.tooltip(), "");
    send(FLKEventType::mouseUp, {350, 50});
    EXPECT_EQ(tooltips.tooltip(), FLKTooltipsDispatcher::kMoveOrResize);
    send(FLKEventType::mouseMoved, {200, 50});
    EXPECT_EQ(tooltips.tooltip(), "");
    send(FLKEventType::mouseMoved, {397, 197});

    // Corner editing from the menu: the hint changes under a still pointer.
    canvas.sceneViewModel()->toggleVertexEditingWidget();
    ASSERT_TRUE(canvas.cornering()->sprite());
    EXPECT_EQ(tooltips.tooltip(), FLKTooltipsDispatcher::kMoveCorner);
    // The corner editor swallows the move; the hint still follows it.
    send(FLKEventType::mouseMoved, {350, 100});
    EXPECT_EQ(tooltips.tooltip(), FLKTooltipsDispatcher::kEditCorners);
    canvas.notifier().canvasViewDidReceiveCancelOperation(nullptr);
    EXPECT_EQ(tooltips.tooltip(), FLKTooltipsDispatcher::kMoveOrResize);
    send(FLKEventType::mouseExited, {});
    EXPECT_EQ(tooltips.tooltip(), "");
    EXPECT_EQ(shown, (std::vector<std::string>{FLKTooltipsDispatcher::kDropRecording, FLKTooltipsDispatcher::kSelect, "",
                                               FLKTooltipsDispatcher::kMoveOrResize, "",
                                               FLKTooltipsDispatcher::kMoveOrResize, FLKTooltipsDispatcher::kMoveCorner,
                                               FLKTooltipsDispatcher::kEditCorners,
                                               FLKTooltipsDispatcher::kMoveOrResize, ""}));
}
