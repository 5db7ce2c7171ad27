#pragma once

#include "core/platform/FLKError.h"

// What the recording inspector tells the user when a recorder fails.
namespace flk::recording {

inline constexpr const char* kErrorDomain = "FLKRecordingErrorDomain";
inline constexpr long kErrorCode = 5;

struct TranslatedError {
    FLKError error;
    bool deselectDevice = false;  // a fatal capture error also drops the device from the drop-down
};

// A device-gone error becomes "Device connection lost." only when the device
// has really left the list; any other fatal capture error becomes "Device
// connection error." and deselects it; the rest pass unchanged.
TranslatedError translateRecorderError(const FLKError& error, bool deviceStillListed);
// When the recording to keep has been lost.
FLKError recordingLostError();

}  // namespace flk::recording
