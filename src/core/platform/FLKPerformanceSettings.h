#pragma once

#include <mutex>

// Posted (object: the settings) whenever the performance level changes.
inline constexpr const char* FLKPerformanceSettingsDidUpdatePerformanceLevel =
    "FLKPerformanceSettingsDidUpdatePerformanceLevel";

// Rendering quality traded for speed in three levels:
//   level 3: 30 fps, 4 samples, video mode 1, view resolution (the start)
//   level 2: 30 fps, 2 samples, video mode 2, view resolution
//   level 1: 30 fps, 1 sample,  video mode 2, fixed resolution
// The level is not persisted. Set on the main thread, read by the renderers'
// threads: every member may be called from any thread.
class FLKPerformanceSettings {
public:
    // Starts at level 0 and moves to level 3 at once, posting one notification.
    FLKPerformanceSettings();
    FLKPerformanceSettings(const FLKPerformanceSettings&) = delete;
    FLKPerformanceSettings& operator=(const FLKPerformanceSettings&) = delete;

    static FLKPerformanceSettings& globalSettings();

    unsigned performanceLevel() const;
    // Same level: nothing. Otherwise the level is stored, levels 1-3 set the
    // four values from the table (other levels keep them), and the
    // notification is posted after the change, outside any lock.
    void setPerformanceLevel(unsigned level);

    unsigned fps() const;
    void setFps(unsigned fps);
    unsigned msaaSampleCount() const;
    void setMsaaSampleCount(unsigned count);
    // A video rendering mode number the renderer interprets.
    unsigned videoRenderingSettings() const;
    void setVideoRenderingSettings(unsigned mode);
    bool fixedResolution() const;
    void setFixedResolution(bool fixed);

private:
    mutable std::mutex mutex_;
    unsigned performanceLevel_ = 0;       // guarded by mutex_
    unsigned fps_ = 0;                    // guarded by mutex_
    unsigned msaaSampleCount_ = 0;        // guarded by mutex_
    unsigned videoRenderingSettings_ = 0; // guarded by mutex_
    bool fixedResolution_ = false;        // guarded by mutex_
};
