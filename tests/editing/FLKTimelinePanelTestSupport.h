#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/platform/FLKUserFeedback.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineTestSupport.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKTimelinePanelViewModel.h"

namespace flktest {

class BeepCounter : public FLKUserFeedback {
public:
    void beep() override { ++beeps; }
    void presentError(const FLKError&) override {}
    int beeps = 0;
};

// A panel on a timeline with one video track A 0-4 s, B 4-10 s, C 10-13 s,
// recording into its own pipeline. Frames are never decoded.
class TimelinePanelTest : public ::testing::Test {
protected:
    void SetUp() override {
        FLKUserFeedback::setShared(feedback);
        track = timeline->createVideoTrack();
        track->setClips({videoClip("A", 0, 4, "/doc/media/a.mp4"), videoClip("B", 4, 10, "/doc/media/b.mp4"),
                         videoClip("C", 10, 13, "/doc/media/c.mp4")});
        panel = std::make_unique<FLKTimelinePanelViewModel>(timeline, nullptr, &pipeline);
    }
    void TearDown() override {
        panel.reset();
        FLKUserFeedback::setShared(nullptr);
    }

    FLKTimelineVideoTrackViewModel& row() { return *panel->draggableTrackViewModelAtIndex(0); }
    std::shared_ptr<FLKTimelineClipViewModel> cell(size_t item) { return panel->viewModelAtIndexPath({0, item}); }
    std::string trackJSON() const { return track->serialized().dump(); }
    std::vector<std::string> identifiers() const {
        std::vector<std::string> ids;
        for (const auto& clip : track->clips()) ids.push_back(clip->identifier());
        return ids;
    }
    std::vector<FLKTimeRange> ranges() const {
        std::vector<FLKTimeRange> result;
        for (const auto& clip : track->clips()) result.push_back(clip->timeRange());
        return result;
    }
    void setPlayHead(double t) { timeline->setCurrentTime(t); }

    ScopedBufferManagers managers;
    std::shared_ptr<BeepCounter> feedback = std::make_shared<BeepCounter>();
    FLKActionPipeline pipeline;
    std::shared_ptr<FLKTimeline> timeline = FLKTimeline::timelineWithTimer({});
    std::shared_ptr<FLKTimelineVideoTrack> track;
    std::unique_ptr<FLKTimelinePanelViewModel> panel;
};

}  // namespace flktest
