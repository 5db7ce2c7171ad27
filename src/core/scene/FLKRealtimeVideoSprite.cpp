#include "core/scene/FLKRealtimeVideoSprite.h"

FLK_REGISTER_SERIALIZABLE(FLKRealtimeVideoSprite);

std::shared_ptr<FLKRealtimeVideoSprite> FLKRealtimeVideoSprite::realtimeVideoSprite() {
    return std::make_shared<FLKRealtimeVideoSprite>();
}

std::shared_ptr<FLKRealtimeVideoSprite> FLKRealtimeVideoSprite::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKRealtimeVideoSprite>(dictionary);
}

double FLKRealtimeVideoSprite::startSampleBufferTime() const {
    std::lock_guard lock(pacingMutex_);
    return startSampleBufferTime_;
}

bool FLKRealtimeVideoSprite::shouldDiscardSampleBuffer(const FLKSampleBuffer& sampleBuffer) {
    auto sampleTime = static_cast<float>(sampleBuffer.presentationTime);
    // Seconds since the start date, as a negative interval.
    double sinceStart = std::chrono::duration<double>(startDate() - Clock::now()).count();
    std::lock_guard lock(pacingMutex_);
    if (startSampleBufferTime_ == -1.0) {
        startSampleBufferTime_ = sampleTime;
        return false;
    }
    auto lag = static_cast<float>((sampleTime - startSampleBufferTime_) + sinceStart);
    if (lag < 0) {
        startSampleBufferTime_ += lag;
        return true;
    }
    return false;
}

void FLKRealtimeVideoSprite::setTexture(std::shared_ptr<FLKGPUTexture> texture) {
    FLKSize size = texture ? FLKSize{static_cast<double>(texture->width()), static_cast<double>(texture->height())}
                           : FLKSize{};
    FLKVideoSprite::setTexture(std::move(texture));
    if (respondsToOrientationChanges_ && size.width > 0) setVideoOrientation(videoOrientationForSize(size));
}
