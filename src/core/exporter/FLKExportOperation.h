#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "core/exporter/FLKExportOptions.h"
#include "core/exporter/FLKExportRecorder.h"
#include "core/exporter/FLKExportType.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKRect.h"
#include "core/platform/FLKStageTimes.h"
#include "core/platform/FLKSize.h"

class FLKOffScreenRenderer;
class FLKScene;
class FLKTimeline;

inline constexpr const char* FLKExportOperationDidStartNotification = "FLKExportOperationDidStartNotification";
inline constexpr const char* FLKExportOperationDidUpdateNotification = "FLKExportOperationDidUpdateNotification";
inline constexpr const char* FLKExportOperationDidFinishNotification = "FLKExportOperationDidFinishNotification";

// One export: renders every frame of the timeline off screen at a fixed rate
// and hands the frames to the MP4 or GIF writer. Its notifications (object:
// the operation) are posted on the main queue.
//
// Threads: made and configured on the main thread; execute() runs on the
// export queue and returns once rendering has started; the writer's callbacks
// arrive on the render thread. progress(), error() and the state may be read
// from any thread.
class FLKExportOperation : public FLKRecordingDelegate, public std::enable_shared_from_this<FLKExportOperation> {
    struct Passkey {};

public:
    enum ErrorCode : long { kEmptyTimeline = 10, kNoRenderer = 11 };

    // The scene is copied now: later edits do not reach the export.
    static std::shared_ptr<FLKExportOperation> operationWithScene(const FLKScene& scene,
                                                                  std::shared_ptr<FLKTimeline> timeline,
                                                                  FLKExportType type,
                                                                  std::filesystem::path destinationURL,
                                                                  FLKRect exportFrame, FLKSize videoSize,
                                                                  std::uint64_t fps);
    FLKExportOperation(Passkey, const FLKScene& scene, std::shared_ptr<FLKTimeline> timeline, FLKExportType type,
                       std::filesystem::path destinationURL, FLKRect exportFrame, FLKSize videoSize,
                       std::uint64_t fps);
    ~FLKExportOperation() override;

    // Set before the operation is queued.
    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    // The rate of the written file (a GIF's frames per second); the rendering rate unless set.
    std::uint64_t outputFps() const { return outputFps_ ? outputFps_ : fps_; }
    void setOutputFps(std::uint64_t outputFps) { outputFps_ = outputFps; }

    FLKExportType type() const { return type_; }
    const std::filesystem::path& destinationURL() const { return destinationURL_; }
    FLKRect exportFrame() const { return exportFrame_; }
    FLKSize videoSize() const { return videoSize_; }
    std::uint64_t fps() const { return fps_; }
    const std::shared_ptr<FLKTimeline>& timeline() const { return timeline_; }

    // As last posted on the main queue.
    double progress() const { return progress_.load(); }
    std::optional<FLKError> error() const;
    bool isExecuting() const;
    bool isFinished() const;
    bool isCancelled() const;

    // Stops the run, from any thread: one not started yet never starts, a
    // running one stops rendering. Either way it finishes without an error
    // and leaves no file at its destination. False once it is finishing.
    bool cancel();

    void execute();
    void exportVideoWithOptions(const std::shared_ptr<const FLKExportOptions>& options);
    // Finishing is final; the finish notification is posted once.
    void markFinished();
    void waitUntilFinished() const;

    // Where the run's time went, taken when it finished; frames: those rendered.
    FLKStageTimes::Figures stageTimes() const;
    std::uint64_t renderedFrames() const;

    // What the run made; set on the export queue by execute().
    std::shared_ptr<FLKExportRecorder> recorder() const;
    std::shared_ptr<FLKOffScreenRenderer> renderer() const;

    static FLKNotificationCenter& notificationCenter();

    void recorderDidStart(FLKExportRecorder&) override;
    void recorderDidFinish(FLKExportRecorder&) override;
    void didFailWithError(FLKExportRecorder&, const FLKError& error) override;
    void didUpdateWithProgress(FLKExportRecorder&, double progress) override;

private:
    void failWithError(const FLKError& error);
    void postOnMainQueue(const char* name);
    void startRendering(const std::shared_ptr<const FLKExportOptions>& options);

    const std::shared_ptr<FLKScene> scene_;
    const std::shared_ptr<FLKTimeline> timeline_;
    const FLKExportType type_;
    const std::filesystem::path destinationURL_;
    const FLKRect exportFrame_;
    const FLKSize videoSize_;
    const std::uint64_t fps_;
    const std::optional<std::filesystem::path> audioURL_;  // the scene's sound when the operation was made
    std::string name_;                                     // before queuing
    std::uint64_t outputFps_ = 0;                          // before queuing

    std::atomic<double> progress_{0};

    mutable std::mutex mutex_;
    mutable std::condition_variable finishedChanged_;
    bool executing_ = false;                          // guarded by mutex_
    bool finishing_ = false;                          // guarded by mutex_; set by the one markFinished that posts
    bool finished_ = false;                           // guarded by mutex_
    bool cancelled_ = false;                          // guarded by mutex_
    std::optional<FLKError> error_;                   // guarded by mutex_
    std::shared_ptr<FLKExportRecorder> recorder_;     // guarded by mutex_
    std::shared_ptr<FLKOffScreenRenderer> renderer_;  // guarded by mutex_
    std::shared_ptr<FLKTimeline> renderTimeline_;     // guarded by mutex_; the timeline copy the clock steps
    FLKStageTimes::Figures stageTimes_;               // guarded by mutex_
};
