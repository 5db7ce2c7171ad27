#include "core/gpu/FLKURLVideoTextureProvider.h"

#include <chrono>
#include <cmath>

#include "core/media/FLKFrameScaler.h"
#include "core/platform/FLKClock.h"
#include "core/platform/FLKDispatchQueue.h"

extern "C" {
#include <libswscale/swscale.h>
}

namespace {
constexpr int kErrorCodeCouldNotLoad = 4;

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::shared_ptr<const FLKPixelBuffer> bgraBufferWithFrame(FLKFrameScaler& scaler, const FLKVideoFrame& frame) {
    flk::media::Frame bgra = scaler.scale(frame.avFrame());
    if (!bgra) return nullptr;
    auto buffer = std::make_shared<FLKPixelBuffer>(bgra->width, bgra->height);
    for (int y = 0; y < bgra->height; ++y) {
        std::copy_n(bgra->data[0] + static_cast<ptrdiff_t>(y) * bgra->linesize[0], buffer->stride,
                    buffer->bgra.data() + static_cast<size_t>(y) * buffer->stride);
    }
    return buffer;
}
}  // namespace

FLKURLVideoTextureProvider::FLKURLVideoTextureProvider(std::filesystem::path videoURL,
                                                       std::shared_ptr<FLKUpdatableTimer> timer, TimeSource timeSource)
    : videoURL_(std::move(videoURL)),
      asset_(FLKAsset::assetWithPath(videoURL_.string())),
      timer_(timer ? std::weak_ptr<FLKUpdatableTimer>(timer) : std::weak_ptr<FLKUpdatableTimer>(FLKClock::clock())),
      timeSource_(timeSource ? std::move(timeSource) : TimeSource(steadySeconds)),
      textureRenderingQueue_(
          FLKDispatchQueue::make("org.flickwell.Flickwell.FLKURLVideoTextureProvider.textureRenderingQueue")) {}

FLKURLVideoTextureProvider::~FLKURLVideoTextureProvider() = default;

double FLKURLVideoTextureProvider::now() const { return timeSource_(); }

bool FLKURLVideoTextureProvider::prepareToPlay() {
    std::lock_guard lock(mutex_);
    if (!asset_->hasVideo()) {
        error_ = FLKError::make("FLKURLVideoTextureProvider", kErrorCodeCouldNotLoad,
                          "Could not load assets for URL file://" +
                                     std::filesystem::absolute(videoURL_).string());
        return false;
    }
    const FLKSize size = asset_->videoTrack()->presentationSize();
    const int width = static_cast<int>(size.width) & ~1, height = static_cast<int>(size.height) & ~1;
    scaler_ = std::make_unique<FLKFrameScaler>(width, height, AV_PIX_FMT_BGRA, SWS_BILINEAR);
    currentTexture_.reset();
    textureBuffer_.clear();
    rewindAssetReaderLocked();
    prepared_.store(true);
    return true;
}

void FLKURLVideoTextureProvider::play() {
    if (!isPrepared() && !prepareToPlay()) return;
    updateTexture();
    playing_.store(true);
    if (auto timer = timer_.lock()) timer->addUpdatable(shared_from_this());
}

void FLKURLVideoTextureProvider::pause() {
    playing_.store(false);
    if (auto timer = timer_.lock()) timer->removeUpdateable(shared_from_this());
}

void FLKURLVideoTextureProvider::stop() {
    pause();
    std::lock_guard lock(mutex_);
    if (prepared_.load()) rewindAssetReaderLocked();
}

void FLKURLVideoTextureProvider::setCurrentTime(double seconds) {
    std::weak_ptr<FLKURLVideoTextureProvider> weakSelf = weak_from_this();
    textureRenderingQueue_->async([weakSelf, seconds] {
        auto self = weakSelf.lock();
        if (!self || !self->isPrepared()) return;
        std::lock_guard lock(self->mutex_);
        self->rewindAssetReaderLocked(seconds);
        self->startDate_ = self->now() - seconds;
    });
}

void FLKURLVideoTextureProvider::rewindAssetReaderLocked(double start) {
    if (assetReader_) assetReader_->cancelReading();
    const auto& track = asset_->videoTrack();
    const int width = static_cast<int>(track->presentationSize().width) & ~1;
    const int height = static_cast<int>(track->presentationSize().height) & ~1;
    assetReader_ = std::make_shared<FLKAssetReader>(asset_, start, asset_->duration(), width, height);
    assetReader_->startReading();
    pendingSampleBuffer_.reset();
    startDate_.reset();
}

double FLKURLVideoTextureProvider::currentTimeLocked() const { return startDate_ ? now() - *startDate_ : 0; }

double FLKURLVideoTextureProvider::currentTime() const {
    std::lock_guard lock(mutex_);
    return currentTimeLocked();
}

bool FLKURLVideoTextureProvider::update(double /*time*/) {
    std::weak_ptr<FLKURLVideoTextureProvider> weakSelf = weak_from_this();
    textureRenderingQueue_->async([weakSelf] {
        if (auto self = weakSelf.lock()) self->updateTexture();
    });
    return true;
}

std::shared_ptr<FLKVideoFrame> FLKURLVideoTextureProvider::nextTimeAdjustedSampleBufferLocked(double t) {
    if (pendingSampleBuffer_ && static_cast<float>(pendingSampleBuffer_->presentationTime()) > t) {
        return pendingSampleBuffer_;
    }
    // Skip the frames whose time has passed; the first one still due waits.
    while (auto sample = assetReader_->copyNextSampleBuffer()) {
        pendingSampleBuffer_ = std::move(sample);
        if (!(t > pendingSampleBuffer_->presentationTime())) break;
    }
    return pendingSampleBuffer_;
}

void FLKURLVideoTextureProvider::updateTexture() {
    bool finished = false;
    {
        std::lock_guard lock(mutex_);
        if (!prepared_.load() || !assetReader_) return;
        if (!startDate_) startDate_ = now();
        const double t = currentTimeLocked();
        if (auto sample = nextTimeAdjustedSampleBufferLocked(t)) updateWithSampleBufferLocked(*sample);
        finished = t >= asset_->duration() && assetReader_->status() == FLKAssetReaderStatus::Completed;
        if (finished && shouldLoop_.load()) {
            rewindAssetReaderLocked();
            return;
        }
    }
    if (finished) stop();
}

void FLKURLVideoTextureProvider::updateWithSampleBufferLocked(const FLKVideoFrame& frame) {
    if (frame.presentationTime() == shownSampleTime_ && currentTexture_) return;
    auto pixels = bgraBufferWithFrame(*scaler_, frame);
    if (!pixels) return;
    auto texture = std::make_shared<FLKTexture>(std::move(pixels), FLKPixelFormat::BGRA8, 0.0);
    textureBuffer_.addTexture(texture);
    currentTexture_ = std::move(texture);
    shownSampleTime_ = frame.presentationTime();
    texturesShown_.fetch_add(1);
}

void FLKURLVideoTextureProvider::refreshTexture() {
    std::shared_ptr<FLKTexture> current;
    {
        std::lock_guard lock(mutex_);
        current = currentTexture_;
    }
    if (current && !current->texture()) current->refreshTexture();
}

std::shared_ptr<FLKGPUTexture> FLKURLVideoTextureProvider::texture() const {
    std::lock_guard lock(mutex_);
    return currentTexture_ ? currentTexture_->texture() : nullptr;
}

std::optional<FLKError> FLKURLVideoTextureProvider::error() const {
    std::lock_guard lock(mutex_);
    return error_;
}

double FLKURLVideoTextureProvider::shownSampleTime() const {
    std::lock_guard lock(mutex_);
    return shownSampleTime_;
}

double FLKURLVideoTextureProvider::duration() const { return asset_->duration(); }

double FLKURLVideoTextureProvider::fps() const {
    return asset_->videoTrack() ? std::ceil(asset_->videoTrack()->nominalFrameRate) : 0;
}

FLKSize FLKURLVideoTextureProvider::videoSize() const {
    return asset_->videoTrack() ? asset_->videoTrack()->presentationSize() : FLKSize{};
}

int64_t FLKURLVideoTextureProvider::numFrames() const {
    if (!asset_->videoTrack()) return INT64_MAX;
    return static_cast<int64_t>(std::llround(asset_->duration() * fps()));
}
