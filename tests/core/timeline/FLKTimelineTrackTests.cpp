#include <gtest/gtest.h>

#include "core/timeline/FLKPlaceholderClip.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKTimelineTestSupport.h"

using flktest::videoClip;

namespace {
std::vector<FLKTimeRange> rangesOf(const FLKTimelineTrack& track) {
    std::vector<FLKTimeRange> ranges;
    for (const auto& clip : track.clips()) ranges.push_back(clip->timeRange());
    return ranges;
}

std::vector<std::string> identifiersOf(const FLKTimelineTrack& track) {
    std::vector<std::string> ids;
    for (const auto& clip : track.clips()) ids.push_back(clip->identifier());
    return ids;
}

// A 0-4 s, B 4-10 s.
std::shared_ptr<FLKTimelineVideoTrack> twoClipTrack() {
    auto track = std::make_shared<FLKTimelineVideoTrack>("track");
    track->addClip(videoClip("A", 0, 4));
    track->addClip(videoClip("B", 4, 10));
    return track;
}
}  // namespace

TEST(FLKTimelineTrack, InsertingAndRemovingShiftLaterClips) {
    FLKTimelineTrack track("t");
    EXPECT_EQ(track.duration(), 0);
    int changes = 0;
    track.addClipsObserver([&] { ++changes; });

    track.addClip(videoClip("A", 0, 4));
    track.addClip(videoClip("C", 4, 6));
    track.insertClip(videoClip("B", 4, 7), 1);
    EXPECT_EQ(identifiersOf(track), (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(rangesOf(track), (std::vector<FLKTimeRange>{{0, 4}, {4, 7}, {7, 9}}));
    EXPECT_TRUE(track.clipsFollowOneAnother());

    track.insertClip(videoClip("A", 20, 21), 0);  // already there: nothing happens
    EXPECT_EQ(track.clips().size(), 3u);

    track.removeClip(videoClip("A", 99, 100));  // found by identity, not by range
    EXPECT_EQ(rangesOf(track), (std::vector<FLKTimeRange>{{0, 3}, {3, 5}}));
    EXPECT_EQ(track.duration(), 5);
    EXPECT_EQ(changes, 4);
}

TEST(FLKTimelineTrack, ReplacingMovesLaterClipsByTheChange) {
    FLKTimelineTrack track("t");
    track.setClips({videoClip("A", 0, 4), videoClip("B", 4, 6), videoClip("C", 6, 9)});
    // The placeholder of a dragged clip keeps the gap.
    track.replaceClip(videoClip("B", 4, 6), std::make_shared<FLKPlaceholderClip>("", FLKTimeRange{4, 6}));
    EXPECT_EQ(rangesOf(track), (std::vector<FLKTimeRange>{{0, 4}, {4, 6}, {6, 9}}));
    // A longer clip starting later pushes by both differences.
    track.replaceClip(std::make_shared<FLKPlaceholderClip>("", FLKTimeRange{}), videoClip("D", 5, 8));
    EXPECT_EQ(rangesOf(track), (std::vector<FLKTimeRange>{{0, 4}, {5, 8}, {8, 11}}));
    // A clip equal to another one on the track cannot take the place.
    track.replaceClip(videoClip("D", 0, 0), videoClip("A", 0, 1));
    EXPECT_EQ(identifiersOf(track), (std::vector<std::string>{"A", "D", "C"}));
}

TEST(FLKTimelineTrack, PlaceholdersNeverMoveBeforeZero) {
    FLKTimelineTrack track("t");
    track.setClips({videoClip("A", 0, 10), std::make_shared<FLKPlaceholderClip>("p", FLKTimeRange{3, 6})});
    track.removeClip(videoClip("A", 0, 10));
    EXPECT_EQ(rangesOf(track), (std::vector<FLKTimeRange>{{0, 3}}));
}

TEST(FLKTimelineTrack, IntersectionNeedsAPositiveOverlap) {
    FLKTimelineTrack track("t");
    track.setClips({videoClip("A", 0, 4), videoClip("B", 4, 10)});
    EXPECT_FALSE(track.intersectsAnyClip(videoClip("X", 10, 12)));
    EXPECT_TRUE(track.intersectsAnyClip(videoClip("X", 9.5, 12)));
    EXPECT_TRUE(track.intersectsAnyClip(videoClip("X", 1, 2)));
    EXPECT_FALSE(track.intersectsAnyClip(videoClip("X", -3, 0)));
}

TEST(FLKTimelineVideoTrack, TransitionOverlapsTheTwoClips) {
    flktest::ScopedBufferManagers managers;
    auto track = twoClipTrack();
    auto a = track->videoClips()[0];
    auto b = track->videoClips()[1];

    auto transition = track->addTransition(nullptr, a, b, 1.0);
    ASSERT_TRUE(transition);
    EXPECT_EQ(identifiersOf(*track), (std::vector<std::string>{"A", transition->identifier(), "B"}));
    EXPECT_EQ(rangesOf(*track), (std::vector<FLKTimeRange>{{0, 4}, {3, 4}, {3, 9}}));
    EXPECT_EQ(track->duration(), 9);
    EXPECT_EQ(transition->fromVideoClipIdentifier(), "A");
    EXPECT_EQ(transition->toVideoClipIdentifier(), "B");
    EXPECT_EQ(transition->name(), "Transition Clip - 0 (A -> B)");
    EXPECT_TRUE(track->clipsFollowOneAnother());
    EXPECT_EQ(track->videoClips()[1]->clipRange(), (FLKTimeRange{0, 6}));

    EXPECT_EQ(track->clipAtTime(3.5), transition);
    EXPECT_EQ(track->clipAtTime(2.0)->identifier(), "A");
    EXPECT_EQ(track->clipAtTime(6.0)->identifier(), "B");
    EXPECT_EQ(track->clipWithIdentifier("B")->timeRange(), (FLKTimeRange{3, 9}));

    // The transition went to the transition manager, B's move to the video manager.
    EXPECT_EQ(managers.transitionManagers[0]->created, (std::vector<std::string>{transition->identifier()}));

    // Removing a transition moves nothing.
    track->removeClip(transition);
    EXPECT_EQ(rangesOf(*track), (std::vector<FLKTimeRange>{{0, 4}, {3, 9}}));
    EXPECT_FALSE(track->clipsFollowOneAnother());
}

TEST(FLKTimelineVideoTrack, ClipAtTimeSeamAndTolerance) {
    auto track = twoClipTrack();
    EXPECT_EQ(track->clipAtTime(4.0)->identifier(), "A");
    EXPECT_EQ(track->clipAtTime(4.0 + 0.001)->identifier(), "B");
    EXPECT_EQ(track->clipAtTime(0 - 0.00005)->identifier(), "A");
    EXPECT_EQ(track->clipAtTime(0 - 0.001), nullptr);
    EXPECT_EQ(track->clipAtTime(10 + 0.00005)->identifier(), "B");
    EXPECT_EQ(track->clipAtTime(10 + 0.001), nullptr);
    EXPECT_EQ(FLKTimelineVideoTrack("empty").clipAtTime(0), nullptr);
}

TEST(FLKTimelineVideoTrack, TrimsAndSplitsMoveTheRestOfTheTrack) {
    auto track = twoClipTrack();
    auto a = track->videoClips()[0];

    track->trimClipLeftFromTimelineTime(a, 0);  // at its own start: nothing moves
    EXPECT_EQ(rangesOf(*track), (std::vector<FLKTimeRange>{{0, 4}, {4, 10}}));

    track->trimClipLeftFromTimelineTime(a, 1);
    EXPECT_EQ(rangesOf(*track), (std::vector<FLKTimeRange>{{0, 3}, {3, 9}}));
    EXPECT_EQ(track->videoClips()[0]->clipRange(), (FLKTimeRange{1, 4}));

    track->trimClipRightFromTimelineTime(track->videoClips()[1], 8);
    EXPECT_EQ(rangesOf(*track), (std::vector<FLKTimeRange>{{0, 3}, {3, 8}}));

    track->splitClip(track->videoClips()[0], 2);
    EXPECT_EQ(identifiersOf(*track), (std::vector<std::string>{"A_l", "A_r", "B"}));
    EXPECT_EQ(rangesOf(*track), (std::vector<FLKTimeRange>{{0, 2}, {2, 3}, {3, 8}}));
    EXPECT_EQ(track->videoClips()[1]->clipRange(), (FLKTimeRange{3, 4}));
}

TEST(FLKTimelineVideoTrack, CreatedClipTakesItsLengthFromTheMedia) {
    flktest::ScopedMediaLengths lengths({{"rec.mp4", 7.5}});
    auto track = twoClipTrack();
    auto clip = track->createClipWithVideoURL("/tmp/rec.mp4");
    EXPECT_EQ(clip->timeRange(), (FLKTimeRange{10, 17.5}));
    EXPECT_EQ(clip->clipRange(), (FLKTimeRange{0, 7.5}));
    EXPECT_EQ(clip->name(), "Video Clip - 0 (file:///tmp/rec.mp4)");
    EXPECT_EQ(track->clips().size(), 2u);  // made, not added
    EXPECT_EQ(track->createClipWithVideoURL("/tmp/rec.mp4")->name(), "Video Clip - 1 (file:///tmp/rec.mp4)");
    EXPECT_NE(clip->identifier(), track->createClipWithVideoURL("/tmp/rec.mp4")->identifier());

    // A file that cannot be read gives a zero-length clip at the end.
    auto unreadable = track->createClipWithVideoURL("/tmp/unknown.mp4");
    EXPECT_EQ(unreadable->timeRange(), (FLKTimeRange{10, 10}));

    track->addClip(clip);
    track->addClip(videoClip("D", 17.5, 18, "/tmp/rec.mp4"));
    EXPECT_EQ(track->numberOfClipsForAsset("/tmp/rec.mp4"), 2u);
    EXPECT_EQ(track->numberOfClipsForAsset("/doc/media/a.mp4"), 2u);
}

TEST(FLKTimelineVideoTrack, BuffersFollowClipsAndThePlayHead) {
    flktest::ScopedBufferManagers managers;
    auto track = std::make_shared<FLKTimelineVideoTrack>("t");
    auto& video = *managers.videoManagers[0];
    EXPECT_EQ(video.bufferWidth, 5.0);
    EXPECT_EQ(video.marginTime, 2.5);

    track->addClip(videoClip("A", 0, 4));
    track->addClip(videoClip("B", 4, 10));
    track->addClip(std::make_shared<FLKPlaceholderClip>("p", FLKTimeRange{10, 12}));
    EXPECT_EQ(video.created, (std::vector<std::string>{"A", "B"}));

    video.buffering.clear();
    track->setCurrentTime(2.0);  // A now, B 2.5 s ahead
    EXPECT_EQ(video.buffering, (std::vector<std::string>{"A@2.00", "B@4.50"}));
    video.buffering.clear();
    track->setCurrentTime(5.0);  // the clip ahead is the same clip
    EXPECT_EQ(video.buffering, (std::vector<std::string>{"B@5.00"}));

    track->trimClipLeftFromTimelineTime(track->videoClips()[0], 1);  // same clip: old buffers go, none made
    EXPECT_EQ(video.created.size(), 2u);
    EXPECT_EQ(video.removed, (std::vector<std::string>{"A"}));
    track->setClips({videoClip("C", 0, 1)});
    EXPECT_EQ(video.removed, (std::vector<std::string>{"A", "A", "B"}));
    EXPECT_EQ(video.created.back(), "C");
}

TEST(FLKTimelineVideoTrack, ReadyWhenAFrameIsAvailableAheadOfThePlayHead) {
    flktest::ScopedBufferManagers managers;
    FLKTimelineVideoTrack track("t");
    EXPECT_TRUE(track.isReady());  // nothing to show, nothing to wait for
    track.addClip(videoClip("A", 0, 4));
    auto& video = *managers.videoManagers[0];

    EXPECT_FALSE(track.isReady());
    video.setAvailable({{1.25, 1.25}});  // looked up at current time + 1.25 s
    EXPECT_TRUE(track.isReady());
    track.setCurrentTime(3.5);  // ahead is past the end: the last frame counts
    EXPECT_FALSE(track.isReady());
    video.setAvailable({{4, 4}});
    EXPECT_TRUE(track.isReady());

    track.addClip(std::make_shared<FLKPlaceholderClip>("p", FLKTimeRange{4, 6}));
    track.setCurrentTime(4.9);  // a placeholder has no frames to wait for
    video.setAvailable({});
    EXPECT_TRUE(track.isReady());
}
