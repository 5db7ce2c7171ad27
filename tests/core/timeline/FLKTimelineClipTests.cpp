#include <gtest/gtest.h>

#include "core/timeline/FLKPlaceholderClip.h"
#include "core/timeline/FLKVideoTransitionClip.h"
#include "core/timeline/FLKTimelineTestSupport.h"

using flktest::videoClip;

TEST(FLKTimeRange, ToleranceIsATenthOfAMillisecondInSinglePrecision) {
    const FLKTimeRange range{4.0, 10.0};
    EXPECT_TRUE(range.containsTime(4.0 - 0.00005));
    EXPECT_FALSE(range.containsTime(4.0 - 0.001));
    EXPECT_TRUE(range.containsTime(10.0 + 0.00005));
    EXPECT_FALSE(range.containsTime(10.0 + 0.001));

    EXPECT_EQ(range.serialized().dump(), R"({"start":4.0,"end":10.0})");
    EXPECT_EQ(FLKTimeRange::rangeWithDictionary(range.serialized()), range);
}

TEST(FLKVideoClip, TrimmingKeepsThePlaceAndCutsTheSource) {
    auto clip = videoClip("c", 2, 7);  // source 0-5
    clip->setName("shown");

    EXPECT_EQ(clip->videoClipByTrimmingLeftFromTimelineTime(2), clip);
    EXPECT_EQ(clip->videoClipByTrimmingRightFromTimelineTime(7), clip);

    auto left = clip->videoClipByTrimmingLeftFromTimelineTime(3.5);
    EXPECT_EQ(left->timeRange(), (FLKTimeRange{2, 5.5}));
    EXPECT_EQ(left->clipRange(), (FLKTimeRange{1.5, 5}));
    EXPECT_EQ(left->identifier(), "c");
    EXPECT_EQ(left->name(), "");  // names are not carried through edits
    EXPECT_TRUE(left->isEqual(*clip));

    auto right = clip->videoClipByTrimmingRightFromTimelineTime(6);
    EXPECT_EQ(right->timeRange(), (FLKTimeRange{2, 6}));
    EXPECT_EQ(right->clipRange(), (FLKTimeRange{0, 4}));
}

TEST(FLKVideoClip, SplittingMakesLeftAndRightHalves) {
    auto clip = videoClip("c", 0, 5);
    auto [left, right] = clip->videoClipBySplittingAtTimelineTime(2);
    EXPECT_EQ(left->identifier(), "c_l");
    EXPECT_EQ(left->timeRange(), (FLKTimeRange{0, 2}));
    EXPECT_EQ(left->clipRange(), (FLKTimeRange{0, 2}));
    EXPECT_EQ(right->identifier(), "c_r");
    EXPECT_EQ(right->timeRange(), (FLKTimeRange{2, 5}));
    EXPECT_EQ(right->clipRange(), (FLKTimeRange{2, 5}));
    EXPECT_EQ(right->clipTimeForTimelineTime(3), 3);
}

TEST(FLKVideoClip, FramesComeFromTheVideoTrack) {
    auto clip = std::make_shared<FLKVideoClip>("v", flktest::mediaOfLength("/m/a.mp4", 10, 29.97f),
                                               FLKTimeRange{0, 10}, FLKTimeRange{0, 10});
    EXPECT_EQ(clip->fps(), 30u);
    EXPECT_EQ(clip->numFrames(), 300u);
    auto withoutVideo = std::make_shared<FLKVideoClip>(
        "n", std::make_shared<FLKVideoClipMedia>("/m/b.m4a", 3, std::nullopt), FLKTimeRange{0, 3}, FLKTimeRange{0, 3});
    EXPECT_EQ(withoutVideo->fps(), 0u);
    EXPECT_EQ(withoutVideo->numFrames(), 0u);
}

TEST(FLKTimelineClip, MovedCopiesKeepIdentityAndPlaceholdersStopAtZero) {
    auto clip = videoClip("c", 1, 3);
    auto moved = std::static_pointer_cast<FLKVideoClip>(clip->clipByOffsetingWithTime(2));
    EXPECT_EQ(moved->timeRange(), (FLKTimeRange{3, 5}));
    EXPECT_EQ(moved->clipRange(), clip->clipRange());
    EXPECT_EQ(moved->asset(), clip->asset());

    auto placeholder = std::make_shared<FLKPlaceholderClip>("p", FLKTimeRange{3, 5});
    EXPECT_EQ(placeholder->name(), "Placeholder");
    auto clamped = placeholder->clipByOffsetingWithTime(-10);
    EXPECT_EQ(clamped->timeRange(), (FLKTimeRange{0, 2}));
    EXPECT_EQ(clamped->name(), "Placeholder");
    EXPECT_EQ(placeholder->shiftDuration(), 2);

    auto transition = std::make_shared<FLKVideoTransitionClip>("t", "a", "b", nullptr, FLKTimeRange{3, 4});
    EXPECT_EQ(transition->shiftDuration(), 0);
    EXPECT_EQ(transition->clipByOffsetingWithTime(-1)->timeRange(), (FLKTimeRange{2, 3}));
}

TEST(FLKTimelineClip, EqualityIsByIdentityNotRange) {
    auto a = videoClip("x", 0, 4);
    EXPECT_TRUE(a->isEqual(*videoClip("x", 5, 6)));
    EXPECT_FALSE(a->isEqual(*videoClip("y", 0, 4)));
    EXPECT_FALSE(a->isEqual(FLKPlaceholderClip("x", {0, 4})));
    EXPECT_EQ(a->hash(), videoClip("x", 1, 2)->hash());

    FLKVideoTransitionClip t1("t1", "a", "b", nullptr, {3, 4});
    EXPECT_TRUE(t1.isEqual(FLKVideoTransitionClip("t2", "a", "b", nullptr, {7, 8})));
    EXPECT_FALSE(t1.isEqual(FLKVideoTransitionClip("t1", "a", "c", nullptr, {3, 4})));
}

TEST(FLKVideoClip, StoredMediaPathsStayInsideTheDocument) {
    flktest::ScopedMediaLengths lengths({});
    auto read = [](const std::string& stored) {
        return FLKVideoClip::newWithDictionary({{"className", "FLKVideoClip"}, {"identifier", "v"}, {"assetURL", stored}})
            ->assetURL();
    };
    EXPECT_EQ(read("media/a.mp4"), std::filesystem::path("media/a.mp4"));  // no document being read
    EXPECT_EQ(read("../../etc/passwd"), std::filesystem::path("media/passwd"));
    EXPECT_EQ(read("/etc/passwd"), std::filesystem::path("media/passwd"));
}

TEST(FLKTimelineClip, SerialisedKeys) {
    auto clip = std::make_shared<FLKVideoClip>("v", flktest::mediaOfLength("/docs/Doc.flickwell/media/rec.mp4", 9),
                                               FLKTimeRange{1, 4}, FLKTimeRange{2, 5});
    clip->setName("not stored");
    EXPECT_EQ(clip->serialized().dump(),
              R"({"className":"FLKVideoClip","identifier":"v","assetURL":"media/rec.mp4",)"
              R"("timeRange":{"start":1.0,"end":4.0},"clipRange":{"start":2.0,"end":5.0}})");

    FLKVideoTransitionClip transition("t", "a", "b", nullptr, {3, 4});
    transition.setName("Transition Clip - 0 (a -> b)");
    FLKJSON json = transition.serialized();
    std::vector<std::string> keys;
    for (auto it = json.begin(); it != json.end(); ++it) keys.push_back(it.key());
    EXPECT_EQ(keys, (std::vector<std::string>{"className", "identifier", "name", "fromVideoClipIdentifier",
                                              "toVideoClipIdentifier", "transition", "timeRange"}));
    auto read = FLKVideoTransitionClip::newWithDictionary(json);
    EXPECT_EQ(read->name(), "");
    EXPECT_EQ(read->fromVideoClipIdentifier(), "a");
    EXPECT_EQ(read->toVideoClipIdentifier(), "b");
    EXPECT_EQ(read->timeRange(), (FLKTimeRange{3, 4}));
}
