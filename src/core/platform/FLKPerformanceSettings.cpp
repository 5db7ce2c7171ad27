#include "core/platform/FLKPerformanceSettings.h"

#include "core/platform/FLKNotificationCenter.h"

namespace {

struct LevelValues {
    unsigned fps;
    unsigned msaaSampleCount;
    unsigned videoRenderingSettings;
    bool fixedResolution;
};

constexpr LevelValues kLevelValues[] = {
    {30, 1, 2, true},   // level 1
    {30, 2, 2, false},  // level 2
    {30, 4, 1, false},  // level 3
};

}  // namespace

FLKPerformanceSettings::FLKPerformanceSettings() { setPerformanceLevel(3); }

FLKPerformanceSettings& FLKPerformanceSettings::globalSettings() {
    static FLKPerformanceSettings* shared = new FLKPerformanceSettings();
    return *shared;
}

unsigned FLKPerformanceSettings::performanceLevel() const {
    std::lock_guard lock(mutex_);
    return performanceLevel_;
}

void FLKPerformanceSettings::setPerformanceLevel(unsigned level) {
    {
        std::lock_guard lock(mutex_);
        if (level == performanceLevel_) return;
        performanceLevel_ = level;
        if (level >= 1 && level <= 3) {
            const LevelValues& values = kLevelValues[level - 1];
            fps_ = values.fps;
            msaaSampleCount_ = values.msaaSampleCount;
            videoRenderingSettings_ = values.videoRenderingSettings;
            fixedResolution_ = values.fixedResolution;
        }
    }
    FLKNotificationCenter::defaultCenter().post(FLKPerformanceSettingsDidUpdatePerformanceLevel, this);
}

unsigned FLKPerformanceSettings::fps() const {
    std::lock_guard lock(mutex_);
    return fps_;
}

void FLKPerformanceSettings::setFps(unsigned fps) {
    std::lock_guard lock(mutex_);
    fps_ = fps;
}

unsigned FLKPerformanceSettings::msaaSampleCount() const {
    std::lock_guard lock(mutex_);
    return msaaSampleCount_;
}

void FLKPerformanceSettings::setMsaaSampleCount(unsigned count) {
    std::lock_guard lock(mutex_);
    msaaSampleCount_ = count;
}

unsigned FLKPerformanceSettings::videoRenderingSettings() const {
    std::lock_guard lock(mutex_);
    return videoRenderingSettings_;
}

void FLKPerformanceSettings::setVideoRenderingSettings(unsigned mode) {
    std::lock_guard lock(mutex_);
    videoRenderingSettings_ = mode;
}

bool FLKPerformanceSettings::fixedResolution() const {
    std::lock_guard lock(mutex_);
    return fixedResolution_;
}

void FLKPerformanceSettings::setFixedResolution(bool fixed) {
    std::lock_guard lock(mutex_);
    fixedResolution_ = fixed;
}
