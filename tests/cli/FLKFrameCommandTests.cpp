#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "core/exporter/FLKExportTestSupport.h"
#include "core/media/FLKAsset.h"
#include "core/media/FLKImageIO.h"
#include "core/media/FLKMediaTestSupport.h"
#include "core/media/FLKSyntheticVideo.h"
#include "support/FLKProgramRun.h"

namespace {
namespace fs = std::filesystem;

using flk::testing::ProgramRun;

ProgramRun runCLI(const std::string& arguments) { return flk::testing::runProgram(FLK_CLI_PATH, arguments); }

void writeText(const fs::path& url, const std::string& text) { std::ofstream(url) << text; }

// A 200 x 100 scene: a red-to-blue gradient background and, on its right
// half, a solid green picture loaded from media/green.png beside the file.
const char* kScene = R"({
  "className": "FLKScene", "identifier": "S", "zOrder": 0,
  "mainCamera": {"className": "FLKCamera", "identifier": "C", "zOrder": 0,
                 "frame": {"X": 0, "Y": 0, "Width": 200, "Height": 100}},
  "children": [
    {"className": "FLKColorGradientSprite", "identifier": "G", "zOrder": 1,
     "colors": ["#ff0000", "#ff0000", "#0000ff", "#0000ff"],
     "shape": {"className": "FLKPlane", "points": [{"X": 0, "Y": 0}, {"X": 200, "Y": 0},
                                                   {"X": 200, "Y": 100}, {"X": 0, "Y": 100}]}},
    {"className": "FLKTexturedSprite", "identifier": "T", "zOrder": 2, "resourceURL": "media/green.png",
     "shape": {"className": "FLKQuad", "points": [{"X": 100, "Y": 0}, {"X": 200, "Y": 0},
                                                  {"X": 200, "Y": 100}, {"X": 100, "Y": 100}]}}
  ]
})";

class FLKFrameCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::path(::testing::TempDir()) / ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::remove_all(folder);
        fs::create_directories(folder / "media");
        FLKImage green(8, 8);
        for (int i = 0; i < 64; ++i) {
            green.rgba[i * 4 + 1] = 255;
            green.rgba[i * 4 + 3] = 255;
        }
        ASSERT_TRUE(flk::writePNG(green, folder / "media" / "green.png"));
        writeText(folder / "scene.json", kScene);
    }
    void TearDown() override { EXPECT_TRUE(flk::testing::workingFoldersLeft().empty()); }
    fs::path folder;
};

TEST_F(FLKFrameCommandTest, RendersTheCameraFrameAtTheRequestedSize) {
    auto out = folder / "frame.png";
    ProgramRun result = runCLI("frame " + (folder / "scene.json").string() + " --out " + out.string() + " --size 400x200");
    ASSERT_EQ(result.exitCode, 0) << result.output();
    auto image = flk::readImage(out);
    ASSERT_TRUE(image);
    ASSERT_EQ(image->width, 400);
    ASSERT_EQ(image->height, 200);
    const uint8_t* topLeft = image->pixel(2, 2);  // gradient: red at the top
    EXPECT_GE(topLeft[0], 230);
    EXPECT_LE(topLeft[2], 25);
    const uint8_t* bottomLeft = image->pixel(2, 197);  // blue at the bottom
    EXPECT_GE(bottomLeft[2], 230);
    EXPECT_LE(bottomLeft[0], 25);
    const uint8_t* right = image->pixel(300, 100);  // the picture
    EXPECT_EQ(right[0], 0);
    EXPECT_EQ(right[1], 255);
    EXPECT_EQ(right[3], 255);
}

TEST_F(FLKFrameCommandTest, FrameOptionPicksThePartOfTheScene) {
    auto out = folder / "part.png";
    ProgramRun result = runCLI("frame " + (folder / "scene.json").string() + " --out " + out.string() +
                           " --frame 120,10,40,20");
    ASSERT_EQ(result.exitCode, 0) << result.output();
    auto image = flk::readImage(out);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 40);
    EXPECT_EQ(image->height, 20);
    for (auto [x, y] : {std::pair{0, 0}, {39, 19}}) EXPECT_EQ(image->pixel(x, y)[1], 255);
}

TEST_F(FLKFrameCommandTest, BadInputFailsWithAMessageNamingTheFileAndNoOutput) {
    auto out = folder / "never.png";
    writeText(folder / "broken.json", "{\"className\": \"FLKScene\", ");
    writeText(folder / "alien.json", R"({"className": "FLKScene", "children": [{"className": "FLKTeapot"}]})");
    struct Case {
        std::string file;
        std::string problem;
    };
    for (const Case& c : {Case{"missing.json", "no such file"}, Case{"broken.json", "not valid JSON"},
                          Case{"alien.json", "unknown class \"FLKTeapot\""}}) {
        ProgramRun result = runCLI("frame " + (folder / c.file).string() + " --out " + out.string());
        EXPECT_NE(result.exitCode, 0) << c.file;
        EXPECT_NE(result.output().find((folder / c.file).string()), std::string::npos) << result.output();
        EXPECT_NE(result.output().find(c.problem), std::string::npos) << result.output();
    }
    ProgramRun badSize = runCLI("frame " + (folder / "scene.json").string() + " --out " + out.string() + " --size 0x5");
    EXPECT_NE(badSize.exitCode, 0);
    EXPECT_NE(badSize.output().find("--size"), std::string::npos) << badSize.output();
    EXPECT_FALSE(fs::exists(out));
}

// A 320 x 240 scene whose screen fills the camera frame.
const char* kScreenScene = R"({
  "className": "FLKScene", "identifier": "S", "zOrder": 0,
  "mainCamera": {"className": "FLKCamera", "identifier": "C", "zOrder": 0,
                 "frame": {"X": 0, "Y": 0, "Width": 320, "Height": 240}},
  "children": [
    {"className": "FLKVideoContainer", "identifier": "V", "zOrder": 1,
     "plane": {"className": "FLKPlane", "points": [{"X": 0, "Y": 0}, {"X": 320, "Y": 0},
                                                   {"X": 320, "Y": 240}, {"X": 0, "Y": 240}]}}
  ]
})";

// The frame number a rendered picture of a numbered recording shows.
std::optional<uint32_t> numberInPicture(const FLKImage& image) {
    std::vector<uint8_t> grey(static_cast<size_t>(image.width) * image.height);
    for (size_t i = 0; i < grey.size(); ++i) grey[i] = image.rgba[i * 4 + 1];
    return FLKSyntheticVideo::numberInLuma(grey.data(), image.width, image.width, image.height);
}

class FLKFrameCommandVideoTest : public FLKFrameCommandTest {
protected:
    void SetUp() override {
        FLKFrameCommandTest::SetUp();
        writeText(folder / "screen.json", kScreenScene);
        FLKSyntheticVideo::Options options;
        options.frameCount = 60;  // two seconds
        ASSERT_TRUE(FLKSyntheticVideo::writeVideo((folder / "numbered.mp4").string(), options));
    }
    ProgramRun frameAt(const std::string& time, const fs::path& out, const std::string& scene = "screen.json") {
        return runCLI("frame " + (folder / scene).string() + " --out " + out.string() + " --video " +
                      (folder / "numbered.mp4").string() + " --time " + time);
    }
};

// Half a frame past frames 0, 31 and 59: the picture carries that number.
TEST_F(FLKFrameCommandVideoTest, TheScreenShowsTheRecordingsFrameAtTheTime) {
    for (auto [time, number] : {std::pair{"0.0166", 0u}, {"1.05", 31u}, {"1.9833", 59u}}) {
        auto out = folder / ("at-" + std::string(time) + ".png");
        ProgramRun result = frameAt(time, out);
        ASSERT_EQ(result.exitCode, 0) << result.output();
        auto image = flk::readImage(out);
        ASSERT_TRUE(image);
        ASSERT_EQ(image->width, 320);
        EXPECT_EQ(numberInPicture(*image), number) << "at " << time;
    }
}

TEST_F(FLKFrameCommandVideoTest, ATimeOutsideTheRecordingOrNoScreenIsAClearError) {
    auto out = folder / "never.png";
    ProgramRun late = frameAt("2.5", out);
    EXPECT_NE(late.exitCode, 0);
    EXPECT_NE(late.output().find("past the end of " + (folder / "numbered.mp4").string()), std::string::npos)
        << late.output();
    EXPECT_NE(late.output().find("2.000 s"), std::string::npos) << late.output();

    ProgramRun early = frameAt("-1", out);
    EXPECT_NE(early.exitCode, 0);
    EXPECT_NE(early.output().find("--time"), std::string::npos) << early.output();

    ProgramRun noScreen = frameAt("1", out, "scene.json");
    EXPECT_NE(noScreen.exitCode, 0);
    EXPECT_NE(noScreen.output().find("no video container"), std::string::npos) << noScreen.output();

    ProgramRun missing = runCLI("frame " + (folder / "screen.json").string() + " --out " + out.string() +
                            " --video " + (folder / "gone.mp4").string());
    EXPECT_NE(missing.exitCode, 0);
    EXPECT_NE(missing.output().find((folder / "gone.mp4").string() + " does not exist"), std::string::npos)
        << missing.output();
    EXPECT_FALSE(fs::exists(out));
}

// A phone's recording stored on its side and turned by its display matrix
// fills the screen upright.
TEST_F(FLKFrameCommandVideoTest, ARecordingStoredOnItsSideShowsUpright) {
    for (int degrees : {90, 270}) {
        FLKSyntheticVideo::Options options;
        options.width = 240;
        options.height = 320;
        options.frameCount = 40;
        options.orientation = FLKVideoOrientation(degrees, false);
        const auto video = folder / ("turned" + std::to_string(degrees) + ".mp4");
        ASSERT_TRUE(FLKSyntheticVideo::writeVideo(video.string(), options));
        const auto out = folder / ("turned" + std::to_string(degrees) + ".png");
        ProgramRun result = runCLI("frame " + (folder / "screen.json").string() + " --out " + out.string() +
                                   " --video " + video.string() + " --time 1.05");
        ASSERT_EQ(result.exitCode, 0) << result.output();
        auto image = flk::readImage(out);
        ASSERT_TRUE(image);
        EXPECT_EQ(numberInPicture(*image), 31u) << degrees << " degrees";
    }
}

// Recordings as screen recorders make them: at low rates, at high ones, and
// with no frames while the screen stands still. `frame` at any time and every
// frame of an export show the latest frame of the recording before their time.
struct Recording {
    std::string name;
    FLKSyntheticVideo::Options options;
    std::vector<double> probeTimes;  // none on a frame boundary
};

std::vector<Recording> recordingsAtEveryRate() {
    std::vector<Recording> recordings;
    for (int fps : {10, 12, 15, 24, 60}) {
        FLKSyntheticVideo::Options options;
        options.width = 120;
        options.height = 160;
        options.fps = fps;
        options.frameCount = 3 * fps / 2;
        recordings.push_back({std::to_string(fps) + "fps.mp4", options, {0.31, 0.87, 1.33}});
    }
    auto stillScreens = flk::test::recordingWithStillScreens();
    stillScreens.width = 120;
    stillScreens.height = 160;
    recordings.push_back({"still-screens.mp4", stillScreens, {0.2, 1.3, 3.0, 4.25}});
    return recordings;
}

class FLKRecordingTimingTest : public FLKFrameCommandTest {
protected:
    void SetUp() override {
        FLKFrameCommandTest::SetUp();
        writeText(folder / "screen.json", kScreenScene);
    }
    fs::path write(const Recording& recording) {
        const auto path = folder / recording.name;
        FLKError error;
        EXPECT_TRUE(FLKSyntheticVideo::writeVideo(path.string(), recording.options, &error)) << error.fullMessage();
        return path;
    }
    // The number `frame` shows at `time`, or a failure with the program's output.
    ::testing::AssertionResult frameShows(const fs::path& video, double time, uint32_t expected) {
        const auto out = folder / (video.stem().string() + "-" + std::to_string(time) + ".png");
        ProgramRun result = runCLI("frame " + (folder / "screen.json").string() + " --out " + out.string() +
                                   " --video " + video.string() + " --time " + std::to_string(time));
        if (result.exitCode != 0) return ::testing::AssertionFailure() << "at " << time << ": " << result.output();
        auto image = flk::readImage(out);
        if (!image) return ::testing::AssertionFailure() << "at " << time << ": no picture";
        auto number = numberInPicture(*image);
        if (number != expected) {
            return ::testing::AssertionFailure() << "at " << time << " shows "
                                                 << (number ? std::to_string(*number) : "no number")
                                                 << " instead of " << expected;
        }
        return ::testing::AssertionSuccess();
    }
};

TEST_F(FLKRecordingTimingTest, FrameShowsTheLatestFrameBeforeTheTimeAtAnyRate) {
    for (const auto& recording : recordingsAtEveryRate()) {
        const auto video = write(recording);
        const auto times = FLKSyntheticVideo::frameTimesOf(recording.options);
        for (double t : recording.probeTimes) {
            EXPECT_TRUE(frameShows(video, t, flk::test::frameShownAt(times, t))) << recording.name;
        }
    }
}

// Segments of 5 s: 0-5, 5-10, 10-15 and 15-17. Each time lies in another one.
TEST_F(FLKRecordingTimingTest, FrameReachesEverySegmentOfALongRecording) {
    Recording recording{"17s.mp4", {}, {}};
    recording.options.width = 120;
    recording.options.height = 160;
    recording.options.fps = 10;
    recording.options.frameCount = 170;
    const auto video = write(recording);
    for (double t : {2.45, 7.45, 12.45, 16.45}) {
        EXPECT_TRUE(frameShows(video, t, static_cast<uint32_t>(t * 10)));
    }
}

// The writer drops the renderer's first buffer: output frame k is drawn at
// (k + 1) / 30 s. The last one is drawn where the timeline stopped, a frame
// before its end.
TEST_F(FLKRecordingTimingTest, EveryExportedFrameShowsTheLatestFrameBeforeItsTime) {
    for (const auto& recording : recordingsAtEveryRate()) {
        SCOPED_TRACE(recording.name);
        const auto video = write(recording);
        const auto times = FLKSyntheticVideo::frameTimesOf(recording.options);
        const auto movie = folder / ("exported-" + recording.name);
        ProgramRun result = runCLI("export 'Full Screen' --video " + video.string() + " --size 90x160 --out " +
                                   movie.string() + " --quiet");
        ASSERT_EQ(result.exitCode, 0) << result.output();
        const auto numbers = flktest::probeMovie(movie, 1000).firstNumbers;
        const int frames = static_cast<int>(numbers.size());
        EXPECT_NEAR(frames, FLKAsset(video.string()).duration() * 30, 1.0);
        for (int k = 0; k < frames; ++k) {
            ASSERT_TRUE(numbers[k]) << "frame " << k << " shows no number";
            const uint32_t expected = flk::test::frameShownAt(times, (k + 1) / 30.0);
            if (k + 1 == frames && *numbers[k] == flk::test::frameShownAt(times, k / 30.0)) continue;
            EXPECT_EQ(*numbers[k], expected) << "frame " << k;
        }
    }
}
}  // namespace
