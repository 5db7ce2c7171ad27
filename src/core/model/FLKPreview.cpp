#include "core/model/FLKPreview.h"

#include <algorithm>
#include <cstring>

#include "core/media/FLKImageIO.h"

namespace fs = std::filesystem;

const std::optional<FLKImage>& FLKPreview::image() {
    if (image_) return image_;
    auto files = allFiles();
    if (files.empty()) return image_;
    if (auto picture = flk::readImage(url() / files.front())) {
        image_ = flk::croppedImageToFitAspectRatio(*picture, kPreviewSide, kPreviewSide);
    }
    return image_;
}

void FLKPreview::clear() {
    image_.reset();
    std::error_code ec;
    for (auto it = fs::directory_iterator(url(), ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
        std::error_code ignored;
        fs::remove_all(it->path(), ignored);
    }
}

FLKImage flk::croppedImageToFitAspectRatio(const FLKImage& image, int width, int height) {
    if (image.isEmpty() || width <= 0 || height <= 0) return image;
    // Compare width/height ratios without rounding: w * height vs h * width.
    int64_t scaledWidth = static_cast<int64_t>(image.height) * width / height;
    int cropWidth = image.width;
    int cropHeight = image.height;
    if (scaledWidth < image.width) {
        cropWidth = static_cast<int>(std::max<int64_t>(1, scaledWidth));
    } else {
        cropHeight = static_cast<int>(std::max<int64_t>(1, static_cast<int64_t>(image.width) * height / width));
    }
    int left = (image.width - cropWidth) / 2;
    int top = (image.height - cropHeight) / 2;
    FLKImage cropped(cropWidth, cropHeight);
    for (int y = 0; y < cropHeight; ++y) {
        std::memcpy(cropped.pixel(0, y), image.pixel(left, top + y), static_cast<size_t>(cropWidth) * 4);
    }
    return cropped;
}
