#pragma once

#include <memory>

#include "core/timeline/FLKTimelineClip.h"
#include "core/timeline/FLKVideoSampleReader.h"

// Holds the readers of clips and starts them ahead of the play head.
class FLKVideoBufferSource {
public:
    virtual ~FLKVideoBufferSource() = default;
    // The reader that answers for the clip at timeline time t, or nullptr.
    virtual std::shared_ptr<FLKVideoSampleReader> bufferForClip(const std::shared_ptr<FLKTimelineClip>& clip,
                                                                double t) = 0;
    virtual void startBufferingForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) = 0;
};
