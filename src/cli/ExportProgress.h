#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "core/platform/FLKNotificationCenter.h"

class FLKExportOperation;

// Shows how far the exports have got, from their notifications on the main
// queue: a bar redrawn in place on a terminal, else a percentage line at most
// once a second. Main thread only.
class ExportProgress {
public:
    enum class Style { kSilent, kBar, kLines };

    ExportProgress(std::vector<std::shared_ptr<FLKExportOperation>> operations, Style style);
    // Ends the bar's line.
    void finish();

private:
    void show(const FLKExportOperation& operation, bool force);
    std::size_t indexOf(const void* operation) const;

    const std::vector<std::shared_ptr<FLKExportOperation>> operations_;
    const Style style_;
    std::vector<FLKObservation> observations_;
    std::chrono::steady_clock::time_point lastLine_{};
    int lastPercent_ = -1;
    bool barShown_ = false;
};
