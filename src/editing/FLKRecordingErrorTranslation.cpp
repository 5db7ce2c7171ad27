#include "editing/FLKRecordingErrorTranslation.h"

#include "core/capture/FLKCaptureError.h"

flk::recording::TranslatedError flk::recording::translateRecorderError(const FLKError& error, bool deviceStillListed) {
    if (!deviceStillListed && error.code == flk::capture::kErrorDeviceWasDisconnected) {
        return {FLKError::make(kErrorDomain, kErrorCode, "Device connection lost.", "The device has been plugged out.",
                               "Please plug in your device to continue your recording session."),
                false};
    }
    if (error.code == flk::capture::kErrorCaptureFailed) {
        return {FLKError::make(kErrorDomain, kErrorCode, "Device connection error.",
                               "Cannot record from this device at the moment.",
                               "Please try restarting your recording device and try again."),
                true};
    }
    return {error, false};
}

FLKError flk::recording::recordingLostError() {
    return FLKError::make(kErrorDomain, kErrorCode, "Cannot find recording.",
                          "The rocording was lost due to an internal error.", "Please try recording again.");
}
