#include "core/media/FLKAssetReader.h"

#include "core/media/FLKFrameScaler.h"
#include "core/media/FLKVideoDecoder.h"
#include "core/platform/FLKFreedMemory.h"

extern "C" {
#include <libswscale/swscale.h>
}


FLKAssetReader::FLKAssetReader(std::shared_ptr<FLKAsset> asset, double start, double end, int outputWidth,
                               int outputHeight)
    : asset_(std::move(asset)), start_(start), end_(end), outputWidth_(outputWidth), outputHeight_(outputHeight) {}

FLKAssetReader::~FLKAssetReader() = default;

FLKError FLKAssetReader::error() const {
    std::lock_guard lock(errorMutex_);
    return error_;
}

void FLKAssetReader::fail(const std::string& reason) {
    {
        std::lock_guard lock(errorMutex_);
        error_ = flk::media::makeError(flk::media::kErrorDecodeFailed, "The video could not be read.", reason);
    }
    decoder_.reset();
    scaler_.reset();
    status_ = FLKAssetReaderStatus::Failed;
}

bool FLKAssetReader::startReading() {
    if (status_ != FLKAssetReaderStatus::Unknown) return status_ == FLKAssetReaderStatus::Reading;
    if (!asset_) {
        fail("No file to read.");
        return false;
    }
    if (!(end_ > start_) || outputWidth_ <= 0 || outputHeight_ <= 0) {
        fail("Invalid range or size for reading \"" + asset_->path() + "\".");
        return false;
    }
    std::string reason;
    decoder_ = FLKVideoDecoder::open(asset_->path(), &reason,
                                     singleThreaded_ ? FLKVideoDecoder::Threading::Single
                                                     : FLKVideoDecoder::Threading::Frames);
    if (!decoder_) {
        fail(reason);
        return false;
    }
    if (!decoder_->seekTo(start_)) {
        fail(decoder_->failed() ? decoder_->failureReason() : "Cannot seek in \"" + asset_->path() + "\".");
        return false;
    }
    scaler_ = std::make_unique<FLKFrameScaler>(outputWidth_, outputHeight_, AV_PIX_FMT_NV12, SWS_FAST_BILINEAR);
    scaler_->setOrientation(decoder_->orientation());
    // A segment keeps every frame it decodes until the segment is dropped.
    scaler_->setOutputsOwnPages(true);
    FLKAssetReaderStatus expected = FLKAssetReaderStatus::Unknown;
    // A cancel that came in meanwhile wins.
    return status_.compare_exchange_strong(expected, FLKAssetReaderStatus::Reading);
}

std::shared_ptr<FLKVideoFrame> FLKAssetReader::copyNextSampleBuffer() {
    if (status_ != FLKAssetReaderStatus::Reading || !decoder_) return nullptr;
    double time = 0;
    AVFrame* decoded = decoder_->nextFrame(&time);
    if (!decoded) {
        if (decoder_->failed()) {
            fail(decoder_->failureReason());
        } else {
            finishReading();
        }
        return nullptr;
    }
    if (time >= end_) {
        finishReading();
        return nullptr;
    }
    flk::media::Frame scaled = scaler_->scale(decoded);
    if (!scaled) {
        fail("Cannot convert the frames of \"" + asset_->path() + "\" to NV12.");
        return nullptr;
    }
    if (status_ != FLKAssetReaderStatus::Reading) return nullptr;  // cancelled meanwhile
    return std::make_shared<FLKVideoFrame>(scaled.get(), time);
}

void FLKAssetReader::finishReading() {
    decoder_.reset();
    scaler_.reset();
    flk::giveFreedMemoryBack();
    FLKAssetReaderStatus expected = FLKAssetReaderStatus::Reading;
    status_.compare_exchange_strong(expected, FLKAssetReaderStatus::Completed);
}

void FLKAssetReader::cancelReading() {
    FLKAssetReaderStatus current = status_.load();
    while (current == FLKAssetReaderStatus::Unknown || current == FLKAssetReaderStatus::Reading) {
        if (status_.compare_exchange_weak(current, FLKAssetReaderStatus::Cancelled)) break;
    }
}
