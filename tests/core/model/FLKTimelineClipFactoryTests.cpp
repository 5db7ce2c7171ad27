#include <gtest/gtest.h>

#include <fstream>

#include "core/media/FLKMediaTestSupport.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKMedia.h"
#include "core/model/FLKTimelineClipFactory.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKVideoClip.h"

namespace fs = std::filesystem;

namespace {
class FLKTimelineClipFactoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        file = FLKFile::temporaryFile();
        FLKFile::setCurrentFile(file);
        timeline = FLKTimeline::timelineWithTimer({});
        factory = FLKTimelineClipFactory::clipFactoryWithTimeline(timeline);
    }
    void TearDown() override { FLKFile::setCurrentFile(nullptr); }

    static std::string movie(int frames) {
        FLKSyntheticVideo::Options options;
        options.frameCount = frames;
        return flk::test::syntheticVideo("clip-" + std::to_string(frames) + ".mp4", options);
    }
    std::shared_ptr<FLKTimelineVideoTrack> videoTrack() const {
        return timeline->tracks().empty() ? nullptr
                                          : std::dynamic_pointer_cast<FLKTimelineVideoTrack>(timeline->tracks()[0]);
    }

    std::shared_ptr<FLKFile> file;
    std::shared_ptr<FLKTimeline> timeline;
    std::shared_ptr<FLKTimelineClipFactory> factory;
};
}  // namespace

// Each movie is copied into the document's media and laid after the last clip.
TEST_F(FLKTimelineClipFactoryTest, MoviesGoIntoTheMediaAndOntoTheTrack) {
    const fs::path one = movie(60), two = movie(30);
    factory->makeClipForResourceURL(one);
    FLKError error;
    auto copy = factory->makeClip(two, &error);
    ASSERT_TRUE(copy) << error.fullMessage();

    ASSERT_TRUE(videoTrack());
    const auto clips = videoTrack()->videoClips();
    ASSERT_EQ(clips.size(), 2u);
    EXPECT_EQ(clips[1]->assetURL(), *copy);
    for (const auto& clip : clips) {
        EXPECT_EQ(clip->assetURL().parent_path(), file->media()->url());
        EXPECT_EQ(clip->assetURL().extension(), ".mp4");
        EXPECT_TRUE(fs::is_regular_file(clip->assetURL()));
    }
    EXPECT_NE(clips[0]->assetURL(), clips[1]->assetURL());
    EXPECT_EQ(fs::file_size(clips[1]->assetURL()), fs::file_size(two));
    EXPECT_NEAR(clips[0]->timeRange().end, 2.0, 1e-3);
    EXPECT_NEAR(clips[1]->timeRange().start, clips[0]->timeRange().end, 1e-9);
    EXPECT_NEAR(clips[1]->timeRange().end, 3.0, 1e-3);
    EXPECT_EQ(file->media()->allFiles().size(), 2u);
}

TEST_F(FLKTimelineClipFactoryTest, OtherFilesAreIgnored) {
    const fs::path picture = flk::test::mediaPath("picture.png");
    std::ofstream(picture) << "not a movie";
    std::vector<fs::path> handed;
    FLKTimelineClipFactory recording([&](const fs::path& url) { handed.push_back(url); });
    FLKError error;
    EXPECT_FALSE(recording.makeClip(picture, &error));
    EXPECT_TRUE(error.localizedDescription.empty());
    EXPECT_TRUE(handed.empty());
    EXPECT_TRUE(file->media()->allFiles().empty());

    EXPECT_TRUE(FLKTimelineClipFactory::isMovieFile("/a/Recording.MOV"));
    EXPECT_TRUE(FLKTimelineClipFactory::isMovieFile("/a/b.m4v"));
    EXPECT_FALSE(FLKTimelineClipFactory::isMovieFile("/a/b.mp3"));
    EXPECT_FALSE(FLKTimelineClipFactory::isMovieFile("/a/mp4"));
}

// Nothing reaches the timeline unless the copy exists.
TEST_F(FLKTimelineClipFactoryTest, AMovieThatCannotBeCopiedMakesNoClip) {
    std::vector<fs::path> handed;
    FLKTimelineClipFactory recording([&](const fs::path& url) { handed.push_back(url); });
    FLKError error;
    EXPECT_FALSE(recording.makeClip("/no/such/recording.mp4", &error));
    EXPECT_FALSE(error.fullMessage().empty());

    FLKFile::setCurrentFile(nullptr);
    FLKError noDocument;
    EXPECT_FALSE(recording.makeClip(movie(30), &noDocument));
    EXPECT_NE(noDocument.fullMessage().find("No document is open"), std::string::npos);
    EXPECT_TRUE(handed.empty());
}
