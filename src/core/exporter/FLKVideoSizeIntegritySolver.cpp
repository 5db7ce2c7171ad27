#include "core/exporter/FLKVideoSizeIntegritySolver.h"

#include <cmath>

#include "core/platform/FLKUserFeedback.h"

namespace {
std::int64_t truncatedHeight(double height) {
    return std::isfinite(height) && std::fabs(height) < 9.2e18 ? static_cast<std::int64_t>(height) : 0;
}
}  // namespace

FLKVideoSizeIntegritySolver::FLKVideoSizeIntegritySolver(std::shared_ptr<FLKVideoSizeAdapter> widthAdapter,
                                                         std::shared_ptr<FLKVideoSizeAdapter> heightAdapter,
                                                         std::shared_ptr<FLKExportOptions> exportOptions)
    : widthAdapter_(std::move(widthAdapter)),
      heightAdapter_(std::move(heightAdapter)),
      exportOptions_(std::move(exportOptions)),
      sizeCalculator_(
          FLKVideoSizeCalculator::calculatorWithType(exportOptions_->type(), exportOptions_->videoSize())) {
    std::int64_t height = sizeCalculator_->maxHeightForHeight(truncatedHeight(exportOptions_->videoSize().height));
    heightAdapter_->setIntegerValue(height);
    widthAdapter_->setIntegerValue(sizeCalculator_->widthForHeight(height));
}

std::shared_ptr<FLKVideoSizeIntegritySolver> FLKVideoSizeIntegritySolver::solverWithWidthAdapter(
    std::shared_ptr<FLKVideoSizeAdapter> widthAdapter, std::shared_ptr<FLKVideoSizeAdapter> heightAdapter,
    std::shared_ptr<FLKExportOptions> exportOptions) {
    return std::make_shared<FLKVideoSizeIntegritySolver>(std::move(widthAdapter), std::move(heightAdapter),
                                                         std::move(exportOptions));
}

void FLKVideoSizeIntegritySolver::solveForAdapter(const FLKVideoSizeAdapter* adapter) {
    if (adapter == widthAdapter_.get()) {
        solveForWidth();
    } else if (adapter == heightAdapter_.get()) {
        solveForHeight();
    }
}

// In the overflow branches the width and height are deliberately not
// recomputed from each other's final values.
void FLKVideoSizeIntegritySolver::solveForWidth() {
    const FLKVideoSizeCalculator& calculator = *sizeCalculator_;
    if (widthAdapter_->integerValue() > calculator.maxWidth()) {
        widthAdapter_->setIntegerValue(calculator.maxWidth());
        FLKUserFeedback::shared().beep();
    }
    std::int64_t height = calculator.heightForWidth(widthAdapter_->integerValue());
    if (height <= calculator.maxHeight()) {
        heightAdapter_->setIntegerValue(height);
        return;
    }
    widthAdapter_->setIntegerValue(calculator.widthForHeight(heightAdapter_->integerValue()));
    FLKUserFeedback::shared().beep();
    heightAdapter_->setIntegerValue(calculator.maxHeight());
}

void FLKVideoSizeIntegritySolver::solveForHeight() {
    const FLKVideoSizeCalculator& calculator = *sizeCalculator_;
    if (heightAdapter_->integerValue() > calculator.maxHeight()) {
        heightAdapter_->setIntegerValue(calculator.maxHeight());
        FLKUserFeedback::shared().beep();
    }
    std::int64_t width = calculator.widthForHeight(heightAdapter_->integerValue());
    if (width <= calculator.maxWidth()) {
        widthAdapter_->setIntegerValue(width);
        return;
    }
    heightAdapter_->setIntegerValue(calculator.heightForWidth(widthAdapter_->integerValue()));
    FLKUserFeedback::shared().beep();
    widthAdapter_->setIntegerValue(calculator.maxWidth());
}

FLKSize FLKVideoSizeIntegritySolver::videoSize() const {
    const FLKVideoSizeCalculator& calculator = *sizeCalculator_;
    std::int64_t width = widthAdapter_->integerValue();
    std::int64_t height = heightAdapter_->integerValue();
    if (width < calculator.minWidth()) {
        width = calculator.minWidth();
        height = calculator.heightForWidth(width);
    }
    if (height < calculator.minHeight()) {
        height = calculator.minHeight();
        width = calculator.widthForHeight(height);
    }
    return {static_cast<double>(width), static_cast<double>(height)};
}
