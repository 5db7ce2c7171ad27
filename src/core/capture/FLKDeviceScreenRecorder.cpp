#include "core/capture/FLKDeviceScreenRecorder.h"

#include <cmath>
#include <ctime>

#include "core/capture/FLKCaptureInput.h"
#include "core/capture/FLKCaptureSession.h"
#include "core/capture/FLKDevice.h"
#include "core/capture/FLKDeviceScreenOutput.h"
#include "core/capture/FLKDeviceScreenRecorderDelegate.h"
#include "core/capture/FLKRecordingWriter.h"
#include "core/platform/FLKLocalStore.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKTemporaryStore.h"

namespace {
std::string recoveredName() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[64];
    std::strftime(text, sizeof text, "Recovered recording %Y-%m-%d at %H.%M.%S", &local);
    return text;
}
}  // namespace

std::shared_ptr<FLKLocalStore> FLKDeviceScreenRecorder::recentlyRecordedStore() {
    static auto store = FLKLocalStore::storeWithDirectory("Recordings", "mp4");
    return store;
}

std::vector<std::filesystem::path> FLKDeviceScreenRecorder::recoverInterruptedRecordings(std::vector<FLKError>* errors) {
    return FLKRecordingWriter::recoverInterruptedRecordings(errors);
}

std::shared_ptr<FLKDeviceScreenRecorder> FLKDeviceScreenRecorder::make(
    std::shared_ptr<FLKDevice> device, std::weak_ptr<FLKDeviceScreenRecorderDelegate> delegate,
    std::shared_ptr<FLKStore> temporaryStore, std::shared_ptr<FLKMainQueue> queue,
    std::optional<std::filesystem::path> destinationURL) {
    std::shared_ptr<FLKDeviceScreenRecorder> recorder(
        new FLKDeviceScreenRecorder(std::move(device), std::move(delegate), std::move(temporaryStore),
                                    queue ? std::move(queue) : FLKMainQueue::main(), std::move(destinationURL)));
    recorder->observeAppStates();
    return recorder;
}

void FLKDeviceScreenRecorder::observeAppStates() {
    std::weak_ptr<FLKDeviceScreenRecorder> weak = weak_from_this();
    terminateToken_ = FLKNotificationCenter::defaultCenter().addObserver(
        kFLKApplicationWillTerminateNotification, nullptr, [weak](const FLKNotification&) {
            if (auto self = weak.lock()) self->finishAndCleanup();
        });
}

FLKDeviceScreenRecorder::FLKDeviceScreenRecorder(std::shared_ptr<FLKDevice> device,
                                                 std::weak_ptr<FLKDeviceScreenRecorderDelegate> delegate,
                                                 std::shared_ptr<FLKStore> temporaryStore,
                                                 std::shared_ptr<FLKMainQueue> queue,
                                                 std::optional<std::filesystem::path> destinationURL)
    : device_(std::move(device)),
      delegate_(std::move(delegate)),
      temporaryStore_(std::move(temporaryStore)),
      queue_(std::move(queue)) {
    std::string extension = temporaryStore_ ? temporaryStore_->extension() : "mp4";
    temporaryRecordingStore_ = FLKTemporaryStore::storeWithDirectory("TempRecording", extension);
    if (destinationURL) {
        temporaryDestinationURL_ = *destinationURL;
        hasOwnDestination_ = true;
    } else {
        temporaryDestinationURL_ = temporaryRecordingStore_->createUniqueFileURL();
    }
}

FLKDeviceScreenRecorder::~FLKDeviceScreenRecorder() {
    FLKNotificationCenter::defaultCenter().removeObserver(terminateToken_);
    if (session_) session_->stopRunning();
}

bool FLKDeviceScreenRecorder::isRealPicture(const FLKPixelBuffer& pixels) {
    if (pixels.width <= 0 || pixels.height <= 0 || pixels.bgra.size() < 3) return false;
    uint8_t blue = pixels.bgra[0];
    uint8_t green = pixels.bgra[1];
    uint8_t red = pixels.bgra[2];
    return !(blue == 0 || green == 136 || red == 0);
}

bool FLKDeviceScreenRecorder::isSessionRunning() const { return device_ && session_ && session_->isRunning(); }

bool FLKDeviceScreenRecorder::hasPreview() const { return isSessionRunning() && isOutputtingPreviewBuffers_; }

bool FLKDeviceScreenRecorder::isRecording() const {
    return recordingWriter_ && !writerFinishing_ && recordingWriter_->isWriting();
}

uint64_t FLKDeviceScreenRecorder::picturesDropped() const {
    return (session_ ? session_->picturesDropped() : 0) + (recordingWriter_ ? recordingWriter_->picturesDropped() : 0);
}

uint64_t FLKDeviceScreenRecorder::framesRecorded() const {
    return recordingWriter_ ? recordingWriter_->framesWritten() : 0;
}

void FLKDeviceScreenRecorder::preview() {
    if (hasPreview()) return;
    startSession();
    if (!session_) return;
    std::weak_ptr<FLKDeviceScreenRecorder> weak = weak_from_this();
    session_->setFrameHandler([weak](const FLKCapturedFrame& frame) {
        if (auto self = weak.lock()) self->captureOutput(frame);
    });
    session_->setFrameHandlerEnabled(!isPreviewPaused_);
    shouldPreview_ = true;
}

void FLKDeviceScreenRecorder::startSession() {
    if (session_) return;
    session_ = FLKCaptureSession::make(queue_);
    auto input = device_ ? device_->captureInput() : nullptr;
    if (!session_->canAddInput(input)) return;  // a session that never runs; no callback
    session_->addInput(input);
    std::weak_ptr<FLKDeviceScreenRecorder> weak = weak_from_this();
    session_->setRuntimeErrorHandler([weak](const FLKError& error) {
        if (auto self = weak.lock()) self->captureSessionError(error);
    });
    FLKError error;
    if (!session_->startRunning(&error)) {
        // Starting is where a vanished phone or a missing display shows: said once, like a runtime error.
        queue_->post([weak, error] {
            if (auto self = weak.lock()) self->captureSessionError(error);
        });
        return;
    }
    queue_->post([weak] {
        auto self = weak.lock();
        if (!self) return;
        if (auto delegate = self->delegate()) delegate->recorderIsReady(*self);
    });
}

void FLKDeviceScreenRecorder::captureOutput(const FLKCapturedFrame& frame) {
    if (!session_) return;
    if (!frame.pixels || frame.alreadyShown) {
        // A picture dropped on the way, or shown before its packets were cut:
        // a kept stream still needs its packets.
        if (recordingWriter_ && !writerFinishing_ && recordingSessionStartTime_ >= 0) recordingWriter_->append(frame);
        return;
    }
    // Placeholder pictures come from phones and capture cards; a monitor shows
    // its own pixels, and a dark panel in its corner must not hide it for ever.
    bool mayBePlaceholder = !device_ || device_->kind() != "display";
    if (!isOutputtingPreviewBuffers_ && mayBePlaceholder && !isRealPicture(*frame.pixels)) return;
    if (deviceSize_.width == 0 && deviceSize_.height == 0) {
        deviceSize_ = FLKSize{static_cast<double>(frame.pixels->width), static_cast<double>(frame.pixels->height)};
    }
    if (shouldPreview_) {
        shouldPreview_ = false;
        if (auto delegate = this->delegate()) delegate->recorderDidStartPreview(*this);
    }
    isOutputtingPreviewBuffers_ = true;
    if (output_) output_->recorderDidOutputSampleBuffer(*this, FLKSampleBuffer{frame.pixels, frame.arrivalTime});
    if (recordingWriter_ && !writerFinishing_) {
        if (recordingSessionStartTime_ < 0) recordingSessionStartTime_ = frame.arrivalTime;
        recordingWriter_->append(frame);
    }
}

void FLKDeviceScreenRecorder::setIsPreviewPaused(bool paused) {
    if (isRecording()) return;
    isPreviewPaused_ = paused;
    if (session_) session_->setFrameHandlerEnabled(!paused);
}

void FLKDeviceScreenRecorder::record() {
    if (isRecording() || recordingWriter_ || !isSessionRunning()) return;
    // The recording starts on a real picture too.
    isOutputtingPreviewBuffers_ = false;
    if (auto delegate = this->delegate()) delegate->recorderIsPreparingToRecord(*this);
    startRecordingToOutput();
}

std::shared_ptr<FLKRecordingWriter> FLKDeviceScreenRecorder::createRecordingWriter() {
    FLKRecordingWriter::Options options;
    options.url = temporaryDestinationURL_;
    const auto& input = session_->input();
    options.keepsSourceStream = input && input->deliversPackets();
    double minimum = input ? input->minFrameDuration() : 0;
    options.frameRate = minimum > 0 ? std::round(1.0 / minimum) : 30;
    if (!hasOwnDestination_) {
        options.recoveryURL = recentlyRecordedStore()->createFileURLWithName(recoveredName());
    }
    return std::make_shared<FLKRecordingWriter>(options);
}

void FLKDeviceScreenRecorder::startRecordingToOutput() {
    auto writer = createRecordingWriter();
    FLKError error;
    if (!writer->start(&error)) return;  // no file comes of it
    recordingWriter_ = writer;
    // A stream kept as it comes can only begin at a key frame: ask for one now.
    if (session_->input()) session_->input()->requestKeyFrame();
    if (auto delegate = this->delegate()) delegate->recorderDidStart(*this);
}

void FLKDeviceScreenRecorder::finish(std::function<void(std::optional<std::filesystem::path>)> done) {
    stopSession(std::move(done));
}

void FLKDeviceScreenRecorder::stopSession(std::function<void(std::optional<std::filesystem::path>)> done) {
    if (recordingWriter_ && !writerFinishing_) {
        writerFinishing_ = true;
        finishDone_ = std::move(done);
        std::weak_ptr<FLKDeviceScreenRecorder> weak = weak_from_this();
        auto queue = queue_;
        recordingWriter_->finish([weak, queue](std::optional<std::filesystem::path> url, const FLKError&) {
            queue->post([weak, url] {
                if (auto self = weak.lock()) self->writingDidFinish(url);
            });
        });
    } else if (done) {
        queue_->post([done] { done(std::nullopt); });
    }
    recordingSessionStartTime_ = -1;
    if (session_) {
        session_->stopRunning();
        session_->setFrameHandler({});
    }
    session_.reset();
    isOutputtingPreviewBuffers_ = false;
    shouldPreview_ = false;
}

void FLKDeviceScreenRecorder::writingDidFinish(std::optional<std::filesystem::path> url) {
    if (auto delegate = this->delegate()) delegate->recorderDidFinish(*this);
    recordingWriter_.reset();
    writerFinishing_ = false;
    if (auto done = std::move(finishDone_)) done(url);
    if (auto name = std::move(pendingSaveName_)) {
        pendingSaveName_.reset();
        saveRecordingWithName(*name);
    }
}

void FLKDeviceScreenRecorder::finishAndCleanup() {
    finish([weak = weak_from_this()](std::optional<std::filesystem::path>) {
        if (auto self = weak.lock()) self->cleanup();
    });
    if (!recordingWriter_) cleanup();
}

void FLKDeviceScreenRecorder::saveRecordingWithName(const std::string& name) {
    if (recordingWriter_) {
        // The file is complete only once the writer is done.
        pendingSaveName_ = name;
        return;
    }
    std::optional<std::filesystem::path> url;
    if (temporaryStore_) url = temporaryStore_->copyFileFromURL(temporaryDestinationURL_, name);
    if (auto delegate = this->delegate()) delegate->recorderDidSaveRecordingAtURL(*this, url);
    cleanup();
}

void FLKDeviceScreenRecorder::cleanup() {
    std::error_code ec;
    std::filesystem::remove(temporaryDestinationURL_, ec);
}

void FLKDeviceScreenRecorder::captureSessionError(const FLKError& error) {
    if (auto delegate = this->delegate()) delegate->recorderDidFailWithError(*this, error);
    preventFurtherDelegation();
}

void FLKDeviceScreenRecorder::preventFurtherDelegation() { delegate_.reset(); }
