#pragma once

#include <memory>

#include "core/platform/FLKImage.h"

// One thumbnail of a clip: its picture (null when it could not be made) and
// the time, in seconds of the clip's media, of the frame it shows.
class FLKVideoClipStaticFrame {
public:
    FLKVideoClipStaticFrame(std::shared_ptr<const FLKImage> image, double time)
        : image_(std::move(image)), time_(time) {}
    static std::shared_ptr<FLKVideoClipStaticFrame> staticFrameWithImage(std::shared_ptr<const FLKImage> image,
                                                                         double time) {
        return std::make_shared<FLKVideoClipStaticFrame>(std::move(image), time);
    }

    const std::shared_ptr<const FLKImage>& image() const { return image_; }
    double time() const { return time_; }

private:
    const std::shared_ptr<const FLKImage> image_;
    const double time_;
};
