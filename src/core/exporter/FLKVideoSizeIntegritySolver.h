#pragma once

#include <memory>

#include "core/exporter/FLKExportOptions.h"
#include "core/exporter/FLKVideoSizeAdapter.h"
#include "core/exporter/FLKVideoSizeCalculator.h"
#include "core/platform/FLKSize.h"

// Keeps the width and height fields of the size editor in the preset's
// aspect ratio and inside the export type's bounds while the user types.
// Used from the thread that owns the fields.
class FLKVideoSizeIntegritySolver {
public:
    // Fills both fields from the options' video size, clamped to the bounds.
    FLKVideoSizeIntegritySolver(std::shared_ptr<FLKVideoSizeAdapter> widthAdapter,
                                std::shared_ptr<FLKVideoSizeAdapter> heightAdapter,
                                std::shared_ptr<FLKExportOptions> exportOptions);
    static std::shared_ptr<FLKVideoSizeIntegritySolver> solverWithWidthAdapter(
        std::shared_ptr<FLKVideoSizeAdapter> widthAdapter, std::shared_ptr<FLKVideoSizeAdapter> heightAdapter,
        std::shared_ptr<FLKExportOptions> exportOptions);

    // The size to export; the lower bounds are applied here.
    FLKSize videoSize() const;
    // Call after the user edited `adapter`; other adapters are ignored.
    void solveForAdapter(const FLKVideoSizeAdapter* adapter);

    const std::shared_ptr<FLKVideoSizeAdapter>& widthAdapter() const { return widthAdapter_; }
    const std::shared_ptr<FLKVideoSizeAdapter>& heightAdapter() const { return heightAdapter_; }
    const std::shared_ptr<FLKExportOptions>& exportOptions() const { return exportOptions_; }
    const std::shared_ptr<FLKVideoSizeCalculator>& sizeCalculator() const { return sizeCalculator_; }

private:
    void solveForWidth();
    void solveForHeight();

    std::shared_ptr<FLKVideoSizeAdapter> widthAdapter_;
    std::shared_ptr<FLKVideoSizeAdapter> heightAdapter_;
    std::shared_ptr<FLKExportOptions> exportOptions_;
    std::shared_ptr<FLKVideoSizeCalculator> sizeCalculator_;
};
