#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "core/model/FLKMedia.h"
#include "core/platform/FLKImage.h"

// A document's "preview" folder: one picture that stands for the document in
// the file browser and the welcome window.
class FLKPreview : public FLKMedia {
public:
    static constexpr int kPreviewSide = 160;

    using FLKMedia::FLKMedia;
    static std::shared_ptr<FLKPreview> previewWithURL(std::filesystem::path url) {
        return std::make_shared<FLKPreview>(std::move(url));
    }

    // The first picture of the folder, cropped to the square preview's
    // aspect; kept from then on. nullopt for an empty folder.
    const std::optional<FLKImage>& image();
    void setImage(std::optional<FLKImage> image) { image_ = std::move(image); }
    // Removes every file in the folder and forgets the kept picture.
    void clear();

private:
    std::optional<FLKImage> image_;
};

namespace flk {
// The largest centred part of `image` with the aspect ratio of width:height.
FLKImage croppedImageToFitAspectRatio(const FLKImage& image, int width, int height);
}  // namespace flk
