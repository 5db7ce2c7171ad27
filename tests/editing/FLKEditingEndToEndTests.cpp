// A whole editing session on a built-in template, driven through the same
// view models and events as the user's input: canvas gestures go through the
// actions notifier, timeline commands through the timeline panel.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/media/FLKSyntheticVideo.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKVideoTransitionClip.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKEditRedoMenuItemViewModel.h"
#include "editing/FLKEditUndoMenuItemViewModel.h"
#include "editing/FLKHoverWidgetViewModel.h"
#include "editing/FLKSceneViewActionsNotifier.h"
#include "editing/FLKSceneViewModel.h"
#include "editing/FLKSelectionEditingWidgetViewModel.h"
#include "editing/FLKSelectionWidgetViewModel.h"
#include "editing/FLKTimelinePanelViewModel.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"

namespace {

constexpr double kRecordingSeconds = 4;

std::filesystem::path writeRecording(const std::string& name) {
    const auto folder = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / "recordings";
    std::filesystem::create_directories(folder);
    const auto url = folder / name;
    FLKSyntheticVideo::Options options;
    options.frameCount = static_cast<int>(kRecordingSeconds * options.fps);
    FLKError error;
    EXPECT_TRUE(FLKSyntheticVideo::writeVideo(url.string(), options, &error)) << error.localizedDescription;
    return url;
}

FLKEvent mouse(FLKEventType type, FLKPoint location) { return FLKEvent::mouseEvent(type, location); }

class EditingEndToEndTest : public ::testing::Test {
protected:
    // Before the template manager first reads the resources: ctest names the
    // built content, a direct run of the binary finds it here.
    static void SetUpTestSuite() { ::setenv("FLICKWELL_RESOURCES", FLK_TEST_RESOURCES, 0); }
    void SetUp() override { pipeline.clear(); }
    void TearDown() override { pipeline.clear(); }

    // The canvas wiring of a freshly loaded scene, as the desktop canvas has it.
    void buildCanvas(const std::shared_ptr<FLKScene>& scene) {
        canvas = std::make_unique<FLKCanvasViewModels>(scene, cursors, queue);
        selecting = canvas->selecting();
        cornering = canvas->cornering();
        sceneViewModel = canvas->sceneViewModel();
    }

    // Pointer to the first point, press, drag through the rest, release.
    void drag(std::initializer_list<FLKPoint> path) {
        auto it = path.begin();
        canvas->notifier().canvasViewDidReceiveEvent(nullptr, mouse(FLKEventType::mouseMoved, *it));
        canvas->notifier().canvasViewDidReceiveEvent(nullptr, mouse(FLKEventType::mouseDown, *it));
        FLKPoint last = *it;
        for (++it; it != path.end(); ++it) {
            canvas->notifier().canvasViewDidReceiveEvent(nullptr, mouse(FLKEventType::mouseDragged, *it));
            last = *it;
        }
        canvas->notifier().canvasViewDidReceiveEvent(nullptr, mouse(FLKEventType::mouseUp, last));
    }

    std::string json() const {
        return loader.currentScene()->serialized().dump() + "\n" + timeline()->serialized().dump();
    }
    const std::shared_ptr<FLKTimeline>& timeline() const { return loader.currentTimeline(); }

    FLKRect screenBounds() const { return container->shape()->bounds(); }
    // The panel puts the play head where the user clicks, 100 points a second.
    void clickPlayHeadAt(double seconds) {
        panel->updateCursorLocation(FLKTimelinePanelViewModel::cursorLocationForTime(seconds));
    }
    std::shared_ptr<FLKTimelineClipViewModel> cell(size_t item) const { return panel->viewModelAtIndexPath({0, item}); }
    FLKTimelineVideoTrackViewModel& row() const { return *panel->draggableTrackViewModelAtIndex(0); }

    FLKActionPipeline& pipeline = FLKActionPipeline::sharedPipeline();
    FLKSceneLoader loader{FLKTemplateManager::defaultManager()};
    std::shared_ptr<FLKCursorManager> cursors = std::make_shared<FLKCursorManager>();
    std::shared_ptr<FLKManualMainQueue> queue = std::make_shared<FLKManualMainQueue>();
    std::unique_ptr<FLKCanvasViewModels> canvas;
    std::shared_ptr<FLKSelectionWidgetViewModel> selecting;
    std::shared_ptr<FLKVertexEditingWidgetViewModel> cornering;
    std::shared_ptr<FLKSceneViewModel> sceneViewModel;
    std::unique_ptr<FLKTimelinePanelViewModel> panel;
    std::shared_ptr<FLKVideoContainer> container;
};

TEST_F(EditingEndToEndTest, UndoingEverythingRestoresTheLoadedDocumentAndRedoingRestoresTheEdit) {
    auto aTemplate = FLKTemplateManager::defaultManager().templateWithName("Phone Portrait");
    ASSERT_TRUE(aTemplate) << "built-in templates missing under " << std::getenv("FLICKWELL_RESOURCES");
    FLKError error;
    auto scene = loader.loadSceneFromTemplate(aTemplate, &error);
    ASSERT_TRUE(scene) << error.localizedDescription;
    ASSERT_TRUE(timeline());
    container = std::dynamic_pointer_cast<FLKVideoContainer>(scene->childWithClass(typeid(FLKVideoContainer)));
    ASSERT_TRUE(container);
    buildCanvas(scene);

    // Two recordings brought in the way a dropped movie file is; the history
    // starts after them, as it does when a document with recordings is opened,
    // so "as loaded" is the template with both clips on its video track.
    panel = std::make_unique<FLKTimelinePanelViewModel>(timeline(), nullptr);
    panel->loadVideoClipWithURL(writeRecording("first.mp4"));
    panel->loadVideoClipWithURL(writeRecording("second.mp4"));
    ASSERT_EQ(panel->numberOfClipsInTrackAtIndex(0), 2u);
    ASSERT_NEAR(timeline()->duration(), 2 * kRecordingSeconds, 0.05);
    pipeline.clear();
    FLKEditUndoMenuItemViewModel undoItem;
    FLKEditRedoMenuItemViewModel redoItem;
    EXPECT_FALSE(undoItem.isEnabled());

    std::vector<std::string> states{json()};
    const std::string asLoaded = states.front();
    auto expectStep = [&](const char* what) {
        states.push_back(json());
        EXPECT_NE(states.back(), states[states.size() - 2]) << what << " changed nothing";
        EXPECT_EQ(pipeline.undoQueue().size(), states.size() - 1) << what;
    };

    // Selected directly; clicking it through the device artwork is tested on its own.
    selecting->selectObject(container);
    const FLKRect loaded = screenBounds();
    const FLKPoint middle{loaded.origin.x + loaded.size.width / 2, loaded.origin.y + loaded.size.height / 2};

    drag({middle, middle + FLKPoint{30, 20}, middle + FLKPoint{60, 40}});
    EXPECT_EQ(selecting->selectedObjects(), std::vector<FLKObject::Ptr>{container});
    EXPECT_EQ(screenBounds().origin, (loaded.origin + FLKPoint{60, 40}));
    expectStep("move");

    const FLKRect moved = screenBounds();
    const FLKPoint rightSide{moved.origin.x + moved.size.width, moved.origin.y + moved.size.height / 2};
    drag({rightSide, rightSide + FLKPoint{40, 0}, rightSide + FLKPoint{80, 0}});
    EXPECT_DOUBLE_EQ(screenBounds().size.width, moved.size.width + 80);
    EXPECT_EQ(screenBounds().origin, moved.origin);
    expectStep("stretch");

    sceneViewModel->toggleVertexEditingWidget();
    ASSERT_EQ(cornering->sprite(), std::dynamic_pointer_cast<FLKShapeEditable>(container));
    const FLKPoint topLeft = container->shape()->createPoints().at(0);
    drag({topLeft, topLeft + FLKPoint{10, 15}, topLeft + FLKPoint{25, 30}});
    EXPECT_EQ(container->shape()->createPoints().at(0), (topLeft + FLKPoint{25, 30}));
    expectStep("corner drag");
    sceneViewModel->toggleVertexEditingWidget();
    EXPECT_FALSE(cornering->sprite());

    // Clips A 0-4 s and B 4-8 s.
    clickPlayHeadAt(1);
    row().trimLeft(cell(0));  // A 0-3, B 3-7
    expectStep("trim left");
    clickPlayHeadAt(6.5);
    row().trimRight(cell(1));  // B 3-6.5
    expectStep("trim right");
    clickPlayHeadAt(0.5);
    row().split(cell(0));  // A 0-0.5 and 0.5-3
    ASSERT_EQ(panel->numberOfClipsInTrackAtIndex(0), 3u);
    expectStep("split");
    row().setTransitionClipViewModels({cell(1), cell(2)});
    row().addTransition();
    ASSERT_EQ(panel->numberOfClipsInTrackAtIndex(0), 4u);
    auto transition = std::dynamic_pointer_cast<FLKVideoTransitionClip>(cell(2)->clip());
    ASSERT_TRUE(transition) << "no transition between the second and third clip";
    EXPECT_NEAR(transition->timeRange().start, 1, 1e-9);
    EXPECT_NEAR(transition->timeRange().end, 3, 1e-9);
    expectStep("transition");

    const size_t steps = states.size() - 1;
    ASSERT_EQ(steps, 7u);
    EXPECT_TRUE(undoItem.isEnabled());
    for (size_t i = steps; i > 0; --i) {
        ASSERT_TRUE(pipeline.undo()) << "undo of step " << i;
        EXPECT_EQ(json(), states[i - 1]) << "after undoing step " << i;
    }
    EXPECT_FALSE(pipeline.canUndo());
    EXPECT_FALSE(undoItem.isEnabled());
    EXPECT_EQ(pipeline.redoQueue().size(), steps);
    EXPECT_EQ(json(), asLoaded);

    for (size_t i = 1; i <= steps; ++i) {
        pipeline.redo();
        EXPECT_EQ(json(), states[i]) << "after redoing step " << i;
    }
    EXPECT_FALSE(pipeline.canRedo());
    EXPECT_FALSE(redoItem.isEnabled());
    EXPECT_EQ(pipeline.undoQueue().size(), steps);
    EXPECT_EQ(json(), states.back());
}

}  // namespace
