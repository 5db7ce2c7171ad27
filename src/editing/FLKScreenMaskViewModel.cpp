#include "editing/FLKScreenMaskViewModel.h"

#include "core/model/FLKMedia.h"
#include "core/scene/FLKVideoContainer.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKPropertyChangeAction.h"

FLKScreenMaskViewModel::FLKScreenMaskViewModel(std::shared_ptr<FLKVideoContainer> screen,
                                               std::shared_ptr<FLKMedia> media)
    : screen_(std::move(screen)), media_(std::move(media)) {}

bool FLKScreenMaskViewModel::applyMask(const std::filesystem::path& mask, FLKError* error) {
    if (!screen_ || !media_) {
        flk::setError(error, FLKError::make("FLKScreenMaskViewModelErrorDomain", 1,
                                            "There is no screen to put the mask \"" + mask.filename().string() +
                                                "\" on."));
        return false;
    }
    auto copy = media_->addFile(mask, error);
    if (!copy) return false;
    changeMask(std::move(copy));
    return true;
}

void FLKScreenMaskViewModel::removeMask() {
    if (screen_) changeMask(std::nullopt);
}

void FLKScreenMaskViewModel::changeMask(std::optional<std::filesystem::path> url) {
    auto before = screen_->videoMaskImageURL();
    screen_->setVideoMaskImageURL(url);
    std::weak_ptr<FLKVideoContainer> weak = screen_;
    auto apply = [weak](const std::optional<std::filesystem::path>& mask) {
        if (auto screen = weak.lock()) screen->setVideoMaskImageURL(mask);
    };
    FLKActionPipeline::sharedPipeline().execute(
        std::make_shared<FLKPropertyChangeAction<std::optional<std::filesystem::path>>>(screen_, apply,
                                                                                         std::move(before), url));
}
