#include "core/exporter/FLKExportVideoSanityChecker.h"

#include <cstdio>
#include <string>

#include "core/timeline/FLKTimeline.h"

namespace {
std::string formatted(const char* format, double value, const std::string& text = {}) {
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, format, value, text.c_str());
    return buffer;
}

FLKError exportSettingsError(std::string failureReason, std::string recoverySuggestion) {
    return FLKError::make(kFLKExportSettingsErrorDomain, FLKExportVideoSanityChecker::kDurationOutOfRange,
                          "The video does not fit the export settings.", std::move(failureReason),
                          std::move(recoverySuggestion));
}
}  // namespace

std::vector<FLKError> FLKExportVideoSanityChecker::issuesInVideo(double duration, const FLKExportSettings& settings) {
    if (duration < settings.minDuration()) {
        return {exportSettingsError(formatted("The video is too short at %.1fs for %s.", duration, settings.name()),
                                    formatted("Minimum duration is %.1fs, make a longer video.", settings.minDuration()))};
    }
    if (duration > settings.maxDuration()) {
        return {exportSettingsError(formatted("The video is too long at %.1fs for %s.", duration, settings.name()),
                                    formatted("Maximum duration is %.1fs, trim the video.", settings.maxDuration()))};
    }
    return {};
}

std::vector<FLKError> FLKExportVideoSanityChecker::issuesInVideo(const FLKTimeline& video,
                                                                 const FLKExportSettings& settings) {
    return issuesInVideo(video.duration(), settings);
}
