#pragma once

#include <string>

#include "core/platform/FLKError.h"

// The two failures the recording inspector tells apart.
namespace flk::capture {
inline constexpr const char* kErrorDomain = "FLKCaptureErrorDomain";
// The phone was unplugged, the capture node vanished, the monitor was removed.
inline constexpr long kErrorDeviceWasDisconnected = -11808;
// Any other failure that ends capture.
inline constexpr long kErrorCaptureFailed = -11800;

inline FLKError deviceGoneError(const std::string& reason) {
    return FLKError::make(kErrorDomain, kErrorDeviceWasDisconnected, "The device went away.", reason);
}
inline FLKError captureFailedError(const std::string& reason) {
    return FLKError::make(kErrorDomain, kErrorCaptureFailed, "Capture stopped.", reason);
}
}  // namespace flk::capture
