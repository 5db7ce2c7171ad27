#include "core/media/FLKAssetImageGenerator.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "core/media/FLKFrameScaler.h"
#include "core/media/FLKVideoDecoder.h"

extern "C" {
#include <libswscale/swscale.h>
}

namespace {

FLKImage imageFromRGBAFrame(const AVFrame* frame) {
    FLKImage image(frame->width, frame->height);
    size_t rowBytes = static_cast<size_t>(frame->width) * 4;
    for (int y = 0; y < frame->height; ++y)
        std::memcpy(image.pixel(0, y), frame->data[0] + static_cast<ptrdiff_t>(y) * frame->linesize[0], rowBytes);
    return image;
}

}  // namespace

FLKAssetImageGenerator::FLKAssetImageGenerator(std::shared_ptr<FLKAsset> asset) : asset_(std::move(asset)) {}

FLKAssetImageGenerator::~FLKAssetImageGenerator() = default;

bool FLKAssetImageGenerator::ensureDecoder(FLKError* error) {
    if (decoder_) return true;
    if (!asset_) {
        flk::setError(error, flk::media::makeError(flk::media::kErrorInvalidArgument, "No file to read."));
        return false;
    }
    std::string reason;
    decoder_ = FLKVideoDecoder::open(asset_->path(), &reason,
                                     draft_ ? FLKVideoDecoder::Threading::Single : FLKVideoDecoder::Threading::Frames);
    if (!decoder_) {
        flk::setError(error, flk::media::makeError(flk::media::kErrorNoVideoTrack,
                                                   "The picture could not be made.", reason));
        return false;
    }
    if (draft_) decoder_->setDraft();
    scaler_ = std::make_unique<FLKFrameScaler>(1, 1, AV_PIX_FMT_RGBA, SWS_BILINEAR);
    scaler_->setOrientation(decoder_->orientation());
    return true;
}

FLKSize FLKAssetImageGenerator::fittedSize(int width, int height) const {
    double scale = 1.0;
    if (maximumSize_.width > 0) scale = std::min(scale, maximumSize_.width / width);
    if (maximumSize_.height > 0) scale = std::min(scale, maximumSize_.height / height);
    return {std::max(1.0, std::round(width * scale)), std::max(1.0, std::round(height * scale))};
}

std::optional<FLKImage> FLKAssetImageGenerator::copyImageAtTime(double time, double* actualTime, FLKError* error) {
    if (!ensureDecoder(error)) return std::nullopt;
    auto failure = [&](const std::string& reason) {
        flk::setError(error, flk::media::makeError(flk::media::kErrorDecodeFailed, "The picture could not be made.",
                                                   reason));
        decoder_.reset();  // a fresh start for the next request
        return std::nullopt;
    };
    double shownTime = 0;
    AVFrame* frame = decoder_->advanceTo(time) ? decoder_->nextFrame(&shownTime) : nullptr;
    if (!frame) {
        if (decoder_->failed()) return failure(decoder_->failureReason());
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%.3f", time);
        return failure("\"" + asset_->path() + "\" has no picture at " + seconds + " s.");
    }
    const bool swaps = decoder_->orientation().swapsSides();
    FLKSize size = fittedSize(swaps ? frame->height : frame->width, swaps ? frame->width : frame->height);
    scaler_->setOutputSize(static_cast<int>(size.width), static_cast<int>(size.height));
    flk::media::Frame rgba = scaler_->scale(frame);
    if (!rgba) return failure("Cannot convert the pictures of \"" + asset_->path() + "\".");
    if (actualTime) *actualTime = shownTime;
    return imageFromRGBAFrame(rgba.get());
}

void FLKAssetImageGenerator::generateImagesForTimes(const std::vector<double>& times, const Handler& handler) {
    for (double requested : times) {
        FLKError error;
        double actual = requested;
        std::optional<FLKImage> image = copyImageAtTime(requested, &actual, &error);
        handler(requested, image ? &*image : nullptr, actual, image ? nullptr : &error);
    }
}
