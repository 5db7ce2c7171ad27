#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/capture/FLKDeviceScreenOutput.h"
#include "core/capture/FLKDeviceScreenRecorderDelegate.h"
#include "core/platform/FLKPixelBuffer.h"

class FLKDeviceScreenRecorder;
class FLKRunLoopMainQueue;

namespace flk::test {

// Finishes the recording and runs the loop until the file is complete; its location, if any.
std::optional<std::filesystem::path> finishRecording(FLKDeviceScreenRecorder& recorder, FLKRunLoopMainQueue& queue);

struct DecodedFrame {
    std::shared_ptr<const FLKPixelBuffer> pixels;
    double time = 0;  // seconds
};
// Every picture of a file's video, decoded to BGRA.
std::vector<DecodedFrame> decodeAll(const std::filesystem::path& file);
// Makes an H.264 test pattern of `frames` pictures at 30 fps with ffmpeg; Annex-B when `annexB`.
bool makeTestPattern(const std::filesystem::path& file, int frames, int width, int height);
// The picture's bytes compared exactly.
bool samePixels(const FLKPixelBuffer& a, const FLKPixelBuffer& b);

// Remembers what a recorder told it.
class RecordingDelegate : public FLKDeviceScreenRecorderDelegate {
public:
    void recorderIsReady(FLKDeviceScreenRecorder&) override { events.push_back("ready"); }
    void recorderDidStartPreview(FLKDeviceScreenRecorder&) override { events.push_back("preview"); }
    void recorderIsPreparingToRecord(FLKDeviceScreenRecorder&) override { events.push_back("preparing"); }
    void recorderDidStart(FLKDeviceScreenRecorder&) override { events.push_back("start"); }
    void recorderDidFinish(FLKDeviceScreenRecorder&) override { events.push_back("finish"); }
    void recorderDidSaveRecordingAtURL(FLKDeviceScreenRecorder&, const std::optional<std::filesystem::path>& url) override {
        events.push_back("saved");
        savedURL = url;
    }
    void recorderDidFailWithError(FLKDeviceScreenRecorder&, const FLKError& error) override {
        events.push_back("failed");
        errors.push_back(error);
    }
    bool saw(const std::string& event) const;

    std::vector<std::string> events;
    std::vector<FLKError> errors;
    std::optional<std::filesystem::path> savedURL;
};

// Keeps the colour a quarter of the way into every preview frame (clear of the pointer drawn at the centre).
class PixelProbe : public FLKDeviceScreenOutput {
public:
    void recorderDidOutputSampleBuffer(FLKDeviceScreenRecorder&, const FLKSampleBuffer& sampleBuffer) override;
    std::vector<std::array<uint8_t, 3>> colours;  // B, G, R
    std::vector<double> times;
};

}  // namespace flk::test
