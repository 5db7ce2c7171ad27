#pragma once

#include <memory>

#include "core/timeline/FLKVideoBufferSource.h"

class FLKProgressSignal;

// What a video track asks of each of its two buffer managers (one for video
// clips, one for transitions) as clips come and go and the play head moves.
class FLKTimelineBufferManager : public FLKVideoBufferSource {
public:
    virtual void createBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) = 0;
    virtual void removeBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) = 0;
    // Seconds: the length of one segment, and how early a segment is read.
    virtual void setBufferWidth(double seconds) = 0;
    virtual void setBufferingMarginTime(double seconds) = 0;
    // Seconds decoded past the frames being shown, for a play-through that
    // never goes back; managers without decoders of their own ignore it.
    virtual void setDecodeAheadTime(double /*seconds*/) {}
    // Notified by the decoders as frames arrive and reads end.
    virtual void setProgressSignal(std::shared_ptr<FLKProgressSignal> /*signal*/) {}
};
