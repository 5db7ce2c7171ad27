#include "core/exporter/FLKExportOperation.h"

#include "core/exporter/FLKExportGIFOutput.h"
#include "core/exporter/FLKVideoRecorder.h"
#include "core/platform/FLKFrameByFrameClock.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKMainQueue.h"
#include "core/render/FLKOffScreenRenderer.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKScene.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoTrack.h"

namespace {
// Enough for the decoder to stay ahead of the renderer through the odd stall,
// little enough to keep each segment at a few dozen frames.
constexpr double kDecodeAheadTime = 0.3;

std::optional<std::filesystem::path> audioURLOfScene(const FLKScene& scene) {
    auto audio = scene.childWithClass<FLKAudioTrack>();
    return audio ? audio->audioURL() : std::nullopt;
}

std::shared_ptr<FLKScene> copyOfScene(const FLKScene& scene) {
    return std::static_pointer_cast<FLKScene>(scene.copy());
}
}  // namespace

std::shared_ptr<FLKExportOperation> FLKExportOperation::operationWithScene(const FLKScene& scene,
                                                                           std::shared_ptr<FLKTimeline> timeline,
                                                                           FLKExportType type,
                                                                           std::filesystem::path destinationURL,
                                                                           FLKRect exportFrame, FLKSize videoSize,
                                                                           std::uint64_t fps) {
    return std::make_shared<FLKExportOperation>(Passkey{}, scene, std::move(timeline), type, std::move(destinationURL),
                                                exportFrame, videoSize, fps);
}

FLKExportOperation::FLKExportOperation(Passkey, const FLKScene& scene, std::shared_ptr<FLKTimeline> timeline,
                                       FLKExportType type, std::filesystem::path destinationURL, FLKRect exportFrame,
                                       FLKSize videoSize, std::uint64_t fps)
    : scene_(copyOfScene(scene)),
      timeline_(std::move(timeline)),
      type_(type),
      destinationURL_(std::move(destinationURL)),
      exportFrame_(exportFrame),
      videoSize_(videoSize),
      fps_(fps),
      audioURL_(audioURLOfScene(scene)) {}

FLKExportOperation::~FLKExportOperation() {
    // The renderer joins its thread when it goes; stop it first if the run was abandoned.
    if (auto renderer = this->renderer()) renderer->cancel();
}

std::optional<FLKError> FLKExportOperation::error() const {
    std::lock_guard lock(mutex_);
    return error_;
}

bool FLKExportOperation::isExecuting() const {
    std::lock_guard lock(mutex_);
    return executing_;
}

bool FLKExportOperation::isFinished() const {
    std::lock_guard lock(mutex_);
    return finished_;
}

bool FLKExportOperation::isCancelled() const {
    std::lock_guard lock(mutex_);
    return cancelled_;
}

bool FLKExportOperation::cancel() {
    std::shared_ptr<FLKOffScreenRenderer> renderer;
    {
        std::lock_guard lock(mutex_);
        if (finishing_) return false;
        cancelled_ = true;
        renderer = renderer_;
    }
    // The writer then finishes what it has; markFinished removes it.
    if (renderer) renderer->cancel();
    return true;
}

FLKStageTimes::Figures FLKExportOperation::stageTimes() const {
    std::lock_guard lock(mutex_);
    return stageTimes_;
}

std::uint64_t FLKExportOperation::renderedFrames() const {
    auto renderer = this->renderer();
    return renderer ? renderer->clock()->currentFrame() : 0;
}

std::shared_ptr<FLKExportRecorder> FLKExportOperation::recorder() const {
    std::lock_guard lock(mutex_);
    return recorder_;
}

std::shared_ptr<FLKOffScreenRenderer> FLKExportOperation::renderer() const {
    std::lock_guard lock(mutex_);
    return renderer_;
}

FLKNotificationCenter& FLKExportOperation::notificationCenter() { return FLKNotificationCenter::defaultCenter(); }

void FLKExportOperation::execute() {
    {
        std::lock_guard lock(mutex_);
        if (executing_ || finishing_) return;
        executing_ = true;
    }
    if (isCancelled()) {
        markFinished();
        return;
    }
    const double duration = timeline_ ? timeline_->duration() : 0;
    const std::uint64_t numFrames = FLKFrameByFrameClock::numFramesForDuration(duration, fps_);
    if (numFrames == 0 || fps_ == 0) {
        failWithError(FLKError::make(kFLKExportErrorDomain, kEmptyTimeline,
                                     "\"" + destinationURL_.filename().string() + "\" was not exported.",
                                     "The timeline is empty.", "Add a video to the timeline, then export again."));
        return;
    }
    FLKStageTimes::shared().reset();
    exportVideoWithOptions(FLKExportOptions::exportOptionsWithType(type_, destinationURL_, exportFrame_, videoSize_,
                                                                   numFrames, fps_, outputFps(), audioURL_));
}

void FLKExportOperation::exportVideoWithOptions(const std::shared_ptr<const FLKExportOptions>& options) {
    std::shared_ptr<FLKExportRecorder> recorder;
    if (options->type() == FLKExportTypeMP4) {
        recorder = std::make_shared<FLKVideoRecorder>(options);
    } else {
        recorder = std::make_shared<FLKExportGIFOutput>(options);
    }
    recorder->setDelegate(weak_from_this());
    {
        std::lock_guard lock(mutex_);
        recorder_ = recorder;
    }
    FLKError error;
    if (!recorder->record(&error)) {
        failWithError(error);
        return;
    }
    startRendering(options);
}

void FLKExportOperation::startRendering(const std::shared_ptr<const FLKExportOptions>& options) {
    // The writer drops the renderer's first buffer, so one frame more is rendered
    // than written: the file then lasts exactly numFrames / fps.
    const auto renderedFrames = static_cast<unsigned>(options->numFrames() + 1);
    auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(
        *scene_, options->frame(), static_cast<unsigned>(options->fps()), renderedFrames, options->videoSize());
    if (!renderer) {
        // The writer removes its unfinished files when it goes.
        failWithError(FLKError::make(kFLKExportErrorDomain, kNoRenderer,
                                     "\"" + destinationURL_.filename().string() + "\" was not exported.",
                                     "OpenGL 4.5 not supported."));
        return;
    }
    // The renderer steps its own copy of the timeline, with segment readers of
    // its own: the editor's play head and buffers stay as they are.
    auto renderTimeline = timeline_->copyWithTimer(renderer->clock());
    // Played once, start to end: decoded frames are held only until shown.
    for (const auto& track : renderTimeline->tracks()) {
        if (auto videoTrack = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) {
            videoTrack->setDecodeAheadTime(kDecodeAheadTime);
        }
    }
    renderTimeline->setName("Offscreen Master");
    renderTimeline->setPlaysThrough();
    renderTimeline->setCurrentTime(0);
    renderTimeline->mapScene(renderer->renderedScene());
    renderTimeline->play();
    renderer->setTimeSource(renderTimeline);
    renderer->setRenderOutput(this->recorder());
    {
        std::lock_guard lock(mutex_);
        renderer_ = renderer;
        renderTimeline_ = renderTimeline;
        // A cancel that came before the renderer was stored could not reach it.
        if (cancelled_) renderer->cancel();
    }
    renderer->renderAllFrames();
}

void FLKExportOperation::markFinished() {
    bool cancelled = false;
    {
        std::lock_guard lock(mutex_);
        // Claimed under the lock: of two finishers (a writer's failure and the
        // end of rendering) only one posts.
        if (finishing_) return;
        finishing_ = true;
        cancelled = cancelled_;
        stageTimes_ = FLKStageTimes::shared().figures();
    }
    // The destination is a fresh name the run made: whatever is there is this
    // run's unfinished (or, cancelled while muxing, unwanted) file.
    if (cancelled) {
        std::error_code ignored;
        std::filesystem::remove(destinationURL_, ignored);
    }
    // Queued before anyone waiting for the end can post what follows it.
    postOnMainQueue(FLKExportOperationDidFinishNotification);
    std::lock_guard lock(mutex_);
    finished_ = true;
    executing_ = false;
    finishedChanged_.notify_all();
}

void FLKExportOperation::waitUntilFinished() const {
    {
        std::unique_lock lock(mutex_);
        finishedChanged_.wait(lock, [this] { return finished_; });
    }
    // The writer reports from inside the renderer's last call; let that return.
    if (auto renderer = this->renderer()) renderer->waitUntilFinished();
}

void FLKExportOperation::failWithError(const FLKError& error) {
    // What a cancelled run fails on (no frames, a cut-off file) is not the user's problem.
    if (isCancelled()) return markFinished();
    flk::log("Export of \"%s\" failed: %s", destinationURL_.c_str(), error.fullMessage().c_str());
    {
        std::lock_guard lock(mutex_);
        if (!error_) error_ = error;
    }
    markFinished();
}

void FLKExportOperation::postOnMainQueue(const char* name) {
    auto self = shared_from_this();
    FLKMainQueue::main()->post([self, name] { notificationCenter().post(name, self.get()); });
}

void FLKExportOperation::recorderDidStart(FLKExportRecorder&) { postOnMainQueue(FLKExportOperationDidStartNotification); }

void FLKExportOperation::recorderDidFinish(FLKExportRecorder&) { markFinished(); }

void FLKExportOperation::didFailWithError(FLKExportRecorder&, const FLKError& error) { failWithError(error); }

void FLKExportOperation::didUpdateWithProgress(FLKExportRecorder&, double progress) {
    auto self = shared_from_this();
    FLKMainQueue::main()->post([self, progress] {
        self->progress_.store(progress);
        notificationCenter().post(FLKExportOperationDidUpdateNotification, self.get());
    });
}
