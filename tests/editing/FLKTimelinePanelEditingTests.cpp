#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKTransition.h"
#include "core/media/FLKSyntheticVideo.h"
#include "editing/FLKTimelinePanelTestSupport.h"

using flktest::TimelinePanelTest;

namespace {
// Stands for the effect where only the track's clip list matters; the real
// effect is built in AddTransitionMakesATwoSecondCrossZoom.
class NamedEffect : public FLKSerializable {
public:
    FLKJSON serialized() const override { return {{"className", className()}, {"functionName", "crossZoom"}}; }
    std::string className() const override { return "FLKTransition"; }
};
}  // namespace

TEST_F(TimelinePanelTest, TrimAndUndoRestoresTheClipListExactly) {
    const std::string before = trackJSON();
    setPlayHead(1);
    row().trimLeft(cell(0));
    const std::string trimmed = trackJSON();
    EXPECT_EQ(ranges(), (std::vector<FLKTimeRange>{{0, 3}, {3, 9}, {9, 12}}));
    auto a = track->videoClips()[0];
    EXPECT_EQ(a->clipRange(), (FLKTimeRange{1, 4}));
    EXPECT_EQ(pipeline.undoQueue().size(), 1u);

    pipeline.undo();
    EXPECT_EQ(trackJSON(), before);
    pipeline.redo();
    EXPECT_EQ(trackJSON(), trimmed);

    setPlayHead(7);
    row().trimRight(cell(1));
    EXPECT_EQ(ranges(), (std::vector<FLKTimeRange>{{0, 3}, {3, 7}, {7, 10}}));
    pipeline.undo();
    pipeline.undo();
    EXPECT_EQ(trackJSON(), before);
}

// Every command is one step, and undoing walks back through each state.
TEST_F(TimelinePanelTest, EachCommandIsOneUndoStep) {
    row().setTransitionMaker([](const std::string&) { return std::make_shared<NamedEffect>(); });
    std::vector<std::string> states{trackJSON()};
    auto step = [&](auto command) {
        command();
        states.push_back(trackJSON());
        EXPECT_EQ(pipeline.undoQueue().size(), states.size() - 1);
        EXPECT_EQ(row().currentAction(), nullptr);
    };

    setPlayHead(5);
    step([&] { row().trimLeft(cell(1)); });  // B 4-9
    setPlayHead(8);
    step([&] { row().trimRight(cell(1)); });  // B 4-8
    setPlayHead(2);
    step([&] { row().split(cell(0)); });                   // A_l 0-2, A_r 2-4
    step([&] { row().remove({cell(0), cell(1)}); });  // B 0-4, C 4-7
    step([&] {
        row().setTransitionClipViewModels({cell(0), cell(1)});
        row().addTransition();
    });
    EXPECT_EQ(identifiers().size(), 3u);
    EXPECT_EQ(ranges(), (std::vector<FLKTimeRange>{{0, 4}, {2, 4}, {2, 5}}));
    step([&] { row().remove({cell(1)}); });  // the transition: C back at 4-7
    EXPECT_EQ(ranges(), (std::vector<FLKTimeRange>{{0, 4}, {4, 7}}));
    EXPECT_EQ(feedback->beeps, 0);

    for (size_t i = states.size() - 1; i > 0; --i) {
        pipeline.undo();
        EXPECT_EQ(trackJSON(), states[i - 1]) << "after undoing step " << i;
    }
}

TEST_F(TimelinePanelTest, RefusedCommandsRecordNothing) {
    const std::string before = trackJSON();
    setPlayHead(5);
    row().trimLeft(cell(0));  // the play head is not over A
    setPlayHead(4);
    row().split(cell(1));  // B's very start
    row().setTransitionMaker([](const std::string&) { return std::make_shared<NamedEffect>(); });
    row().setTransitionClipViewModels({cell(0), cell(2)});  // not neighbours
    row().addTransition();
    row().setTransitionMaker([](const std::string&) { return nullptr; });
    row().setTransitionClipViewModels({cell(0), cell(1)});
    row().addTransition();
    EXPECT_EQ(feedback->beeps, 4);

    row().setTransitionClipViewModels({cell(0)});
    row().applyTransition(std::make_shared<NamedEffect>());
    row().remove({});
    EXPECT_EQ(trackJSON(), before);
    EXPECT_TRUE(pipeline.undoQueue().empty());
}

TEST_F(TimelinePanelTest, AddTransitionMakesATwoSecondCrossZoomAndRemovingItRestoresTheTrack) {
    auto context = FLKContext::sharedContext();
    ASSERT_TRUE(context->isValid()) << context->errorDescription();
    const std::string before = trackJSON();

    row().setTransitionClipViewModels({cell(1), cell(2)});
    row().addTransition();
    ASSERT_EQ(identifiers().size(), 4u);
    auto transition = track->transitionClips().at(0);
    EXPECT_EQ(transition->fromVideoClipIdentifier(), "B");
    EXPECT_EQ(transition->toVideoClipIdentifier(), "C");
    EXPECT_EQ(transition->timeRange(), (FLKTimeRange{8, 10}));
    auto effect = std::dynamic_pointer_cast<FLKTransition>(transition->transition());
    ASSERT_TRUE(effect);
    EXPECT_EQ(effect->functionName(), "crossZoom");
    EXPECT_EQ(track->duration(), 11);
    EXPECT_EQ(pipeline.undoQueue().size(), 1u);

    const std::string withTransition = trackJSON();
    row().remove({cell(2)});
    EXPECT_EQ(trackJSON(), before);
    EXPECT_EQ(pipeline.undoQueue().size(), 2u);
    pipeline.undo();
    EXPECT_EQ(trackJSON(), withTransition);
}

TEST_F(TimelinePanelTest, DragToReorderIsOneUndoStep) {
    const std::string before = trackJSON();
    std::vector<FLKTimelinePanelViewModel::CellDiff> diffs;
    panel->setDiffHandler([&](const auto& diff) { diffs.push_back(diff); });

    auto dragged = cell(2);
    row().beginDraggingForViewModel(dragged);
    EXPECT_TRUE(panel->isDragging());
    ASSERT_TRUE(row().placeholderClip());
    EXPECT_EQ(identifiers(), (std::vector<std::string>{"A", "B", ""}));
    EXPECT_EQ(ranges().back(), (FLKTimeRange{10, 13}));  // the gap stays where C was

    row().moveDraggingPlaceholderToIndexPath({0, 1});
    EXPECT_EQ(identifiers(), (std::vector<std::string>{"A", "", "B"}));
    EXPECT_EQ(ranges(), (std::vector<FLKTimeRange>{{0, 4}, {4, 7}, {7, 13}}));
    row().moveDraggingPlaceholderToIndexPath({0, 0});
    EXPECT_TRUE(pipeline.undoQueue().empty());

    row().endDraggingToIndexPath({0, 0});
    EXPECT_EQ(identifiers(), (std::vector<std::string>{"C", "A", "B"}));
    EXPECT_EQ(ranges(), (std::vector<FLKTimeRange>{{0, 3}, {3, 7}, {7, 13}}));
    EXPECT_EQ(track->videoClips()[0]->clipRange(), (FLKTimeRange{0, 3}));
    EXPECT_FALSE(panel->isDragging());
    EXPECT_FALSE(row().draggingViewModel());
    EXPECT_FALSE(row().placeholderClip());
    EXPECT_FALSE(diffs.empty());

    const std::string reordered = trackJSON();
    ASSERT_EQ(pipeline.undoQueue().size(), 1u);
    pipeline.undo();
    EXPECT_EQ(trackJSON(), before);
    pipeline.redo();
    EXPECT_EQ(trackJSON(), reordered);

    // A drop where the pick-up was changes nothing but is still one step.
    row().beginDraggingForViewModel(cell(1));
    row().endDraggingToIndexPath({0, 1});
    EXPECT_EQ(trackJSON(), reordered);
    EXPECT_EQ(pipeline.undoQueue().size(), 2u);
}

TEST_F(TimelinePanelTest, MenuCommandsActOnTheHoveredClipAndTheSelection) {
    auto& rowModel = row();
    panel->trackViewModel(rowModel, cell(0));
    rowModel.setHoveredOverViewModel(cell(1));
    setPlayHead(6);
    rowModel.trimRightWithViewModel(rowModel);
    EXPECT_EQ(panel->selectedClipIndexes(), (std::set<FLKIndexPath>{{0, 1}}));
    EXPECT_EQ(ranges(), (std::vector<FLKTimeRange>{{0, 4}, {4, 6}, {6, 9}}));

    rowModel.deleteWithViewModel(rowModel);
    EXPECT_EQ(identifiers(), (std::vector<std::string>{"A", "C"}));
    EXPECT_TRUE(panel->selectedClipIndexes().empty());
    EXPECT_EQ(pipeline.undoQueue().size(), 2u);
    rowModel.deleteWithViewModel(rowModel);  // nothing selected
    EXPECT_EQ(pipeline.undoQueue().size(), 2u);
}

TEST_F(TimelinePanelTest, PanelDragIsOneStep) {
    panel->beginActionWithTrack(track);
    track->removeClip(track->clips()[0]);
    track->removeClip(track->clips()[0]);
    EXPECT_TRUE(pipeline.undoQueue().empty());
    panel->endAction();
    panel->endAction();  // nothing open: nothing recorded
    EXPECT_EQ(pipeline.undoQueue().size(), 1u);
    pipeline.undo();
    EXPECT_EQ(identifiers(), (std::vector<std::string>{"A", "B", "C"}));
}

TEST(FLKTimelinePanelViewModel, LoadsAVideoFileOntoANewVideoTrack) {
    flktest::ScopedBufferManagers managers;
    const auto folder = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / "panel-media";
    std::filesystem::create_directories(folder);
    const auto movie = folder / "one-second.mp4";
    FLKSyntheticVideo::Options options;
    options.frameCount = 30;
    FLKError error;
    ASSERT_TRUE(FLKSyntheticVideo::writeVideo(movie.string(), options, &error)) << error.localizedDescription;

    FLKActionPipeline pipeline;
    auto timeline = FLKTimeline::timelineWithTimer({});
    FLKTimelinePanelViewModel panel(timeline, nullptr, &pipeline);
    panel.loadVideoClipWithURL(movie);
    panel.loadVideoClipWithURL(movie);

    ASSERT_EQ(timeline->tracks().size(), 1u);
    auto clips = panel.trackViewModelAtIndex(0)->clipViewModels();
    ASSERT_EQ(clips.size(), 2u);
    auto second = std::dynamic_pointer_cast<FLKVideoClip>(clips[1]->clip());
    EXPECT_EQ(second->assetURL(), movie);
    EXPECT_NEAR(second->timeRange().start, 1.0, 0.05);
    EXPECT_NEAR(second->duration(), 1.0, 0.05);
    EXPECT_EQ(pipeline.undoQueue().size(), 2u);
    pipeline.undo();
    EXPECT_EQ(panel.numberOfClipsInTrackAtIndex(0), 1u);
}
