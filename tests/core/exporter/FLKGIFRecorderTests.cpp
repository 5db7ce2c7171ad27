#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>
#include <numeric>
#include <thread>

#include "core/exporter/FLKGIFRecorder.h"
#include "core/exporter/FLKGIFTestSupport.h"

namespace fs = std::filesystem;
using flktest::decodeGIF;
using flktest::screenRecordingFrame;

namespace {
constexpr int kWidth = 160, kHeight = 288;

fs::path freshFolder(const std::string& name) {
    fs::path folder = fs::path(std::getenv("FLICKWELL_HOME")) / name;
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder;
}

std::shared_ptr<FLKExportOptions> gifOptions(const fs::path& url, double width, double height, std::uint64_t numFrames,
                                             std::uint64_t fps, std::uint64_t outputFps) {
    return FLKExportOptions::exportOptionsWithType(FLKExportTypeGIF, url, FLKRect(0, 0, width, height),
                                                   FLKSize{width, height}, numFrames, fps, outputFps, std::nullopt);
}

FLKPixelBuffer solid(int width, int height, std::uint8_t r, std::uint8_t g, std::uint8_t b) {
    FLKPixelBuffer frame(width, height);
    for (size_t i = 0; i < frame.bgra.size(); i += 4) {
        frame.bgra[i] = b, frame.bgra[i + 1] = g, frame.bgra[i + 2] = r, frame.bgra[i + 3] = 255;
    }
    return frame;
}

std::vector<std::string> filesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    return names;
}

// A 2x box filter, written independently of the recorder's resampler.
std::vector<std::uint8_t> halved(const FLKPixelBuffer& frame) {
    std::vector<std::uint8_t> rgba = flktest::rgbaOf(frame), out(static_cast<size_t>(frame.width / 2) * frame.height / 2 * 4);
    for (int y = 0; y < frame.height / 2; ++y) {
        for (int x = 0; x < frame.width / 2; ++x) {
            for (int c = 0; c < 4; ++c) {
                int sum = 0;
                for (int j = 0; j < 2; ++j)
                    for (int i = 0; i < 2; ++i) sum += rgba[((static_cast<size_t>(2 * y + j) * frame.width) + 2 * x + i) * 4 + c];
                out[(static_cast<size_t>(y) * (frame.width / 2) + x) * 4 + c] = static_cast<std::uint8_t>((sum + 2) / 4);
            }
        }
    }
    return out;
}
}  // namespace

class FLKGIFRecorderModes : public ::testing::TestWithParam<FLKGIFRecorder::PaletteMode> {};

// 30 buffers rendered at 30 fps for a 15 fps GIF, appended from a render
// thread: the first (red) buffer is dropped, the rest thinned to every other.
TEST_P(FLKGIFRecorderModes, WritesThinnedFramesWithExactDelaysFromARenderThread) {
    fs::path url = freshFolder("thinned") / "clip.gif";
    FLKGIFRecorder recorder(gifOptions(url, kWidth, kHeight, 30, 30, 15), GetParam());
    std::vector<double> progress;
    recorder.setProgressHandler([&](double value) { progress.push_back(value); });
    FLKError error;
    ASSERT_TRUE(recorder.record(&error)) << error.fullMessage();

    std::thread renderThread([&] {
        recorder.appendBuffer(solid(kWidth, kHeight, 255, 0, 0));
        for (int i = 1; i < 30; ++i) recorder.appendBuffer(screenRecordingFrame(kWidth, kHeight, i));
    });
    renderThread.join();
    EXPECT_TRUE(recorder.didSkipFirstFrame());
    ASSERT_TRUE(recorder.finish(&error)) << error.fullMessage();
    EXPECT_EQ(filesIn(url.parent_path()), std::vector<std::string>{"clip.gif"});
    EXPECT_EQ(fs::status(url).permissions() & fs::perms::others_read, fs::perms::others_read);

    flktest::DecodedGIF gif = decodeGIF(url);
    ASSERT_TRUE(gif.ok);
    EXPECT_EQ(gif.version, "GIF89a");
    EXPECT_EQ(gif.width, kWidth);
    EXPECT_EQ(gif.height, kHeight);
    EXPECT_TRUE(gif.hasLoopExtension);
    EXPECT_EQ(gif.loopCount, 65535);

    const std::vector<int> takenBuffers{1, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28};
    ASSERT_EQ(gif.frames.size(), takenBuffers.size());
    EXPECT_EQ(recorder.currentFrame(), takenBuffers.size());
    ASSERT_FALSE(progress.empty());
    EXPECT_DOUBLE_EQ(progress.back(), 1.0);
    // 15 frames of 1/15 s: one second, in steps of 6 or 7 hundredths.
    EXPECT_EQ(std::accumulate(gif.delays.begin(), gif.delays.end(), 0), 100);
    for (int delay : gif.delays) EXPECT_TRUE(delay == 6 || delay == 7) << delay;

    for (size_t k = 0; k < takenBuffers.size(); ++k) {
        auto source = flktest::rgbaOf(screenRecordingFrame(kWidth, kHeight, takenBuffers[k]));
        EXPECT_GE(flktest::psnr(gif.frames[k], source), 30.0) << "frame " << k;
    }
}

// An append that fails half way (the file size limit) reports the file and
// leaves nothing behind, neither the GIF nor its temporary.
TEST_P(FLKGIFRecorderModes, WriteFailureLeavesNoFile) {
    fs::path folder = freshFolder("full");
    fs::path url = folder / "big.gif";
    FLKGIFRecorder recorder(gifOptions(url, 320, 320, 20, 15, 15), GetParam());
    FLKError error;
    ASSERT_TRUE(recorder.record(&error));

    rlimit saved{};
    getrlimit(RLIMIT_FSIZE, &saved);
    auto previousHandler = signal(SIGXFSZ, SIG_IGN);
    rlimit small = saved;
    small.rlim_cur = 16 * 1024;
    setrlimit(RLIMIT_FSIZE, &small);
    for (int i = 0; i < 20; ++i) {
        FLKPixelBuffer noise(320, 320);
        std::uint32_t state = 12345u + static_cast<std::uint32_t>(i);
        for (auto& byte : noise.bgra) byte = static_cast<std::uint8_t>((state = state * 1664525u + 1013904223u) >> 24);
        recorder.appendBuffer(noise);
    }
    bool finished = recorder.finish(&error);
    setrlimit(RLIMIT_FSIZE, &saved);
    signal(SIGXFSZ, previousHandler);

    EXPECT_FALSE(finished);
    EXPECT_NE(error.localizedDescription.find(url.string()), std::string::npos) << error.fullMessage();
    EXPECT_TRUE(filesIn(folder).empty());
}

INSTANTIATE_TEST_SUITE_P(Palettes, FLKGIFRecorderModes,
                         ::testing::Values(FLKGIFRecorder::PaletteMode::Shared, FLKGIFRecorder::PaletteMode::PerFrame));

TEST(FLKGIFRecorder, ScalesFramesToTheVideoSize) {
    fs::path folder = freshFolder("scaled");
    // Rendered at twice the size: the GIF holds the 2x2 averages.
    FLKGIFRecorder smaller(gifOptions(folder / "smaller.gif", kWidth, kHeight, 4, 15, 15));
    ASSERT_TRUE(smaller.record());
    for (int i = 0; i < 4; ++i) smaller.appendBuffer(screenRecordingFrame(2 * kWidth, 2 * kHeight, i, 12));
    ASSERT_TRUE(smaller.finish());
    flktest::DecodedGIF gif = decodeGIF(folder / "smaller.gif");
    ASSERT_EQ(gif.frames.size(), 3u);
    EXPECT_EQ(gif.width, kWidth);
    for (int k = 0; k < 3; ++k) {
        EXPECT_GE(flktest::psnr(gif.frames[k], halved(screenRecordingFrame(2 * kWidth, 2 * kHeight, k + 1, 12))), 30.0);
    }

    // Rendered smaller than the video: enlarged, a flat colour stays flat.
    FLKGIFRecorder larger(gifOptions(folder / "larger.gif", 200, 120, 3, 15, 15));
    ASSERT_TRUE(larger.record());
    for (int i = 0; i < 3; ++i) larger.appendBuffer(solid(50, 30, 20, 120, 220));
    ASSERT_TRUE(larger.finish());
    gif = decodeGIF(folder / "larger.gif");
    ASSERT_EQ(gif.frames.size(), 2u);
    EXPECT_EQ(gif.width, 200);
    EXPECT_EQ(gif.height, 120);
    EXPECT_GE(flktest::psnr(gif.frames[1], flktest::rgbaOf(solid(200, 120, 20, 120, 220))), 40.0);
}

TEST(FLKGIFRecorder, MissingFolderIsAnErrorNamingTheFile) {
    fs::path folder = freshFolder("missing-parent");
    fs::path url = folder / "absent" / "clip.gif";
    FLKGIFRecorder recorder(gifOptions(url, kWidth, kHeight, 10, 15, 15));
    FLKError error;
    EXPECT_FALSE(recorder.record(&error));
    EXPECT_NE(error.localizedDescription.find(url.string()), std::string::npos) << error.fullMessage();
    EXPECT_FALSE(error.failureReason.empty());
    EXPECT_FALSE(recorder.isRecording());
    recorder.appendBuffer(solid(kWidth, kHeight, 1, 2, 3));
    EXPECT_FALSE(recorder.finish(&error));
    EXPECT_TRUE(filesIn(folder).empty());
}

TEST(FLKGIFRecorder, AbandonedRecordingRemovesItsTemporaryFile) {
    fs::path folder = freshFolder("abandoned");
    {
        FLKGIFRecorder recorder(gifOptions(folder / "clip.gif", kWidth, kHeight, 10, 15, 15));
        ASSERT_TRUE(recorder.record());
        for (int i = 0; i < 5; ++i) recorder.appendBuffer(screenRecordingFrame(kWidth, kHeight, i));
        EXPECT_FALSE(filesIn(folder).empty());
    }
    EXPECT_TRUE(filesIn(folder).empty());
}

// Two GIFs of one process at 15 and 10 fps: each keeps its own timing.
TEST(FLKGIFRecorder, EachRecorderHasTheFrameDelayOfItsOwnRate) {
    fs::path folder = freshFolder("own-delay");
    std::vector<std::vector<int>> delays;
    for (std::uint64_t outputFps : {15u, 10u}) {
        fs::path url = folder / ("clip" + std::to_string(outputFps) + ".gif");
        FLKGIFRecorder recorder(gifOptions(url, 64, 64, outputFps * 2, outputFps, outputFps));
        ASSERT_TRUE(recorder.record());
        for (std::uint64_t i = 0; i < 7; ++i) recorder.appendBuffer(solid(64, 64, static_cast<std::uint8_t>(i * 30), 0, 0));
        ASSERT_TRUE(recorder.finish());
        delays.push_back(decodeGIF(url).delays);
    }
    ASSERT_EQ(delays[0].size(), 6u);
    ASSERT_EQ(delays[1].size(), 6u);
    EXPECT_EQ(std::accumulate(delays[0].begin(), delays[0].end(), 0), 40);
    EXPECT_EQ(delays[1], std::vector<int>(6, 10));
}
