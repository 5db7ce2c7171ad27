#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/capture/FLKCapturedFrame.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKSize.h"

// Posted by the program as it quits: recorders finish and delete their unkept recordings.
inline constexpr const char* kFLKApplicationWillTerminateNotification = "FLKApplicationWillTerminateNotification";

class FLKCaptureSession;
class FLKDevice;
class FLKDeviceScreenOutput;
class FLKDeviceScreenRecorderDelegate;
class FLKLocalStore;
class FLKMainQueue;
class FLKRecordingWriter;
class FLKStore;
class FLKTemporaryStore;

// Turns one source into a live preview and, on request, one recording,
// which the user may then keep under a name. Main thread only.
class FLKDeviceScreenRecorder : public std::enable_shared_from_this<FLKDeviceScreenRecorder> {
public:
    // The kept recordings ("Recordings" of the data home, MP4 files).
    static std::shared_ptr<FLKLocalStore> recentlyRecordedStore();
    // Finalises recordings a crash or kill interrupted; the program calls it once at start-up.
    static std::vector<std::filesystem::path> recoverInterruptedRecordings(std::vector<FLKError>* errors = nullptr);

    // `destinationURL` replaces the temporary location (the command line records straight to the user's file).
    static std::shared_ptr<FLKDeviceScreenRecorder> make(std::shared_ptr<FLKDevice> device,
                                                         std::weak_ptr<FLKDeviceScreenRecorderDelegate> delegate,
                                                         std::shared_ptr<FLKStore> temporaryStore,
                                                         std::shared_ptr<FLKMainQueue> queue = nullptr,
                                                         std::optional<std::filesystem::path> destinationURL = {});
    ~FLKDeviceScreenRecorder();

    void preview();
    void setIsPreviewPaused(bool paused);
    void record();
    // Closes the recording (if any) and stops capture; `done` runs on the main
    // queue once the file is complete, with its location (null when nothing was recorded).
    void finish(std::function<void(std::optional<std::filesystem::path>)> done = {});
    void finishAndCleanup();
    void saveRecordingWithName(const std::string& name);
    void cleanup();

    bool isSessionRunning() const;
    bool hasPreview() const;
    bool isRecording() const;
    bool isPreviewPaused() const { return isPreviewPaused_; }

    const std::shared_ptr<FLKDevice>& device() const { return device_; }
    void setOutput(std::shared_ptr<FLKDeviceScreenOutput> output) { output_ = std::move(output); }
    const std::shared_ptr<FLKDeviceScreenOutput>& output() const { return output_; }
    FLKSize deviceSize() const { return deviceSize_; }
    const std::filesystem::path& temporaryDestinationURL() const { return temporaryDestinationURL_; }
    const std::shared_ptr<FLKTemporaryStore>& temporaryRecordingStore() const { return temporaryRecordingStore_; }
    double recordingSessionStartTime() const { return recordingSessionStartTime_; }
    uint64_t framesRecorded() const;
    // Pictures lost because the main thread or the encoder fell behind.
    uint64_t picturesDropped() const;

    // Whether a frame whose top-left pixel is this (BGRA) can start the preview: sources
    // show black or a placeholder colour before their first real picture.
    static bool isRealPicture(const FLKPixelBuffer& pixels);

    // The main-queue entry of each captured frame.
    void captureOutput(const FLKCapturedFrame& frame);
    // A runtime error of the capture session: reported once, then silence.
    void captureSessionError(const FLKError& error);

private:
    FLKDeviceScreenRecorder(std::shared_ptr<FLKDevice> device, std::weak_ptr<FLKDeviceScreenRecorderDelegate> delegate,
                            std::shared_ptr<FLKStore> temporaryStore, std::shared_ptr<FLKMainQueue> queue,
                            std::optional<std::filesystem::path> destinationURL);
    void observeAppStates();
    void startSession();
    void stopSession(std::function<void(std::optional<std::filesystem::path>)> done);
    std::shared_ptr<FLKRecordingWriter> createRecordingWriter();
    void startRecordingToOutput();
    void writingDidFinish(std::optional<std::filesystem::path> url);
    void preventFurtherDelegation();
    std::shared_ptr<FLKDeviceScreenRecorderDelegate> delegate() const { return delegate_.lock(); }

    std::shared_ptr<FLKDevice> device_;
    std::weak_ptr<FLKDeviceScreenRecorderDelegate> delegate_;
    std::shared_ptr<FLKDeviceScreenOutput> output_;
    std::shared_ptr<FLKStore> temporaryStore_;
    std::shared_ptr<FLKTemporaryStore> temporaryRecordingStore_;
    std::filesystem::path temporaryDestinationURL_;
    bool hasOwnDestination_ = false;
    std::shared_ptr<FLKMainQueue> queue_;
    std::shared_ptr<FLKCaptureSession> session_;
    bool isOutputtingPreviewBuffers_ = false;
    bool shouldPreview_ = false;
    bool isPreviewPaused_ = false;
    std::shared_ptr<FLKRecordingWriter> recordingWriter_;
    bool writerFinishing_ = false;
    double recordingSessionStartTime_ = -1;  // -1: invalid
    FLKSize deviceSize_{};
    std::optional<std::string> pendingSaveName_;
    std::function<void(std::optional<std::filesystem::path>)> finishDone_;
    uint64_t terminateToken_ = 0;
};
