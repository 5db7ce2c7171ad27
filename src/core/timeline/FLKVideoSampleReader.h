#pragma once

#include <cstdint>
#include <memory>

#include "core/timeline/FLKTimelineClip.h"

class FLKGPUTexture;

// Something that decodes or composes the frames of a clip over a span of
// time. Only what a track needs to show frames is declared here.
class FLKVideoSampleReader {
public:
    enum Status : uint64_t { kIdle = 0, kReading = 1, kFinished = 3, kCancelled = 4 };

    virtual ~FLKVideoSampleReader() = default;
    virtual uint64_t status() const = 0;
    // The frame for the clip at timeline time t as RGBA, or nullptr.
    virtual std::shared_ptr<FLKGPUTexture> textureForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) = 0;
    // The frame a track draws: may be the frame's planes (a luma texture with
    // its chroma plane) where the current context draws video planes itself.
    virtual std::shared_ptr<FLKGPUTexture> displayTextureForClip(const std::shared_ptr<FLKTimelineClip>& clip,
                                                                 double t) {
        return textureForClip(clip, t);
    }
    virtual bool hasTextureForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) = 0;
};
