#pragma once

#include <cstdint>
#include <memory>

#include "core/exporter/FLKExportType.h"
#include "core/platform/FLKSize.h"

// Keeps an output size in the reference size's aspect ratio, with even
// sides, inside the bounds of the export type. The same bounds hold on both
// axes.
class FLKVideoSizeCalculator {
public:
    FLKVideoSizeCalculator() = default;
    virtual ~FLKVideoSizeCalculator() = default;

    // A GIF calculator for FLKExportTypeGIF, an MP4 calculator for any other type.
    static std::shared_ptr<FLKVideoSizeCalculator> calculatorWithType(FLKExportType type, FLKSize referenceSize);

    FLKExportType type() const { return type_; }
    void setType(FLKExportType type) { type_ = type; }
    FLKSize referenceVideoSize() const { return referenceVideoSize_; }
    void setReferenceVideoSize(FLKSize size) { referenceVideoSize_ = size; }

    // Whole pixels, an odd count raised by one: every exported side is even,
    // as 4:2:0 video needs.
    static std::int64_t evenLength(double length);

    double widthToHeightRatio() const;
    // Both round odd results up to the next even number.
    std::int64_t heightForWidth(std::int64_t width) const;
    std::int64_t widthForHeight(std::int64_t height) const;

    std::int64_t minWidth() const { return minHeight(); }
    std::int64_t maxWidth() const { return maxHeight(); }
    virtual std::int64_t minHeight() const { return minHeight_; }
    void setMinHeight(std::int64_t height) { minHeight_ = height; }
    virtual std::int64_t maxHeight() const { return 0; }

    std::int64_t maxWidthForWidth(std::int64_t width) const;
    std::int64_t maxHeightForHeight(std::int64_t height) const;

private:
    FLKExportType type_ = FLKExportTypeMP4;
    FLKSize referenceVideoSize_;
    std::int64_t minHeight_ = 0;
};
