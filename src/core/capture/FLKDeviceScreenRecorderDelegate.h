#pragma once

#include <filesystem>
#include <optional>

#include "core/platform/FLKError.h"

class FLKDeviceScreenRecorder;

// What a recorder tells the recording inspector, on the main thread.
class FLKDeviceScreenRecorderDelegate {
public:
    virtual ~FLKDeviceScreenRecorderDelegate() = default;
    virtual void recorderIsReady(FLKDeviceScreenRecorder&) {}
    virtual void recorderDidStartPreview(FLKDeviceScreenRecorder&) {}
    virtual void recorderIsPreparingToRecord(FLKDeviceScreenRecorder&) {}
    virtual void recorderDidStart(FLKDeviceScreenRecorder&) {}
    virtual void recorderDidFinish(FLKDeviceScreenRecorder&) {}
    // Null when the recording could not be kept.
    virtual void recorderDidSaveRecordingAtURL(FLKDeviceScreenRecorder&, const std::optional<std::filesystem::path>&) {}
    virtual void recorderDidFailWithError(FLKDeviceScreenRecorder&, const FLKError&) {}
};
