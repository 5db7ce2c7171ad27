#include "core/exporter/FLKVideoSizeCalculator.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/exporter/FLKGIFSizeCalculator.h"
#include "core/exporter/FLKMP4SizeCalculator.h"

namespace {
// Toward zero; a ratio of zero or a not-a-number reference gives 0 rather than
// an undefined conversion.
std::int64_t truncated(double value) {
    if (!std::isfinite(value)) return 0;
    constexpr double limit = 9.2e18;
    return static_cast<std::int64_t>(std::clamp(value, -limit, limit));
}
}  // namespace

std::int64_t FLKVideoSizeCalculator::evenLength(double length) {
    const std::int64_t whole = truncated(length);
    return whole + (whole & 1);
}

std::shared_ptr<FLKVideoSizeCalculator> FLKVideoSizeCalculator::calculatorWithType(FLKExportType type,
                                                                                   FLKSize referenceSize) {
    std::shared_ptr<FLKVideoSizeCalculator> calculator;
    if (type == FLKExportTypeGIF) {
        calculator = std::make_shared<FLKGIFSizeCalculator>();
    } else {
        calculator = std::make_shared<FLKMP4SizeCalculator>();
    }
    calculator->setReferenceVideoSize(referenceSize);
    calculator->setType(type);
    return calculator;
}

double FLKVideoSizeCalculator::widthToHeightRatio() const {
    return static_cast<double>(static_cast<float>(referenceVideoSize_.width)) / referenceVideoSize_.height;
}

std::int64_t FLKVideoSizeCalculator::heightForWidth(std::int64_t width) const {
    return evenLength(static_cast<double>(width) / widthToHeightRatio());
}

std::int64_t FLKVideoSizeCalculator::widthForHeight(std::int64_t height) const {
    return evenLength(widthToHeightRatio() * static_cast<double>(height));
}

std::int64_t FLKVideoSizeCalculator::maxWidthForWidth(std::int64_t width) const {
    return std::min(width, widthForHeight(maxHeight()));
}

std::int64_t FLKVideoSizeCalculator::maxHeightForHeight(std::int64_t height) const {
    return std::min(height, maxHeight());
}
