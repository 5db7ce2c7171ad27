#pragma once

#include <atomic>

#include "core/capture/FLKDeviceScreenOutput.h"
#include "core/scene/FLKVideoSprite.h"

// A video sprite fed live by a recorder. It is never stored: it answers no
// dictionary and no media files.
class FLKRealtimeVideoSprite : public FLKVideoSprite, public FLKDeviceScreenOutput {
public:
    FLKRealtimeVideoSprite() = default;
    static std::shared_ptr<FLKRealtimeVideoSprite> realtimeVideoSprite();

    static std::shared_ptr<FLKRealtimeVideoSprite> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override { return nullptr; }
    std::string className() const override { return "FLKRealtimeVideoSprite"; }
    std::vector<std::filesystem::path> resourceURLs() const override { return {}; }

    // Called on the recorder's delivery thread.
    void recorderDidOutputSampleBuffer(const FLKSampleBuffer& sampleBuffer) { updateWithSampleBuffer(sampleBuffer); }
    void recorderDidOutputSampleBuffer(FLKDeviceScreenRecorder&, const FLKSampleBuffer& sampleBuffer) override {
        updateWithSampleBuffer(sampleBuffer);
    }

    bool respondsToOrientationChanges() const { return respondsToOrientationChanges_; }
    void setRespondsToOrientationChanges(bool responds) { respondsToOrientationChanges_ = responds; }
    double startSampleBufferTime() const;

    // Drops frames that arrive behind the wall clock since the first frame, and
    // shifts the reference back by the lag so playback stays in step.
    bool shouldDiscardSampleBuffer(const FLKSampleBuffer& sampleBuffer) override;
    // Also turns the video to the frame's orientation when asked to follow it.
    void setTexture(std::shared_ptr<FLKGPUTexture> texture) override;
    double currentTime() const override { return 0; }

protected:
    Ptr newInstance() const override { return std::make_shared<FLKRealtimeVideoSprite>(); }

private:
    std::atomic<bool> respondsToOrientationChanges_{false};
    mutable std::mutex pacingMutex_;
    double startSampleBufferTime_ = -1.0;  // guarded by pacingMutex_
};
