#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "core/platform/FLKError.h"

class FLKMedia;
class FLKVideoContainer;

// Puts a mask picture on a screen of the document. The picture is copied
// into the document's media first, so the saved document carries it; every
// change of the screen's mask is one undo step. Main thread only.
class FLKScreenMaskViewModel {
public:
    FLKScreenMaskViewModel(std::shared_ptr<FLKVideoContainer> screen, std::shared_ptr<FLKMedia> media);

    // False with the error set when the picture cannot be copied; the screen
    // then keeps its mask.
    bool applyMask(const std::filesystem::path& mask, FLKError* error = nullptr);
    // Shows the whole video again.
    void removeMask();

private:
    void changeMask(std::optional<std::filesystem::path> url);

    std::shared_ptr<FLKVideoContainer> screen_;
    std::shared_ptr<FLKMedia> media_;
};
