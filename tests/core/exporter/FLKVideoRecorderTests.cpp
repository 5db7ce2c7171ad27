#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <mutex>
#include <random>

#include "FLKExportTestSupport.h"
#include "core/exporter/FLKVideoRecorder.h"

namespace fs = std::filesystem;

namespace {
class RecordingLog : public FLKRecordingDelegate {
public:
    void recorderDidStart(FLKExportRecorder&) override {
        std::lock_guard lock(mutex);
        ++starts;
    }
    void recorderDidFinish(FLKExportRecorder&) override {
        std::lock_guard lock(mutex);
        ++finishes;
    }
    void didFailWithError(FLKExportRecorder&, const FLKError& error) override {
        std::lock_guard lock(mutex);
        errors.push_back(error);
    }
    void didUpdateWithProgress(FLKExportRecorder&, double value) override {
        std::lock_guard lock(mutex);
        progress.push_back(value);
    }
    std::mutex mutex;
    int starts = 0;                // guarded by mutex
    int finishes = 0;              // guarded by mutex
    std::vector<FLKError> errors;  // guarded by mutex
    std::vector<double> progress;  // guarded by mutex
};

fs::path freshFolder(const std::string& name) {
    fs::path folder = fs::path(std::getenv("FLICKWELL_HOME")) / name;
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder;
}

std::shared_ptr<FLKExportOptions> mp4Options(const fs::path& destination, FLKSize size, uint64_t numFrames) {
    return FLKExportOptions::exportOptionsWithType(FLKExportTypeMP4, destination, {0, 0, size.width, size.height}, size,
                                                   numFrames, 30, 30, std::nullopt);
}

FLKPixelBuffer noiseFrame(int width, int height, unsigned seed) {
    FLKPixelBuffer frame(width, height);
    std::mt19937 random(seed);
    for (auto& byte : frame.bgra) byte = static_cast<uint8_t>(random());
    return frame;
}
}  // namespace

// Frame n of the file is the renderer's buffer n + 1; progress counts written frames.
TEST(FLKVideoRecorderTest, DropsTheFirstBufferAndWritesEveryOtherAtItsFrameTime) {
    for (const double duration : {2.5, 10.0}) {
        SCOPED_TRACE(duration);
        const fs::path folder = freshFolder("recorder");
        const fs::path destination = folder / "out.mp4";
        const auto numFrames = static_cast<uint64_t>(30 * duration);
        auto recorder = std::make_shared<FLKVideoRecorder>(mp4Options(destination, {128, 64}, numFrames));
        auto log = std::make_shared<RecordingLog>();
        recorder->setDelegate(log);
        const fs::path temporary = recorder->tempDestinationURL();

        FLKError error;
        ASSERT_TRUE(recorder->record(&error)) << error.fullMessage();
        for (uint32_t i = 0; i <= numFrames; ++i) recorder->appendPixelBuffer(FLKSyntheticVideo::frameWithNumber(128, 64, i));
        EXPECT_EQ(recorder->currentFrame(), numFrames);
        EXPECT_TRUE(recorder->didSkipFirstFrame());
        recorder->finish();

        std::lock_guard lock(log->mutex);
        EXPECT_EQ(log->starts, 1);
        EXPECT_EQ(log->finishes, 1);
        ASSERT_TRUE(log->errors.empty()) << log->errors.front().fullMessage();
        ASSERT_EQ(log->progress.size(), numFrames);
        EXPECT_DOUBLE_EQ(log->progress.front(), 1.0 / static_cast<double>(numFrames));
        EXPECT_DOUBLE_EQ(log->progress.back(), 1.0);
        EXPECT_FALSE(recorder->isRecording());
        EXPECT_FALSE(fs::exists(temporary));

        const auto movie = flktest::probeMovie(destination, 3);
        ASSERT_TRUE(movie.opened);
        EXPECT_EQ(movie.videoPackets, static_cast<int64_t>(numFrames));
        EXPECT_NEAR(movie.videoDuration, duration, 0.5 / 30);
        ASSERT_EQ(movie.firstNumbers.size(), 3u);
        EXPECT_EQ(movie.firstNumbers[0], std::optional<uint32_t>(1));
        EXPECT_EQ(movie.firstNumbers[1], std::optional<uint32_t>(2));
        EXPECT_EQ(movie.firstNumbers[2], std::optional<uint32_t>(3));
        EXPECT_TRUE(movie.hasAAC);
        EXPECT_NEAR(movie.audioDuration, duration, 0.05);
        EXPECT_EQ(flktest::filesIn(folder), std::vector<fs::path>{destination});
    }
}

TEST(FLKVideoRecorderTest, UnusableDestinationsAreRefusedBeforeAnyWork) {
    const fs::path folder = freshFolder("refused");
    fs::create_directories(folder / "taken.mp4");
    { std::ofstream(folder / "plain-file") << "x"; }
    const std::vector<std::pair<fs::path, std::string>> cases = {
        {folder / "missing" / "out.mp4", "does not exist"},
        {folder / "taken.mp4", "is a folder"},
        {folder / "plain-file" / "out.mp4", "is not a folder"},
    };
    for (const auto& [destination, problem] : cases) {
        SCOPED_TRACE(destination);
        FLKVideoRecorder recorder(mp4Options(destination, {64, 64}, 30));
        auto log = std::make_shared<RecordingLog>();
        recorder.setDelegate(log);
        FLKError error;
        EXPECT_FALSE(recorder.record(&error));
        EXPECT_EQ(error.code, FLKVideoRecorder::kDestinationUnusable);
        EXPECT_NE(error.failureReason.find(problem), std::string::npos) << error.failureReason;
        EXPECT_FALSE(recorder.isRecording());
        recorder.appendPixelBuffer(noiseFrame(64, 64, 1));
        EXPECT_EQ(recorder.currentFrame(), 0u);
        std::lock_guard lock(log->mutex);
        EXPECT_EQ(log->starts, 0);
    }
    EXPECT_FALSE(fs::exists(folder / "missing"));
    EXPECT_TRUE(fs::is_empty(folder / "taken.mp4"));
}

// The file system refuses to let files grow (as on a full disk): the run ends
// with an error and leaves nothing, neither at the destination nor in the
// temporary store.
TEST(FLKVideoRecorderTest, AFailingWriteEndsTheRunWithAnErrorAndNoFile) {
    const fs::path folder = freshFolder("full-disk");
    const fs::path destination = folder / "out.mp4";
    auto recorder = std::make_shared<FLKVideoRecorder>(mp4Options(destination, {160, 96}, 60));
    auto log = std::make_shared<RecordingLog>();
    recorder->setDelegate(log);
    ASSERT_TRUE(recorder->record());

    rlimit previous{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &previous), 0);
    auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = previous;
    limited.rlim_cur = 64 * 1024;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
    for (unsigned i = 0; i <= 60; ++i) recorder->appendPixelBuffer(noiseFrame(160, 96, i));
    recorder->finish();
    ::setrlimit(RLIMIT_FSIZE, &previous);
    std::signal(SIGXFSZ, previousHandler);

    std::lock_guard lock(log->mutex);
    EXPECT_EQ(log->finishes, 0);
    ASSERT_EQ(log->errors.size(), 1u);
    const FLKError& error = log->errors.front();
    EXPECT_EQ(error.domain, kFLKExportErrorDomain);
    EXPECT_EQ(error.code, FLKVideoRecorder::kWriteFailed);
    EXPECT_NE(error.localizedDescription.find("out.mp4"), std::string::npos) << error.localizedDescription;
    EXPECT_FALSE(error.failureReason.empty());
    EXPECT_FALSE(fs::exists(destination));
    EXPECT_FALSE(fs::exists(recorder->tempDestinationURL()));
    EXPECT_TRUE(flktest::filesIn(folder).empty());
}
