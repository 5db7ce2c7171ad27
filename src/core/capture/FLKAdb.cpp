#include "core/capture/FLKAdb.h"

#include <cstdlib>

#include "core/capture/FLKCaptureError.h"
#include "core/capture/FLKSubprocess.h"

std::string flk::adb::program() {
    const char* configured = std::getenv("FLICKWELL_ADB");
    return FLKSubprocess::findProgram(configured && *configured ? configured : "adb");
}

std::optional<std::vector<FLKAdbDeviceEntry>> flk::adb::listDevices(FLKError* error) {
    std::string adb = program();
    if (adb.empty()) {
        flk::setError(error, flk::capture::captureFailedError(
                                 "adb was not found: install it (Debian package \"adb\") or set FLICKWELL_ADB."));
        return std::nullopt;
    }
    std::string reason;
    auto output = FLKSubprocess::run({adb, "devices", "-l"}, &reason);
    if (!output) {
        flk::setError(error, flk::capture::captureFailedError("adb could not list devices: " + reason));
        return std::nullopt;
    }
    return parseDevices(*output);
}

std::vector<std::string> flk::adb::screenrecordCommand(const std::string& serial, long bitRate) {
    return {program(), "-s", serial, "exec-out", "screenrecord", "--output-format=h264", "--bit-rate",
            std::to_string(bitRate), "-"};
}
