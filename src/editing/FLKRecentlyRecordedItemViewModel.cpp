#include "editing/FLKRecentlyRecordedItemViewModel.h"

#include <map>
#include <mutex>

#include "core/media/FLKAsset.h"
#include "core/media/FLKAssetImageGenerator.h"
#include "core/platform/FLKDispatchQueue.h"
#include "core/platform/FLKMainQueue.h"
#include "editing/FLKRecordingItemMenuViewModel.h"

namespace {
std::mutex cacheMutex;
std::map<std::string, std::shared_ptr<const FLKImage>> thumbnailCache;  // guarded by cacheMutex

std::shared_ptr<const FLKImage> makeThumbnail(const std::filesystem::path& url) {
    auto asset = FLKAsset::assetWithPath(url.string());
    if (!asset || !asset->hasVideo()) return nullptr;
    FLKAssetImageGenerator generator(asset);
    generator.setMaximumSize(FLKSize{FLKRecentlyRecordedItemViewModel::kThumbnailSize,
                                     FLKRecentlyRecordedItemViewModel::kThumbnailSize});
    auto image = generator.copyImageAtTime(0);
    return image ? std::make_shared<const FLKImage>(std::move(*image)) : nullptr;
}

std::shared_ptr<FLKDispatchQueue> thumbnailQueue() {
    static auto queue = FLKDispatchQueue::make("flickwell.recording-thumbnails");
    return queue;
}
}  // namespace

FLKRecentlyRecordedItemViewModel::FLKRecentlyRecordedItemViewModel(
    std::string identifier, std::filesystem::path itemURL, std::shared_ptr<FLKSaveRecordingSheetPresenting> sheetPresenter)
    : FLKMenuItemViewModel(std::move(identifier)),
      itemURL_(std::move(itemURL)),
      contextMenuViewModel_(FLKRecordingItemMenuViewModel::make(itemURL_, std::move(sheetPresenter))) {
    setTitle(itemURL_.filename().string());
    setEnabled(true);
}

std::shared_ptr<const FLKImage> FLKRecentlyRecordedItemViewModel::image() {
    if (!imageMade_) {
        image_ = makeThumbnail(itemURL_);
        imageMade_ = true;
    }
    return image_;
}

void FLKRecentlyRecordedItemViewModel::asyncLoadImage(ImageBlock block) {
    imageBlock_ = block;
    std::string key = itemURL_.string();
    {
        std::lock_guard lock(cacheMutex);
        auto hit = thumbnailCache.find(key);
        if (hit != thumbnailCache.end()) {
            block(hit->second, false);
            return;
        }
    }
    auto main = FLKMainQueue::main();
    auto url = itemURL_;
    thumbnailQueue()->async([url, key, main, block = std::move(block)] {
        auto image = makeThumbnail(url);
        {
            std::lock_guard lock(cacheMutex);
            thumbnailCache[key] = image;
        }
        main->post([block, image] { block(image, true); });
    });
}
