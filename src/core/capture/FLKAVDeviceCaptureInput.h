#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "core/capture/FLKCaptureInput.h"
#include "core/media/FLKMediaSupport.h"

class FLKCaptureDecoder;

// Pictures read through one of libavdevice's grabbers: a monitor's area of
// an X display (x11grab) or a capture node (v4l2). Recordings encode them.
class FLKAVDeviceCaptureInput : public FLKCaptureInput {
public:
    struct Source {
        std::string format;                          // "x11grab", "v4l2"
        std::string url;                             // ":0.0+1920,0", "/dev/video0"
        std::map<std::string, std::string> options;  // video_size, framerate, ...
        double frameRate = 30;
        // Asked after a read fails: whether the device itself has gone.
        std::function<bool()> isGone;
    };

    explicit FLKAVDeviceCaptureInput(Source source);
    ~FLKAVDeviceCaptureInput() override;

    double minFrameDuration() const override { return 1.0 / source_.frameRate; }

protected:
    bool open(FLKError* error) override;
    void captureLoop() override;
    void close() override;

private:
    static int shouldInterrupt(void* self);

    const Source source_;
    // Opened by open(), then used by the capture thread only.
    flk::media::InputContext input_;
    std::unique_ptr<FLKCaptureDecoder> decoder_;
    int streamIndex_ = -1;
};
