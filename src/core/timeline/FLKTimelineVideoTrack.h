#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "core/gpu/FLKTextureProvider.h"
#include "core/timeline/FLKTimelineBufferManager.h"
#include "core/timeline/FLKTimelineTrack.h"
#include "core/timeline/FLKTimelineVideoTrackClipSource.h"
#include "core/timeline/FLKVideoClip.h"
#include "core/timeline/FLKVideoTransitionClip.h"

// The track of video clips and the transitions between them. It keeps its
// buffer managers told of every clip that comes and goes and of every move
// of the play head, and answers the frame to show at a time. As a texture
// provider it feeds the scene's video sprite with the frame at the current
// time.
class FLKTimelineVideoTrack : public FLKTimelineTrack,
                              public FLKTimelineVideoTrackClipSource,
                              public FLKTextureProvider {
public:
    struct BufferManagers {
        std::shared_ptr<FLKTimelineBufferManager> video;
        std::shared_ptr<FLKTimelineBufferManager> transition;
    };
    // Makes the two managers of a new track; the track owns them and outlives
    // them, so they may keep a plain reference to it.
    using BufferManagersFactory = std::function<BufferManagers(FLKTimelineVideoTrack&)>;
    static void setBufferManagersFactory(BufferManagersFactory factory);

    static constexpr double kDefaultBufferWidth = 5.0;
    static constexpr double kDefaultBufferingMarginTime = 2.5;

    // With the managers of the installed factory.
    explicit FLKTimelineVideoTrack(std::string identifier);
    FLKTimelineVideoTrack(std::string identifier, BufferManagersFactory factory);

    static std::shared_ptr<FLKTimelineVideoTrack> newWithDictionary(const FLKJSON& dictionary);
    std::string className() const override { return "FLKTimelineVideoTrack"; }

    // Each call answers the current count and then increments it.
    uint64_t createdCounter() { return createdCounter_++; }
    double bufferWidth() const { return bufferWidth_; }
    void setBufferWidth(double seconds);
    double bufferingMarginTime() const { return bufferingMarginTime_; }
    void setBufferingMarginTime(double seconds);
    // For a play-through that never goes back (an export): decode only this
    // far ahead and let shown frames go, where each recording's clips follow
    // one another through it.
    void setDecodeAheadTime(double seconds);
    bool showsEachRecordingForward() const;
    // Notified as this track's decoders make frames available.
    void setProgressSignal(const std::shared_ptr<FLKProgressSignal>& signal);
    const BufferManagers& bufferManagers() const { return managers_; }
    // What made this track's managers: a copy of the track gets its own from it.
    const BufferManagersFactory& bufferManagersFactory() const { return managersFactory_; }

    std::vector<std::shared_ptr<FLKVideoClip>> videoClips() const;
    std::vector<std::shared_ptr<FLKVideoTransitionClip>> transitionClips() const;

    // A clip of the whole file placed at the end of the track; not added.
    std::shared_ptr<FLKVideoClip> createClipWithVideoURL(const std::filesystem::path& url);

    void addClip(const std::shared_ptr<FLKTimelineClip>& clip) override;
    void insertClip(const std::shared_ptr<FLKTimelineClip>& clip, size_t index) override;
    void removeClip(const std::shared_ptr<FLKTimelineClip>& clip) override;
    void replaceClip(const std::shared_ptr<FLKTimelineClip>& oldClip,
                     const std::shared_ptr<FLKTimelineClip>& newClip) override;
    void setClips(const Clips& clips) override;

    void trimClipLeftFromTimelineTime(const std::shared_ptr<FLKVideoClip>& clip, double t);
    void trimClipRightFromTimelineTime(const std::shared_ptr<FLKVideoClip>& clip, double t);
    void splitClip(const std::shared_ptr<FLKVideoClip>& clip, double t);
    // Overlaps the last `duration` seconds of `fromClip` with the first of
    // `toClip` (which moves earlier, with everything after it) and puts the
    // transition between them. Answers the transition clip.
    std::shared_ptr<FLKVideoTransitionClip> addTransition(const std::shared_ptr<FLKSerializable>& transition,
                                                          const std::shared_ptr<FLKVideoClip>& fromClip,
                                                          const std::shared_ptr<FLKVideoClip>& toClip,
                                                          double duration);

    // Transitions first, then all clips, in track order; at a seam the
    // earlier clip wins.
    std::shared_ptr<FLKTimelineClip> clipAtTime(double t) const;
    std::shared_ptr<FLKTimelineClip> clipWithIdentifier(const std::string& identifier) const override;
    uint64_t numberOfClipsForAsset(const std::filesystem::path& assetURL) const override;

    std::shared_ptr<FLKGPUTexture> textureAtTime(double t) const;
    bool hasTextureAtTime(double t) const;
    // Looks up the frame at the current time (filters run here, so render
    // thread only); while none is found the last one stays.
    void refreshTexture() override;
    std::shared_ptr<FLKGPUTexture> texture() const override;

    // A frame must be available a little ahead of the play head. Nothing is
    // waited for where no reader could ever provide one: no clips, a
    // placeholder, a file without segments, a track without buffer managers.
    bool isReady() const override;
    // Whether a reader exists that can provide the frame at t (for a
    // transition, one for each clip it joins).
    bool expectsTextureAtTime(double t) const;
    void setCurrentTime(double t) override;

private:
    std::shared_ptr<FLKTimelineBufferManager> bufferManagerForClip(const std::shared_ptr<FLKTimelineClip>& clip) const;
    std::shared_ptr<FLKVideoSampleReader> readerAtTime(double t, std::shared_ptr<FLKTimelineClip>* clipOut) const;
    void createBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip);
    void removeBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip);
    // Asks the managers to read around t; they guard themselves.
    void bufferIfNeededAtTime(double t) const;

    std::atomic<uint64_t> createdCounter_{0};
    std::atomic<double> bufferWidth_{kDefaultBufferWidth};
    std::atomic<double> bufferingMarginTime_{kDefaultBufferingMarginTime};
    const BufferManagersFactory managersFactory_;  // immutable
    const BufferManagers managers_;  // set at creation; the managers guard themselves
    mutable std::mutex textureMutex_;
    std::shared_ptr<FLKGPUTexture> lastTexture_;  // guarded by textureMutex_
};
