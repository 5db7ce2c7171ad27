#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "core/capture/FLKCaptureInput.h"

class FLKAdbStreamParser;
class FLKSubprocess;

// A phone's screen through `adb exec-out screenrecord`: raw H.264 without
// timestamps, pictures only when the screen changes, and an end at the
// recorder's time limit, after which it is started again.
class FLKAdbCaptureInput : public FLKCaptureInput {
public:
    explicit FLKAdbCaptureInput(std::string serial, long bitRate = 8'000'000);
    ~FLKAdbCaptureInput() override;

    double minFrameDuration() const override { return 1.0 / 60.0; }
    bool deliversPackets() const override { return true; }
    // Restarts screenrecord: its stream opens with parameter sets and a key frame.
    void requestKeyFrame() override;

    // How many times screenrecord was started (tests watch restarts).
    int runs() const { return runs_; }

protected:
    bool open(FLKError* error) override;
    void captureLoop() override;
    void interrupt() override;
    void close() override;

private:
    // One screenrecord run; false when it produced nothing at all.
    bool readOneRun(std::string* failure);

    const std::string serial_;
    const long bitRate_;
    std::atomic<int> runs_ = 0;
    std::atomic<bool> restartRequested_ = false;
    std::mutex processMutex_;
    std::shared_ptr<FLKSubprocess> process_;     // guarded by processMutex_
    std::unique_ptr<FLKAdbStreamParser> stream_;  // capture thread only
};
