#include "core/timeline/FLKVideoClipMedia.h"

#include <mutex>

#include "core/platform/FLKLog.h"

namespace {
std::mutex gOpenerMutex;
FLKVideoClipMedia::Opener gOpener;  // guarded by gOpenerMutex

std::shared_ptr<const FLKVideoClipMedia> probedMedia(const std::filesystem::path& url) {
    auto asset = FLKAsset::assetWithPath(url.string());
    if (!asset) return std::make_shared<FLKVideoClipMedia>(url, 0, std::nullopt);
    if (!asset->isReadable()) flk::log("%s", asset->failureReason().c_str());
    return std::make_shared<FLKVideoClipMedia>(url, asset->duration(), asset->videoTrack(), asset);
}
}  // namespace

std::shared_ptr<const FLKVideoClipMedia> FLKVideoClipMedia::mediaWithURL(const std::filesystem::path& url) {
    Opener opener;
    {
        std::lock_guard lock(gOpenerMutex);
        opener = gOpener;
    }
    auto media = opener ? opener(url) : probedMedia(url);
    return media ? media : std::make_shared<FLKVideoClipMedia>(url, 0, std::nullopt);
}

void FLKVideoClipMedia::setOpener(Opener opener) {
    std::lock_guard lock(gOpenerMutex);
    gOpener = std::move(opener);
}
