#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/capture/FLKAdbDeviceList.h"
#include "core/platform/FLKError.h"

// The adb program: $FLICKWELL_ADB when set, else `adb` on the PATH.
namespace flk::adb {
// Empty when there is none.
std::string program();
// The phones adb sees now; nullopt with the error set when adb is missing or fails.
std::optional<std::vector<FLKAdbDeviceEntry>> listDevices(FLKError* error = nullptr);
// The words that run `adb -s SERIAL exec-out screenrecord` writing H.264 to standard output.
std::vector<std::string> screenrecordCommand(const std::string& serial, long bitRate);
}  // namespace flk::adb
