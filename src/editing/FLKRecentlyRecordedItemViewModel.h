#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "core/platform/FLKImage.h"
#include "editing/FLKMenuItemViewModel.h"

class FLKRecordingItemMenuViewModel;
class FLKSaveRecordingSheetPresenting;

// One kept recording in the inspector's list: its name and a thumbnail of its
// first picture, made off the main thread.
class FLKRecentlyRecordedItemViewModel : public FLKMenuItemViewModel {
public:
    using ImageBlock = std::function<void(std::shared_ptr<const FLKImage> image, bool loadedNow)>;
    // Thumbnails fit a square of this many pixels.
    static constexpr int kThumbnailSize = 64;

    FLKRecentlyRecordedItemViewModel(std::string identifier, std::filesystem::path itemURL,
                                     std::shared_ptr<FLKSaveRecordingSheetPresenting> sheetPresenter = nullptr);

    const std::filesystem::path& itemURL() const { return itemURL_; }
    // The file's name without its extension.
    std::string name() const { return itemURL_.stem().string(); }
    // Made once, on the calling thread; null when the recording has no picture.
    std::shared_ptr<const FLKImage> image();
    // A cached thumbnail comes at once (loadedNow false); otherwise it is made
    // on a background queue and `block` runs on the main queue (loadedNow true).
    void asyncLoadImage(ImageBlock block);
    const std::shared_ptr<FLKRecordingItemMenuViewModel>& contextMenuViewModel() const { return contextMenuViewModel_; }

private:
    std::filesystem::path itemURL_;
    std::shared_ptr<const FLKImage> image_;   // main thread, or the caller of image()
    bool imageMade_ = false;
    ImageBlock imageBlock_;
    std::shared_ptr<FLKRecordingItemMenuViewModel> contextMenuViewModel_;
};
