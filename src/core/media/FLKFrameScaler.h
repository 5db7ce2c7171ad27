#pragma once

#include <array>

#include "core/media/FLKMediaSupport.h"
#include "core/media/FLKVideoOrientation.h"

struct SwsContext;

// Converts and resizes frames with swscale, keeping one context for as long
// as the source and destination stay the same. The colour range of the
// source is kept, so YUV output carries the source's range and matrix tags.
// With an orientation, the output is the source turned as it says, at the
// output size (planar, semi-planar and packed RGB output formats).
class FLKFrameScaler {
public:
    FLKFrameScaler(int outputWidth, int outputHeight, AVPixelFormat outputFormat, int flags);
    ~FLKFrameScaler();
    FLKFrameScaler(const FLKFrameScaler&) = delete;
    FLKFrameScaler& operator=(const FLKFrameScaler&) = delete;

    // A new frame, or null when the conversion is not possible.
    flk::media::Frame scale(const AVFrame* source);
    void setOutputSize(int width, int height);
    void setOrientation(const FLKVideoOrientation& orientation) { orientation_ = orientation; }
    // Output frames in pages of their own, given back to the system the
    // moment the last reference goes. For frames kept by the hundred and
    // released together from other threads: the heap would keep their pages
    // for whichever thread allocates next.
    void setOutputsOwnPages(bool ownPages) { outputsOwnPages_ = ownPages; }

private:
    flk::media::Frame scaleTo(const AVFrame* source, int width, int height);
    flk::media::Frame turned(const AVFrame& stored) const;
    bool allocateBuffer(AVFrame& frame) const;

    int outputWidth_;
    int outputHeight_;
    AVPixelFormat outputFormat_;
    int flags_;
    FLKVideoOrientation orientation_;
    bool outputsOwnPages_ = false;
    SwsContext* context_ = nullptr;
    std::array<int, 6> configuredDetails_{};  // sizes, formats and colour settings context_ was set up for
};
