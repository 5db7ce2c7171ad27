#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "core/gpu/FLKYCbCrColorimetry.h"
#include "core/platform/FLKImage.h"

// Pixel formats of textures. BGRA8 is stored as RGBA8 in GL and uploaded and
// read back in BGRA byte order.
enum class FLKPixelFormat { RGBA8, BGRA8, R8, RG8 };

size_t flkBytesPerPixel(FLKPixelFormat format);

// A 2-D GL texture. It can be made on any thread: the pixels are held in
// memory and uploaded the first time name() is called with a context current
// (the render thread), so no GL call happens on loader or decoder threads.
class FLKGPUTexture {
public:
    // Holds `pixels` (rows of `stride` bytes, top row first) until first use.
    // The texture is width x height; `contentWidth`/`contentHeight` of the
    // pixels fill its top-left corner (for sizes rounded up to even), the rest
    // is cleared to zero.
    FLKGPUTexture(int width, int height, FLKPixelFormat format, std::vector<uint8_t> pixels, int stride,
                  int contentWidth, int contentHeight);
    FLKGPUTexture(int width, int height, FLKPixelFormat format, std::vector<uint8_t> pixels)
        : FLKGPUTexture(width, height, format, std::move(pixels), width * static_cast<int>(flkBytesPerPixel(format)),
                        width, height) {}
    // Uploads rows straight from caller memory; needs a current context.
    static std::shared_ptr<FLKGPUTexture> uploadNow(int width, int height, FLKPixelFormat format,
                                                    const uint8_t* pixels, int stride, int contentWidth,
                                                    int contentHeight);
    // An empty texture usable as a render target; needs a current context.
    static std::shared_ptr<FLKGPUTexture> renderTarget(int width, int height, FLKPixelFormat format);

    ~FLKGPUTexture();
    FLKGPUTexture(const FLKGPUTexture&) = delete;
    FLKGPUTexture& operator=(const FLKGPUTexture&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    FLKPixelFormat pixelFormat() const { return format_; }
    bool isMipmapped() const { return false; }

    // The interleaved CbCr plane that belongs to this luma plane of an NV12
    // frame: video frames travel as their luma texture, and the renderer
    // binds this beside it for the YUV pipelines. Null for other textures.
    std::shared_ptr<FLKGPUTexture> chromaPlane() const;
    void setChromaPlane(std::shared_ptr<FLKGPUTexture> chroma);
    // How this luma plane and its chroma plane encode colour (BT.709,
    // limited range unless set), for draws that sample the planes directly.
    FLKYCbCrColorimetry colorimetry() const;
    void setColorimetry(FLKColorMatrix matrix, FLKColorRange range);

    // A rectangle of texels, in texel coordinates of the whole texture, that
    // are all zero (transparent black); found when pixels given at
    // construction are uploaded, around the centre of 4-byte pixels (the
    // screen opening of device artwork). Absent when the centre is not
    // transparent or before the upload.
    struct TexelRect {
        int x0, y0, x1, y1;  // x1, y1 exclusive
    };
    std::optional<TexelRect> transparentRect() const;
    // True when every pixel given at construction or upload had alpha 255 (4-byte formats).
    bool isOpaque() const;

    // The GL texture name, uploading pending pixels first; 0 when no context
    // is current or the upload failed. Render thread only.
    unsigned int name();

    // Bytes of the whole texture in its own format and byte order (BGRA for
    // BGRA8), rows top first, tightly packed; empty on failure. Needs a current
    // context.
    std::vector<uint8_t> readPixels();
    // The same into caller memory of at least width * height * bytes per pixel
    // (a frame's reused pixel buffer); false on failure.
    bool readPixels(uint8_t* destination, size_t capacity);

private:
    FLKGPUTexture(int width, int height, FLKPixelFormat format);
    bool upload(const uint8_t* pixels, int stride, int contentWidth, int contentHeight);

    const int width_;
    const int height_;
    const FLKPixelFormat format_;

    mutable std::mutex mutex_;
    unsigned int name_ = 0;           // guarded by mutex_
    std::vector<uint8_t> pending_;    // guarded by mutex_; dropped after upload
    int pendingStride_ = 0;           // guarded by mutex_
    int pendingWidth_ = 0;            // guarded by mutex_
    int pendingHeight_ = 0;           // guarded by mutex_
    bool uploadFailed_ = false;       // guarded by mutex_
    std::optional<TexelRect> transparentRect_;  // guarded by mutex_
    bool opaque_ = false;                       // guarded by mutex_
    mutable std::mutex chromaMutex_;
    std::shared_ptr<FLKGPUTexture> chroma_;  // guarded by chromaMutex_
    FLKYCbCrColorimetry colorimetry_;         // guarded by chromaMutex_
};

namespace flk {
// Reads a texture back into an image with straight alpha (the pipelines draw
// premultiplied colour); R8 and RG8 expand to grey / red-green. Needs a
// current context; empty image on failure.
FLKImage imageWithTexture(FLKGPUTexture& texture);
}  // namespace flk
