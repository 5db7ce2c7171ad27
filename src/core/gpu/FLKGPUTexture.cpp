#include "core/gpu/FLKGPUTexture.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cstring>

#include "core/gpu/FLKContext.h"

namespace {
struct GLFormat {
    GLenum internalFormat;
    GLenum format;
};

GLFormat glFormat(FLKPixelFormat format) {
    switch (format) {
        case FLKPixelFormat::RGBA8: return {GL_RGBA8, GL_RGBA};
        case FLKPixelFormat::BGRA8: return {GL_RGBA8, GL_BGRA};
        case FLKPixelFormat::R8: return {GL_R8, GL_RED};
        case FLKPixelFormat::RG8: return {GL_RG8, GL_RG};
    }
    return {GL_RGBA8, GL_RGBA};
}

void clearGLErrors() {
    while (glGetError() != GL_NO_ERROR) {
    }
}

// Always a sized GL_RGBA8 (or smaller) image, BGRA bytes converted on upload.
// Keeping BGRA storage (an unsized RGBA image given BGRA bytes) lets llvmpipe
// draw a BGRA texture into a BGRA target on its "linear" fast path, which in
// Mesa 22.3 blends fully covered 64 x 64 tiles wrongly: what is behind comes
// out multiplied by itself where the texels are transparent.
GLuint createStorage(int width, int height, FLKPixelFormat format) {
    GLuint name = 0;
    glCreateTextures(GL_TEXTURE_2D, 1, &name);
    glTextureStorage2D(name, 1, glFormat(format).internalFormat, width, height);
    glTextureParameteri(name, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTextureParameteri(name, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTextureParameteri(name, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTextureParameteri(name, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return name;
}

// Grows a rectangle of all-zero 4-byte pixels from the centre of the content,
// one row or column at a time; a side that meets a non-zero pixel stops for
// good (a longer row or column there would meet it too).
std::optional<FLKGPUTexture::TexelRect> transparentRectAroundCentre(const uint8_t* pixels, int stride, int width,
                                                                   int height) {
    auto zero = [&](int x, int y) {
        const uint8_t* p = pixels + static_cast<size_t>(y) * stride + static_cast<size_t>(x) * 4;
        return (p[0] | p[1] | p[2] | p[3]) == 0;
    };
    auto zeroColumn = [&](int x, int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            if (!zero(x, y)) return false;
        }
        return true;
    };
    auto zeroRow = [&](int y, int x0, int x1) {
        for (int x = x0; x < x1; ++x) {
            if (!zero(x, y)) return false;
        }
        return true;
    };
    if (width <= 0 || height <= 0 || !zero(width / 2, height / 2)) return std::nullopt;
    FLKGPUTexture::TexelRect r{width / 2, height / 2, width / 2 + 1, height / 2 + 1};
    bool left = true, right = true, top = true, bottom = true;
    while (left || right || top || bottom) {
        if (left && (left = r.x0 > 0 && zeroColumn(r.x0 - 1, r.y0, r.y1))) --r.x0;
        if (right && (right = r.x1 < width && zeroColumn(r.x1, r.y0, r.y1))) ++r.x1;
        if (top && (top = r.y0 > 0 && zeroRow(r.y0 - 1, r.x0, r.x1))) --r.y0;
        if (bottom && (bottom = r.y1 < height && zeroRow(r.y1, r.x0, r.x1))) ++r.y1;
    }
    return r;
}

bool alphaIsFull(const uint8_t* pixels, int stride, int width, int height) {
    for (int y = 0; y < height; ++y) {
        const uint8_t* row = pixels + static_cast<size_t>(y) * stride;
        for (int x = 0; x < width; ++x) {
            if (row[x * 4 + 3] != 255) return false;
        }
    }
    return true;
}

uint8_t unpremultiplied(uint8_t c, uint8_t a) {
    if (a == 0) return 0;
    return static_cast<uint8_t>(std::min(255, (c * 255 + a / 2) / a));
}
}  // namespace

size_t flkBytesPerPixel(FLKPixelFormat format) {
    switch (format) {
        case FLKPixelFormat::RGBA8:
        case FLKPixelFormat::BGRA8: return 4;
        case FLKPixelFormat::R8: return 1;
        case FLKPixelFormat::RG8: return 2;
    }
    return 4;
}

FLKGPUTexture::FLKGPUTexture(int width, int height, FLKPixelFormat format)
    : width_(width), height_(height), format_(format) {}

FLKGPUTexture::FLKGPUTexture(int width, int height, FLKPixelFormat format, std::vector<uint8_t> pixels, int stride,
                             int contentWidth, int contentHeight)
    : width_(width), height_(height), format_(format) {
    pending_ = std::move(pixels);
    pendingStride_ = stride;
    pendingWidth_ = std::min(contentWidth, width);
    pendingHeight_ = std::min(contentHeight, height);
    size_t rowBytes = static_cast<size_t>(pendingWidth_) * flkBytesPerPixel(format);
    bool fits = pendingHeight_ <= 0 || (static_cast<size_t>(stride) >= rowBytes &&
                                        pending_.size() >= static_cast<size_t>(stride) * (pendingHeight_ - 1) + rowBytes);
    if (width <= 0 || height <= 0 || !fits) uploadFailed_ = true;
}

std::shared_ptr<FLKGPUTexture> FLKGPUTexture::uploadNow(int width, int height, FLKPixelFormat format,
                                                        const uint8_t* pixels, int stride, int contentWidth,
                                                        int contentHeight) {
    if (!FLKContext::current() || width <= 0 || height <= 0) return nullptr;
    std::shared_ptr<FLKGPUTexture> texture(new FLKGPUTexture(width, height, format));
    std::lock_guard lock(texture->mutex_);
    if (!texture->upload(pixels, stride, std::min(contentWidth, width), std::min(contentHeight, height))) return nullptr;
    return texture;
}

std::shared_ptr<FLKGPUTexture> FLKGPUTexture::renderTarget(int width, int height, FLKPixelFormat format) {
    if (!FLKContext::current() || width <= 0 || height <= 0) return nullptr;
    std::shared_ptr<FLKGPUTexture> texture(new FLKGPUTexture(width, height, format));
    std::lock_guard lock(texture->mutex_);
    clearGLErrors();
    texture->name_ = createStorage(width, height, format);
    if (glGetError() != GL_NO_ERROR) return nullptr;
    return texture;
}

std::optional<FLKGPUTexture::TexelRect> FLKGPUTexture::transparentRect() const {
    std::lock_guard lock(mutex_);
    return transparentRect_;
}

bool FLKGPUTexture::isOpaque() const {
    std::lock_guard lock(mutex_);
    return opaque_;
}

FLKGPUTexture::~FLKGPUTexture() { FLKContext::releaseObject(FLKContext::ObjectKind::texture, name_); }

// Called with mutex_ held and a context current.
bool FLKGPUTexture::upload(const uint8_t* pixels, int stride, int contentWidth, int contentHeight) {
    size_t bytesPerPixel = flkBytesPerPixel(format_);
    clearGLErrors();
    name_ = createStorage(width_, height_, format_);
    GLFormat format = glFormat(format_);
    if (contentWidth < width_ || contentHeight < height_) {
        glClearTexImage(name_, 0, format.format, GL_UNSIGNED_BYTE, nullptr);
    }
    // Padding around the content is cleared to transparent.
    opaque_ = bytesPerPixel == 4 && pixels && contentWidth == width_ && contentHeight == height_ &&
              alphaIsFull(pixels, stride, contentWidth, contentHeight);
    if (contentWidth > 0 && contentHeight > 0 && pixels) {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        if (stride % static_cast<int>(bytesPerPixel) == 0) {
            glPixelStorei(GL_UNPACK_ROW_LENGTH, stride / static_cast<int>(bytesPerPixel));
            glTextureSubImage2D(name_, 0, 0, 0, contentWidth, contentHeight, format.format, GL_UNSIGNED_BYTE, pixels);
            glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
        } else {
            for (int row = 0; row < contentHeight; ++row) {
                glTextureSubImage2D(name_, 0, 0, row, contentWidth, 1, format.format, GL_UNSIGNED_BYTE,
                                    pixels + static_cast<size_t>(row) * stride);
            }
        }
    }
    if (glGetError() != GL_NO_ERROR) {
        glDeleteTextures(1, &name_);
        name_ = 0;
        uploadFailed_ = true;
        return false;
    }
    return true;
}

unsigned int FLKGPUTexture::name() {
    std::lock_guard lock(mutex_);
    if (name_ || uploadFailed_ || !FLKContext::current()) return name_;
    if (flkBytesPerPixel(format_) == 4 && !pending_.empty()) {
        transparentRect_ = transparentRectAroundCentre(pending_.data(), pendingStride_, pendingWidth_, pendingHeight_);
    }
    if (upload(pending_.data(), pendingStride_, pendingWidth_, pendingHeight_)) {
        pending_.clear();
        pending_.shrink_to_fit();
    }
    return name_;
}

std::vector<uint8_t> FLKGPUTexture::readPixels() {
    std::vector<uint8_t> pixels(static_cast<size_t>(width_) * height_ * flkBytesPerPixel(format_));
    if (!readPixels(pixels.data(), pixels.size())) return {};
    return pixels;
}

bool FLKGPUTexture::readPixels(uint8_t* destination, size_t capacity) {
    size_t needed = static_cast<size_t>(width_) * height_ * flkBytesPerPixel(format_);
    GLuint texture = name();
    if (!texture || !destination || capacity < needed) return false;
    clearGLErrors();
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTextureImage(texture, 0, glFormat(format_).format, GL_UNSIGNED_BYTE, static_cast<GLsizei>(needed),
                      destination);
    return glGetError() == GL_NO_ERROR;
}

namespace flk {
FLKImage imageWithTexture(FLKGPUTexture& texture) {
    std::vector<uint8_t> pixels = texture.readPixels();
    if (pixels.empty()) return {};
    FLKImage image(texture.width(), texture.height());
    size_t count = static_cast<size_t>(image.width) * image.height;
    for (size_t i = 0; i < count; ++i) {
        uint8_t* out = &image.rgba[i * 4];
        switch (texture.pixelFormat()) {
            case FLKPixelFormat::RGBA8:
                std::memcpy(out, &pixels[i * 4], 4);
                break;
            case FLKPixelFormat::BGRA8:
                out[0] = pixels[i * 4 + 2], out[1] = pixels[i * 4 + 1], out[2] = pixels[i * 4], out[3] = pixels[i * 4 + 3];
                break;
            case FLKPixelFormat::R8:
                out[0] = out[1] = out[2] = pixels[i], out[3] = 255;
                break;
            case FLKPixelFormat::RG8:
                out[0] = pixels[i * 2], out[1] = pixels[i * 2 + 1], out[2] = 0, out[3] = 255;
                break;
        }
        if (out[3] != 255) {
            for (int c = 0; c < 3; ++c) out[c] = unpremultiplied(out[c], out[3]);
        }
    }
    return image;
}
}  // namespace flk

std::shared_ptr<FLKGPUTexture> FLKGPUTexture::chromaPlane() const {
    std::lock_guard lock(chromaMutex_);
    return chroma_;
}

void FLKGPUTexture::setChromaPlane(std::shared_ptr<FLKGPUTexture> chroma) {
    std::lock_guard lock(chromaMutex_);
    chroma_ = std::move(chroma);
}

FLKYCbCrColorimetry FLKGPUTexture::colorimetry() const {
    std::lock_guard lock(chromaMutex_);
    return colorimetry_;
}

void FLKGPUTexture::setColorimetry(FLKColorMatrix matrix, FLKColorRange range) {
    std::lock_guard lock(chromaMutex_);
    colorimetry_ = FLKYCbCrColorimetry::of(matrix, range);
}
