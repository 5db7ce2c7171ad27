#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "editing/FLKTimelinePanelTestSupport.h"
#include "editing/FLKTimelineVideoTransitionClipViewModel.h"

using flktest::TimelinePanelTest;
using flktest::videoClip;

namespace {
void record(FLKPropertyObservable& observable, std::vector<std::string>& changes) {
    observable.addPropertyObserver([&changes](const std::string& name) { changes.push_back(name); });
}
}  // namespace

TEST_F(TimelinePanelTest, CellFramesFloorInSinglePrecision) {
    track->setClips({videoClip("A", 0, 0.29), videoClip("B", 0.29, 1.234), videoClip("C", 1.234, 3.5)});
    auto& layout = *panel->layoutViewModel();
    layout.setCollectionViewEdgeInsets({5, 20, 5, 20});

    EXPECT_EQ(layout.frameForItemAtIndexPath({0, 2}), FLKRect(20 + 123, 5, 226, 80));
    // 0.29 s is 28.999999999999996 points in double precision: the single
    // precision floor gives the 29 the cells have always had.
    EXPECT_EQ(layout.frameForItemAtIndexPath({0, 0}).size.width, 29);
    EXPECT_EQ(layout.frameForItemAtIndexPath({0, 1}), FLKRect(20 + 29, 5, 94, 80));

    EXPECT_EQ(layout.frameForItemAtIndexPath({0, 3}), FLKRect::zero());
    EXPECT_EQ(layout.frameForItemAtIndexPath({1, 0}), FLKRect::zero());
}

TEST_F(TimelinePanelTest, TransitionCellsKeepTheirExactWidth) {
    auto clips = track->videoClips();
    track->addTransition(nullptr, clips[0], clips[1], 1.234);
    auto transitionCell = std::dynamic_pointer_cast<FLKTimelineVideoTransitionClipViewModel>(cell(1));
    ASSERT_TRUE(transitionCell);
    EXPECT_EQ(transitionCell->videoClip()->fromVideoClipIdentifier(), "A");

    auto frame = panel->layoutViewModel()->frameForItemAtIndexPath({0, 1});
    EXPECT_DOUBLE_EQ(frame.size.width, 123.4);
    EXPECT_EQ(frame.origin.x, 276);  // starts at 2.766 s, floored
    EXPECT_EQ(cell(2)->cellSize().width, 600);
}

TEST_F(TimelinePanelTest, ContentWidthCoversTheLastClipAndTheVisibleWidth) {
    auto& layout = *panel->layoutViewModel();
    EXPECT_EQ(layout.contentSize().width, 1300);

    layout.setCollectionViewEdgeInsets({0, 10, 0, 15});
    track->addClip(videoClip("D", 13, 30.005));
    EXPECT_EQ(layout.contentSize().width, 3000 + 10 + 15);

    layout.setCollectionViewSize({4000, 300});
    EXPECT_EQ(layout.contentSize(), (FLKSize{4000, 300}));

    auto empty = FLKTimeline::timelineWithTimer({});
    FLKTimelinePanelViewModel emptyPanel(empty, nullptr, &pipeline);
    EXPECT_EQ(emptyPanel.layoutViewModel()->contentSize().width, 1080);
    empty->createVideoTrack();
    EXPECT_EQ(emptyPanel.layoutViewModel()->contentSize().width, 1080);
    EXPECT_EQ(emptyPanel.layoutViewModel()->trackViewModels().size(), 1u);
}

TEST_F(TimelinePanelTest, PickingAPositionMovesThePlayHeadOnlyWhenIdleAndPastTheStart) {
    std::vector<std::string> changes;
    record(*panel, changes);
    setPlayHead(1.5);

    panel->updateCursorLocation(0);
    EXPECT_EQ(panel->currentTime(), 1.5);
    panel->updateCursorLocation(-40);
    EXPECT_EQ(panel->currentTime(), 1.5);
    EXPECT_TRUE(changes.empty());

    panel->updateCursorLocation(250);
    EXPECT_EQ(panel->currentTime(), 2.5);
    EXPECT_EQ(track->currentTime(), 2.5);
    EXPECT_EQ(panel->currentCursorLocation(), 250);
    EXPECT_EQ(changes, (std::vector<std::string>{"currentTime"}));

    panel->setDragging(true);
    panel->updateCursorLocation(700);
    EXPECT_EQ(panel->currentTime(), 2.5);
    panel->setDragging(false);

    panel->togglePlay();
    EXPECT_TRUE(timeline->isPlaying());
    panel->updateCursorLocation(700);
    EXPECT_EQ(panel->currentTime(), 2.5);
    panel->togglePlay();
    EXPECT_FALSE(timeline->isPlaying());
    EXPECT_EQ(std::count(changes.begin(), changes.end(), "isPlaying"), 2);

    // The clock moved the play head: the next refresh tells the observers.
    timeline->setCurrentTime(3);
    changes.clear();
    panel->refreshPlayHead();
    panel->refreshPlayHead();
    EXPECT_EQ(changes, (std::vector<std::string>{"currentTime"}));
    EXPECT_EQ(FLKTimelinePanelViewModel::cursorLocationForTime(1.25), 125);
}

TEST_F(TimelinePanelTest, SelectionIsOneClipAndFollowsItThroughEdits) {
    auto& rowModel = row();
    panel->trackViewModel(rowModel, cell(1));
    panel->trackViewModel(rowModel, cell(2));
    EXPECT_EQ(panel->selectedClipIndexes(), (std::set<FLKIndexPath>{{0, 2}}));
    ASSERT_EQ(panel->selectedClipViewModels().size(), 1u);
    EXPECT_EQ(panel->selectedClipViewModels()[0]->clip()->identifier(), "C");
    EXPECT_EQ(rowModel.selectedViewModels(), panel->selectedClipViewModels());
    EXPECT_EQ(panel->indexPathForViewModel(cell(2).get(), 0), (FLKIndexPath{0, 2}));
    EXPECT_FALSE(panel->indexPathForViewModel(cell(2).get(), 1));

    // C loses A's place: its index path follows.
    track->removeClip(track->clips()[0]);
    EXPECT_EQ(panel->selectedClipIndexes(), (std::set<FLKIndexPath>{{0, 1}}));
    // A trim keeps the clip's identity, and so the selection.
    track->trimClipRightFromTimelineTime(track->videoClips()[1], 8);
    EXPECT_EQ(panel->selectedClipIndexes(), (std::set<FLKIndexPath>{{0, 1}}));

    panel->deselectAllForTrackViewModel(rowModel);
    EXPECT_TRUE(panel->selectedClipIndexes().empty());
    EXPECT_TRUE(rowModel.selectedViewModels().empty());
}

TEST_F(TimelinePanelTest, CellChangesReachTheHandlersAsIndexPaths) {
    std::vector<FLKTimelinePanelViewModel::CellDiff> diffs;
    std::vector<std::vector<FLKIndexPath>> updates;
    panel->setDiffHandler([&](const auto& diff) { diffs.push_back(diff); });
    panel->setUpdatesHandler([&](const auto& indexPaths) { updates.push_back(indexPaths); });

    track->removeClip(track->clips()[0]);
    ASSERT_EQ(diffs.size(), 1u);
    EXPECT_EQ(diffs[0].removed, (std::vector<FLKIndexPath>{{0, 0}}));
    EXPECT_TRUE(diffs[0].inserted.empty());
    EXPECT_TRUE(diffs[0].moved.empty());  // B and C only shift

    auto clips = track->clips();
    track->setClips({clips[1]->clipWithTimeRange({0, 3}), clips[0]->clipWithTimeRange({3, 9})});
    ASSERT_EQ(diffs.size(), 2u);
    EXPECT_EQ(diffs[1].moved.size(), 1u);
    EXPECT_TRUE(diffs[1].removed.empty());

    row().updateCellsForClip(clips[0]);
    EXPECT_EQ(updates, (std::vector<std::vector<FLKIndexPath>>{{{0, 1}}}));
    EXPECT_EQ(panel->numberOfClipsInTrackAtIndex(0), 2u);
    EXPECT_EQ(panel->numberOfClipsInTrackAtIndex(3), 0u);
    EXPECT_FALSE(panel->trackViewModelAtIndex(1));
}
