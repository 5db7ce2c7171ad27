#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/media/FLKAsset.h"
#include "core/media/FLKAssetImageGenerator.h"
#include "core/media/FLKImageIO.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/platform/FLKFolderLease.h"
#include "core/platform/FLKJSON.h"
#include "core/platform/FLKPaths.h"
#include "support/FLKProgramRun.h"

namespace {
namespace fs = std::filesystem;

using flk::testing::ProgramRun;
using flk::testing::quoted;

// Peak signal-to-noise ratio over the RGB channels of two pictures of one size.
double psnr(const FLKImage& a, const FLKImage& b) {
    double squared = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                const double d = double(a.pixel(x, y)[c]) - double(b.pixel(x, y)[c]);
                squared += d * d;
            }
        }
    }
    const double mse = squared / (3.0 * a.width * a.height);
    return mse == 0 ? 99.0 : 10.0 * std::log10(255.0 * 255.0 / mse);
}

class FLKDocumentCommandsTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::path(std::getenv("FLICKWELL_HOME")) /
                 ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    fs::path recording(const std::string& name, int frames) {
        FLKSyntheticVideo::Options options;
        options.width = 180;
        options.height = 320;
        options.frameCount = frames;
        auto path = folder / name;
        EXPECT_TRUE(FLKSyntheticVideo::writeVideo(path.string(), options));
        return path;
    }
    void TearDown() override { EXPECT_TRUE(flk::testing::workingFoldersLeft().empty()); }
    ProgramRun run(const std::string& arguments) { return flk::testing::runProgram(FLK_CLI_PATH, arguments); }
    fs::path folder;
};
}  // namespace

TEST_F(FLKDocumentCommandsTest, ListsTemplatesAndPresets) {
    auto templates = run("templates --json");
    ASSERT_EQ(templates.exitCode, 0) << templates.standardError;
    auto list = FLKJSON::parse(templates.standardOutput);
    ASSERT_GE(list.size(), 6u);
    EXPECT_EQ(list[0]["name"], "Phone Portrait");
    int frameless = 0;
    for (const auto& entry : list) frameless += entry["deviceFrame"] == false;
    EXPECT_EQ(frameless, 1);

    auto gifs = run("presets --type gif --json");
    ASSERT_EQ(gifs.exitCode, 0) << gifs.standardError;
    for (const auto& preset : FLKJSON::parse(gifs.standardOutput)) EXPECT_EQ(preset["type"], "gif");
    auto text = run("presets");
    EXPECT_NE(text.standardOutput.find("App Preview Phone Portrait"), std::string::npos);
}

// A document made from a template and two recordings joined by a fade holds
// both copies, a timeline with the overlap, and reads back through `info`.
TEST_F(FLKDocumentCommandsTest, NewDocumentHoldsTheRecordingsJoinedByTheTransition) {
    auto a = recording("a.mp4", 60), b = recording("b.mp4", 60);
    auto document = folder / "promo.flickwell";
    auto made = run("new --template 'full screen' --video " + quoted(a) + " --video " + quoted(b) +
                    " --transition fade --transition-duration 0.5 --out " + quoted(document));
    ASSERT_EQ(made.exitCode, 0) << made.standardError;

    auto info = run("info " + quoted(document) + " --json");
    ASSERT_EQ(info.exitCode, 0) << info.standardError;
    auto json = FLKJSON::parse(info.standardOutput);
    EXPECT_NEAR(json["duration"].get<double>(), 3.5, 1e-6);
    const auto& clips = json["clips"];
    ASSERT_EQ(clips.size(), 3u);
    EXPECT_EQ(clips[0]["kind"], "video");
    EXPECT_EQ(clips[1]["kind"], "transition");
    EXPECT_EQ(clips[1]["transition"], "fade");
    EXPECT_NEAR(clips[1]["start"].get<double>(), 1.5, 1e-6);
    EXPECT_NEAR(clips[2]["start"].get<double>(), 1.5, 1e-6);
    EXPECT_NEAR(clips[2]["end"].get<double>(), 3.5, 1e-6);
    EXPECT_EQ(json["media"].size(), 2u);  // the copies; the template had no other media
    EXPECT_NE(clips[0]["media"], clips[2]["media"]);
}

TEST_F(FLKDocumentCommandsTest, BadInputIsNamedAndLeavesNothingBehind) {
    auto a = recording("a.mp4", 10);
    auto document = folder / "promo.flickwell";

    auto missing = run("new --template 'Full Screen' --video " + quoted(folder / "nope.mp4") + " --out " + quoted(document));
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.standardError.find("nope.mp4"), std::string::npos) << missing.standardError;
    EXPECT_FALSE(fs::exists(document));

    auto unknown = run("new --template 'No Such' --video " + quoted(a) + " --out " + quoted(document));
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.standardError.find("No Such"), std::string::npos);

    std::ofstream(folder / "notes.txt") << "hello";
    auto notVideo = run("new --template 'Full Screen' --video " + quoted(folder / "notes.txt") + " --out " + quoted(document));
    EXPECT_EQ(notVideo.exitCode, 1);
    EXPECT_NE(notVideo.standardError.find("notes.txt"), std::string::npos);

    ASSERT_EQ(run("new --template 'Full Screen' --video " + quoted(a) + " --out " + quoted(document)).exitCode, 0);
    const auto before = fs::file_size(document);
    auto again = run("new --template 'Phone Portrait' --video " + quoted(a) + " --out " + quoted(document));
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.standardError.find("--force"), std::string::npos);
    EXPECT_EQ(fs::file_size(document), before);

    auto notDocument = run("info " + quoted(folder / "notes.txt"));
    EXPECT_EQ(notDocument.exitCode, 1);
    EXPECT_NE(notDocument.standardError.find("notes.txt"), std::string::npos);
}

TEST_F(FLKDocumentCommandsTest, ExportsMP4AndGIFOfADocumentWithItsSoundtrack) {
    auto a = recording("a.mp4", 30);
    auto tone = folder / "tone.m4a";
    ASSERT_TRUE(FLKSyntheticVideo::writeTone(tone.string(), 1.0));
    auto document = folder / "promo.flickwell";
    auto made = run("new --template 'Full Screen' --video " + quoted(a) + " --audio " + quoted(tone) + " --out " +
                    quoted(document));
    ASSERT_EQ(made.exitCode, 0) << made.standardError;
    auto info = FLKJSON::parse(run("info --json " + quoted(document)).standardOutput);
    ASSERT_TRUE(info.contains("audio"));
    EXPECT_EQ(std::count(info["media"].begin(), info["media"].end(), info["audio"]), 1) << info.dump();

    auto mp4 = folder / "promo.mp4";
    auto exported = run("export " + quoted(document) + " --size 144x256 --out " + quoted(mp4));
    ASSERT_EQ(exported.exitCode, 0) << exported.standardError;
    EXPECT_EQ(exported.standardOutput, mp4.string() + "\n");
    FLKAsset movie(mp4.string());
    ASSERT_TRUE(movie.hasVideo() && movie.hasAudio()) << movie.failureReason();
    EXPECT_NEAR(movie.duration(), 1.0, 0.1);
    EXPECT_EQ(movie.videoTrack()->naturalSize.width, 144);

    auto gif = folder / "promo.gif";
    auto gifRun = run("export " + quoted(document) + " --size 90x160 --gif-fps 10 --out " + quoted(gif));
    ASSERT_EQ(gifRun.exitCode, 0) << gifRun.standardError;
    FLKAsset animation(gif.string());
    ASSERT_TRUE(animation.hasVideo()) << animation.failureReason();
    EXPECT_NEAR(animation.duration(), 1.0, 0.15);
}

// Nothing is opened or written: the refusal comes first.
TEST_F(FLKDocumentCommandsTest, AnOutputThatIsOneOfTheInputsIsRefused) {
    auto a = recording("a.mp4", 6);
    auto document = folder / "promo.flickwell";
    ASSERT_EQ(run("new --template 'Full Screen' --video " + quoted(a) + " --out " + quoted(document)).exitCode, 0);
    const auto recordingBytes = fs::file_size(a), documentBytes = fs::file_size(document);
    fs::create_hard_link(a, folder / "same.mp4");
    fs::create_symlink(document, folder / "document.mp4");
    fs::create_symlink(a, folder / "tone.m4a");

    struct Case {
        std::string arguments, named;
    } cases[] = {
        {"'Full Screen' --video " + quoted(a) + " --out " + quoted(a), "--video"},
        {"'Full Screen' --video " + quoted(a) + " --out " + quoted(folder / "." / "same.mp4"), "--video"},
        {quoted(document) + " --out " + quoted(folder / "document.mp4"), "the document"},
        {quoted(document) + " --audio " + quoted(folder / "tone.m4a") + " --out " + quoted(a), "--audio"},
    };
    for (const auto& c : cases) {
        auto refused = run("export " + c.arguments + " --size 64x64 --quiet");
        EXPECT_EQ(refused.exitCode, 1) << c.arguments;
        EXPECT_NE(refused.standardError.find("given as " + c.named), std::string::npos) << refused.standardError;
    }
    auto frame = run("frame " + quoted(document) + " --video " + quoted(a) + " --out " + quoted(folder / "same.mp4"));
    EXPECT_EQ(frame.exitCode, 1);
    EXPECT_NE(frame.standardError.find("given as --video"), std::string::npos) << frame.standardError;
    EXPECT_EQ(fs::file_size(a), recordingBytes);
    EXPECT_EQ(fs::file_size(document), documentBytes);
}

// A working folder whose process is gone is cleared by the next program that
// opens a document; one in use by a running process is left alone.
TEST_F(FLKDocumentCommandsTest, WorkingFoldersOfEndedProcessesAreClearedAtStart) {
    const auto store = flk::temporaryHome() / "Files";
    const auto crashed = store / "CRASHED.tmp", running = store / "RUNNING.tmp";
    fs::create_directories(crashed / "media");
    std::ofstream(crashed / "media" / "copy.mp4") << "a recording";
    std::ofstream(crashed.string() + ".lock") << "";
    auto lease = FLKFolderLease::leaseForFolder(running);  // this test process is the running one
    fs::create_directories(running / "media");

    auto info = run("info 'Full Screen'");
    ASSERT_EQ(info.exitCode, 0) << info.standardError;
    EXPECT_FALSE(fs::exists(crashed));
    EXPECT_FALSE(fs::exists(crashed.string() + ".lock"));
    EXPECT_TRUE(fs::exists(running / "media"));
    fs::remove_all(running);
}

TEST_F(FLKDocumentCommandsTest, StorePreviewOfADeviceFrameIsWarnedAboutAndMissingFoldersFail) {
    auto a = recording("a.mp4", 6);
    auto mp4 = folder / "store.mp4";
    auto exported = run("export 'Phone Portrait' --video " + quoted(a) + " --preset 'App Preview Phone Portrait' --out " +
                        quoted(mp4) + " --quiet");
    ASSERT_EQ(exported.exitCode, 0) << exported.standardError;
    EXPECT_NE(exported.standardError.find("warning:"), std::string::npos);
    EXPECT_NE(exported.standardError.find("\"Full Screen\""), std::string::npos) << exported.standardError;
    EXPECT_NE(exported.standardError.find("too short"), std::string::npos) << exported.standardError;
    FLKAsset movie(mp4.string());
    ASSERT_TRUE(movie.hasVideo());
    EXPECT_EQ(movie.videoTrack()->naturalSize.width, 1080);
    EXPECT_EQ(movie.videoTrack()->naturalSize.height, 1920);

    auto nowhere = run("export 'Full Screen' --video " + quoted(a) + " --size 64x64 --out " +
                       quoted(folder / "missing" / "x.mp4"));
    EXPECT_EQ(nowhere.exitCode, 1);
    EXPECT_NE(nowhere.standardError.find("missing"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "missing"));

    auto empty = run("export 'Full Screen' --size 64x64 --out " + quoted(folder / "empty.mp4"));
    EXPECT_EQ(empty.exitCode, 1);
    EXPECT_NE(empty.standardError.find("--video"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "empty.mp4"));
}

TEST_F(FLKDocumentCommandsTest, EveryBuiltInTemplateRendersAFrame) {
    auto templates = run("templates --json");
    ASSERT_EQ(templates.exitCode, 0) << templates.standardError;
    for (const auto& entry : FLKJSON::parse(templates.standardOutput)) {
        const auto name = entry["name"].get<std::string>();
        const bool portrait = entry["canvas"]["height"].get<double>() > entry["canvas"]["width"].get<double>();
        auto png = folder / (name + ".png");
        auto rendered = run("frame '" + name + "' --size " + (portrait ? "90x160" : "160x90") + " --out " + quoted(png));
        ASSERT_EQ(rendered.exitCode, 0) << name << ": " << rendered.standardError;
        auto image = flk::readImage(png);
        ASSERT_TRUE(image) << name;
        EXPECT_EQ(image->width, portrait ? 90 : 160) << name;
        // Not one flat colour: the background's gradient at least.
        EXPECT_NE(std::vector<uint8_t>(image->pixel(0, 0), image->pixel(0, 0) + 3),
                  std::vector<uint8_t>(image->pixel(image->width - 1, image->height - 1),
                                       image->pixel(image->width - 1, image->height - 1) + 3))
            << name;
    }
}

// What an export writes at a moment is what `frame` shows of that moment.
TEST_F(FLKDocumentCommandsTest, ExportedFrameMatchesTheFrameCommandAtTheSameTime) {
    auto a = recording("a.mp4", 30);
    auto document = folder / "promo.flickwell";
    ASSERT_EQ(run("new --template 'Phone Portrait' --video " + quoted(a) + " --out " + quoted(document)).exitCode, 0);
    auto mp4 = folder / "promo.mp4";
    ASSERT_EQ(run("export " + quoted(document) + " --size 180x320 --out " + quoted(mp4) + " --quiet").exitCode, 0);
    auto png = folder / "frame.png";
    auto rendered = run("frame " + quoted(document) + " --time 0.5 --size 180x320 --out " + quoted(png));
    ASSERT_EQ(rendered.exitCode, 0) << rendered.standardError;

    // At exactly n/30 s the frame lookup's one-frame margin also accepts the
    // frame before, and the two programs reach that time by different
    // arithmetic: either neighbour is a correct answer.
    FLKAssetImageGenerator generator(FLKAsset::assetWithPath(mp4.string()));
    auto shown = flk::readImage(png);
    ASSERT_TRUE(shown);
    double best = 0;
    for (double t : {0.5 - 1.0 / 30.0, 0.5}) {
        auto exported = generator.copyImageAtTime(t);
        ASSERT_TRUE(exported);
        ASSERT_EQ(exported->width, shown->width);
        best = std::max(best, psnr(*exported, *shown));
    }
    EXPECT_GT(best, 30.0);

    auto late = run("frame " + quoted(document) + " --time 5 --out " + quoted(folder / "late.png"));
    EXPECT_EQ(late.exitCode, 1);
    EXPECT_NE(late.standardError.find("past the end"), std::string::npos) << late.standardError;
    EXPECT_FALSE(fs::exists(folder / "late.png"));
}

// Sizes are written even, as the presets' are, and the size written is said;
// a GIF asked for faster than the export renders lasts as long as the clip.
TEST_F(FLKDocumentCommandsTest, OddSizesAreWrittenEvenAndFastGIFsKeepTheirLength) {
    auto a = recording("a.mp4", 30);
    auto mp4 = folder / "odd.mp4";
    auto odd = run("export 'Full Screen' --video " + quoted(a) + " --size 101x57 --out " + quoted(mp4) + " --quiet");
    ASSERT_EQ(odd.exitCode, 0) << odd.standardError;
    EXPECT_NE(odd.standardError.find("102x58"), std::string::npos) << odd.standardError;
    FLKAsset movie(mp4.string());
    ASSERT_TRUE(movie.hasVideo()) << movie.failureReason();
    EXPECT_EQ(movie.videoTrack()->naturalSize, (FLKSize{102, 58}));

    auto gif = folder / "fast.gif";
    auto fast = run("export 'Full Screen' --video " + quoted(a) + " --size 36x64 --gif-fps 50 --out " + quoted(gif) +
                    " --quiet");
    ASSERT_EQ(fast.exitCode, 0) << fast.standardError;
    EXPECT_NE(fast.standardError.find("--gif-fps 50"), std::string::npos) << fast.standardError;
    FLKAsset animation(gif.string());
    ASSERT_TRUE(animation.hasVideo()) << animation.failureReason();
    EXPECT_NEAR(animation.duration(), 1.0, 0.02);
}

// Scripts export in loops and take any exit status but 0 for a failure.
// These short exports once aborted now and then at exit, with threads still
// tearing down textures while static objects were destroyed.
TEST_F(FLKDocumentCommandsTest, ShortExportsInALoopAlwaysExitCleanly) {
    const fs::path oneFrame = recording("one.mp4", 1);
    FLKSyntheticVideo::Options options;
    options.width = 180;
    options.height = 320;
    options.fps = 24;
    options.frameCount = 12;
    const fs::path film = folder / "film.mp4";
    ASSERT_TRUE(FLKSyntheticVideo::writeVideo(film.string(), options));

    const std::vector<std::string> exports = {
        "--video " + quoted(oneFrame) + " --out " + quoted(folder / "one.mp4.out.mp4"),
        "--video " + quoted(film) + " --out " + quoted(folder / "film.out.mp4"),
        "--video " + quoted(film) + " --gif-fps 50 --out " + quoted(folder / "film.out.gif"),
    };
    for (int round = 0; round < 4; ++round) {
        for (const auto& arguments : exports) {
            auto exported = run("export \"Full Screen\" --size 90x160 --quiet " + arguments);
            ASSERT_EQ(exported.exitCode, 0) << "round " << round << ": " << arguments << "\n" << exported.standardError;
        }
    }
}
