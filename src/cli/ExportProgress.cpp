#include "cli/ExportProgress.h"

#include <cstdio>
#include <string>

#include "core/exporter/FLKExportOperation.h"

namespace {
constexpr int kBarWidth = 30;
}

ExportProgress::ExportProgress(std::vector<std::shared_ptr<FLKExportOperation>> operations, Style style)
    : operations_(std::move(operations)), style_(style) {
    if (style_ == Style::kSilent) return;
    auto& center = FLKExportOperation::notificationCenter();
    auto observe = [&](const char* name, bool force) {
        observations_.emplace_back(center, center.addObserver(name, nullptr, [this, force](const FLKNotification& n) {
                                       auto index = indexOf(n.object);
                                       if (index < operations_.size()) show(*operations_[index], force);
                                   }));
    };
    observe(FLKExportOperationDidStartNotification, true);
    observe(FLKExportOperationDidUpdateNotification, false);
    observe(FLKExportOperationDidFinishNotification, true);
}

std::size_t ExportProgress::indexOf(const void* operation) const {
    for (std::size_t i = 0; i < operations_.size(); ++i) {
        if (operations_[i].get() == operation) return i;
    }
    return operations_.size();
}

void ExportProgress::show(const FLKExportOperation& operation, bool force) {
    const int percent = static_cast<int>(operation.progress() * 100.0 + 0.5);
    const auto now = std::chrono::steady_clock::now();
    const std::string label = "[" + std::to_string(indexOf(&operation) + 1) + "/" +
                              std::to_string(operations_.size()) + "] " + operation.name();
    if (style_ == Style::kBar) {
        if (percent == lastPercent_ && !force) return;
        const int filled = percent * kBarWidth / 100;
        std::fprintf(stderr, "\r%s [%s%s] %3d%%", label.c_str(), std::string(filled, '#').c_str(),
                     std::string(kBarWidth - filled, '.').c_str(), percent);
        std::fflush(stderr);
        barShown_ = true;
        if (operation.isFinished()) {
            std::fprintf(stderr, "\n");
            barShown_ = false;
        }
    } else if (force || now - lastLine_ >= std::chrono::seconds(1)) {
        std::fprintf(stderr, "%s %d%%\n", label.c_str(), percent);
    } else {
        return;
    }
    lastPercent_ = percent;
    lastLine_ = now;
}

void ExportProgress::finish() {
    if (barShown_) std::fprintf(stderr, "\n");
    barShown_ = false;
}
