#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "FLKMediaTestSupport.h"
#include "core/media/FLKAsset.h"
#include "core/media/FLKAudioMuxer.h"

extern "C" {
#include <libavutil/avutil.h>
}

namespace {

constexpr double kAACFrame = 1024.0 / 44100;  // the longest AAC frame at the rates used here

std::string silentVideo() {
    FLKSyntheticVideo::Options options;
    options.frameCount = 75;  // 2.5 s
    return flk::test::syntheticVideo("mux-video.mp4", options);
}

std::string tone(double seconds) {
    std::string path = flk::test::mediaPath("mux-tone-" + std::to_string(seconds) + ".m4a").string();
    EXPECT_TRUE(FLKSyntheticVideo::writeTone(path, seconds));
    return path;
}

void expectMuxedLikeTheVideo(const std::string& path) {
    flk::test::StreamFacts video = flk::test::probeStream(path, AVMEDIA_TYPE_VIDEO);
    flk::test::StreamFacts audio = flk::test::probeStream(path, AVMEDIA_TYPE_AUDIO);
    EXPECT_EQ(video.codec, "h264");
    EXPECT_EQ(video.packets, 75);  // copied, not re-encoded
    EXPECT_NEAR(video.duration, 2.5, 1e-6);
    EXPECT_EQ(audio.codec, "aac");
    EXPECT_NEAR(audio.duration, 2.5, kAACFrame);
    std::vector<std::string> boxes = flk::test::topLevelBoxes(path);
    auto moov = std::find(boxes.begin(), boxes.end(), "moov");
    auto mdat = std::find(boxes.begin(), boxes.end(), "mdat");
    ASSERT_NE(moov, boxes.end());
    ASSERT_NE(mdat, boxes.end());
    EXPECT_LT(moov, mdat) << "index not in front";
}

TEST(FLKAudioMuxer, LongerAudioIsCutShorterAudioIsPaddedMissingAudioIsSilence) {
    for (double seconds : {4.0, 1.0, 0.0}) {
        std::string destination = flk::test::mediaPath("muxed-" + std::to_string(seconds) + ".mp4").string();
        FLKError error;
        ASSERT_TRUE(FLKAudioMuxer::muxVideo(silentVideo(), seconds > 0 ? tone(seconds) : "", destination, &error))
            << error.fullMessage();
        SCOPED_TRACE(seconds);
        expectMuxedLikeTheVideo(destination);
        FLKAsset asset(destination);
        EXPECT_TRUE(asset.hasAudio());
        EXPECT_NEAR(asset.duration(), 2.5, kAACFrame);
    }
}

TEST(FLKAudioMuxer, FailuresNameTheFileAndLeaveTheDestinationAlone) {
    std::string missingFolder = flk::test::mediaPath("no-folder/out.mp4").string();
    FLKError error;
    EXPECT_FALSE(FLKAudioMuxer::muxVideo(silentVideo(), "", missingFolder, &error));
    EXPECT_NE(error.fullMessage().find(missingFolder), std::string::npos) << error.fullMessage();
    EXPECT_FALSE(std::filesystem::exists(flk::test::mediaPath("no-folder")));

    std::string destination = flk::test::mediaPath("kept.mp4").string();
    std::ofstream(destination) << "previous export";
    std::string missingAudio = flk::test::mediaPath("no-such-sound.m4a").string();
    std::string videoAsAudio = silentVideo();  // has no audio stream
    for (const std::string& audio : {missingAudio, videoAsAudio}) {
        FLKError muxError;
        EXPECT_FALSE(FLKAudioMuxer::muxVideo(silentVideo(), audio, destination, &muxError));
        EXPECT_NE(muxError.fullMessage().find(audio), std::string::npos) << muxError.fullMessage();
        std::ifstream kept(destination);
        std::string content((std::istreambuf_iterator<char>(kept)), std::istreambuf_iterator<char>());
        EXPECT_EQ(content, "previous export");
    }
    std::vector<std::string> leftovers;
    for (const auto& entry : std::filesystem::directory_iterator(flk::test::mediaPath("").parent_path()))
        if (entry.path().extension() == ".tmp") leftovers.push_back(entry.path().string());
    EXPECT_TRUE(leftovers.empty()) << leftovers.front();
}

}  // namespace
