#pragma once

#include <string>
#include <vector>

// What adb says about the phones it sees, from `adb devices -l` and the
// blocks of `adb track-devices -l`.
struct FLKAdbDeviceEntry {
    std::string serial;
    std::string state;    // "device", "unauthorized", "offline", "no permissions", ...
    std::string model;    // "Pixel_7" as adb writes it
    std::string product;
    std::string device;

    // The model with underscores as spaces, else the serial.
    std::string displayName() const;
    // Only a phone in the "device" state can be recorded.
    bool isReady() const { return state == "device"; }
};

namespace flk::adb {
// One line of the listing, without its header; false for a line that names no device.
bool parseDeviceLine(const std::string& line, FLKAdbDeviceEntry* entry);
// The whole output of `adb devices -l` (a header line, then one line a device).
std::vector<FLKAdbDeviceEntry> parseDevices(const std::string& text);
// Takes every complete block (four hex digits of length, then that many bytes)
// from the front of `buffer` and answers their payloads; an incomplete block
// stays for the next read. False when the stream is not made of blocks.
bool takeTrackDevicesBlocks(std::string& buffer, std::vector<std::string>* payloads);
}  // namespace flk::adb
