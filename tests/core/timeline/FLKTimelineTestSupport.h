#pragma once

// Test doubles for what the timeline needs from outside: media files with a
// chosen length, and buffer managers whose frames are available where the
// test says.
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/timeline/FLKTimelineBufferManager.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKVideoClip.h"
#include "core/timeline/FLKVideoClipMedia.h"

namespace flktest {

inline std::shared_ptr<const FLKVideoClipMedia> mediaOfLength(const std::filesystem::path& url, double seconds,
                                                              float fps = 30) {
    FLKAssetTrack track;
    track.duration = seconds;
    track.nominalFrameRate = fps;
    return std::make_shared<FLKVideoClipMedia>(url, seconds, track);
}

// Installs an opener answering lengths by file name; restores the probe on exit.
class ScopedMediaLengths {
public:
    explicit ScopedMediaLengths(std::map<std::string, double> lengths) : lengths_(std::move(lengths)) {
        FLKVideoClipMedia::setOpener([this](const std::filesystem::path& url) {
            auto it = lengths_.find(url.filename().string());
            return mediaOfLength(url, it == lengths_.end() ? 0 : it->second);
        });
    }
    ~ScopedMediaLengths() { FLKVideoClipMedia::setOpener({}); }

private:
    std::map<std::string, double> lengths_;
};

inline std::shared_ptr<FLKVideoClip> videoClip(const std::string& identifier, double start, double end,
                                               const std::string& file = "/doc/media/a.mp4") {
    return std::make_shared<FLKVideoClip>(identifier, mediaOfLength(file, 60), FLKTimeRange{start, end},
                                          FLKTimeRange{0, end - start});
}

// A reader answering whether a frame exists at a timeline time.
class TestReader : public FLKVideoSampleReader {
public:
    explicit TestReader(std::vector<FLKTimeRange>* available, std::mutex* mutex) : available_(available), mutex_(mutex) {}
    uint64_t status() const override { return kReading; }
    std::shared_ptr<FLKGPUTexture> textureForClip(const std::shared_ptr<FLKTimelineClip>&, double) override {
        return nullptr;
    }
    bool hasTextureForClip(const std::shared_ptr<FLKTimelineClip>&, double t) override {
        std::lock_guard lock(*mutex_);
        for (const auto& range : *available_) {
            if (range.containsTime(t)) return true;
        }
        return false;
    }

private:
    std::vector<FLKTimeRange>* available_;
    std::mutex* mutex_;
};

// Records what the track asks and has frames only inside `available`.
class TestBufferManager : public FLKTimelineBufferManager {
public:
    std::shared_ptr<FLKVideoSampleReader> bufferForClip(const std::shared_ptr<FLKTimelineClip>&, double) override {
        return reader_;
    }
    void startBufferingForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) override {
        std::lock_guard lock(mutex_);
        buffering.push_back(clip->identifier() + "@" + std::to_string(t).substr(0, 4));
    }
    void createBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) override {
        std::lock_guard lock(mutex_);
        created.push_back(clip->identifier());
    }
    void removeBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) override {
        std::lock_guard lock(mutex_);
        removed.push_back(clip->identifier());
    }
    void setBufferWidth(double seconds) override { bufferWidth = seconds; }
    void setBufferingMarginTime(double seconds) override { marginTime = seconds; }

    void setAvailable(std::vector<FLKTimeRange> ranges) {
        std::lock_guard lock(mutex_);
        available_ = std::move(ranges);
    }

    std::vector<std::string> created, removed, buffering;  // guarded by mutex_ while a clock runs
    double bufferWidth = 0, marginTime = 0;

private:
    std::mutex mutex_;
    std::vector<FLKTimeRange> available_;  // guarded by mutex_
    std::shared_ptr<TestReader> reader_ = std::make_shared<TestReader>(&available_, &mutex_);
};

// Gives every new video track a TestBufferManager for video clips (and one
// for transitions), remembered for inspection; restores the default on exit.
class ScopedBufferManagers {
public:
    ScopedBufferManagers() {
        FLKTimelineVideoTrack::setBufferManagersFactory([this](FLKTimelineVideoTrack&) {
            auto video = std::make_shared<TestBufferManager>();
            auto transition = std::make_shared<TestBufferManager>();
            videoManagers.push_back(video);
            transitionManagers.push_back(transition);
            return FLKTimelineVideoTrack::BufferManagers{video, transition};
        });
    }
    ~ScopedBufferManagers() { FLKTimelineVideoTrack::setBufferManagersFactory({}); }

    std::vector<std::shared_ptr<TestBufferManager>> videoManagers, transitionManagers;
};

}  // namespace flktest
