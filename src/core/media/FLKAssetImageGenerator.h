#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/media/FLKAsset.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKImage.h"
#include "core/platform/FLKSize.h"

class FLKVideoDecoder;
class FLKFrameScaler;

// Still pictures of an asset's first video track at chosen times, as RGBA
// images fitted inside maximumSize() with the aspect ratio kept (an empty
// maximum size means full size), turned upright as the file's display
// matrix says. Not thread-safe: one thread at a time.
class FLKAssetImageGenerator {
public:
    // requestedTime, the image (null on failure), the time of the frame
    // actually shown (the frame on screen at the requested time), the error.
    using Handler = std::function<void(double requestedTime, const FLKImage* image, double actualTime,
                                       const FLKError* error)>;

    explicit FLKAssetImageGenerator(std::shared_ptr<FLKAsset> asset);
    ~FLKAssetImageGenerator();

    FLKSize maximumSize() const { return maximumSize_; }
    void setMaximumSize(FLKSize size) { maximumSize_ = size; }
    // Before the first picture: pictures for thumbnails, decoded on one
    // thread and roughly (FLKVideoDecoder::setDraft), so the frame may be one
    // or two before the one shown at the requested time.
    bool isDraft() const { return draft_; }
    void setDraft(bool draft) { draft_ = draft; }

    // Pictures asked for in time order decode only the frames between them.
    std::optional<FLKImage> copyImageAtTime(double time, double* actualTime = nullptr, FLKError* error = nullptr);
    // One handler call per time, in the order given, on the calling thread.
    void generateImagesForTimes(const std::vector<double>& times, const Handler& handler);

    const std::shared_ptr<FLKAsset>& asset() const { return asset_; }

private:
    bool ensureDecoder(FLKError* error);
    FLKSize fittedSize(int width, int height) const;

    std::shared_ptr<FLKAsset> asset_;
    FLKSize maximumSize_;
    bool draft_ = false;
    std::unique_ptr<FLKVideoDecoder> decoder_;
    std::unique_ptr<FLKFrameScaler> scaler_;
};
