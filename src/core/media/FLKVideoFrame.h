#pragma once

#include <cstdint>
#include <memory>
#include <string>

struct AVFrame;

enum class FLKColorMatrix { BT709, BT601 };
enum class FLKColorRange { Limited, Full };

// One decoded picture held in CPU memory: a reference to an FFmpeg frame
// (no copy) plus its presentation time. Textures upload it later on the render
// thread; the frame itself is immutable once made, so any thread may read it.
class FLKVideoFrame {
public:
    // Takes a new reference to `frame`; the caller keeps its own.
    FLKVideoFrame(const AVFrame* frame, double presentationTime);
    ~FLKVideoFrame();
    FLKVideoFrame(const FLKVideoFrame&) = delete;
    FLKVideoFrame& operator=(const FLKVideoFrame&) = delete;

    double presentationTime() const { return presentationTime_; }
    int width() const;
    int height() const;
    // An AVPixelFormat value, and its FFmpeg name ("nv12", "yuv420p", ...).
    int pixelFormat() const;
    std::string pixelFormatName() const;
    bool isNV12() const;

    // NV12 planes: full-size luma, then half-size interleaved Cb/Cr. Only
    // meaningful when isNV12(); null otherwise. Strides are in bytes.
    const uint8_t* yPlane() const;
    int yStride() const;
    const uint8_t* uvPlane() const;
    int uvStride() const;

    // Colour tags of the picture. Untagged pictures count as BT.709 from 720
    // lines up and BT.601 below, limited range.
    FLKColorMatrix colorMatrix() const;
    FLKColorRange colorRange() const;

    const AVFrame* avFrame() const { return frame_; }

private:
    AVFrame* frame_ = nullptr;
    double presentationTime_ = 0;
};
