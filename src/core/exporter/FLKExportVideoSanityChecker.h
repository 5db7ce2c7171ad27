#pragma once

#include <vector>

#include "core/exporter/FLKExportSettings.h"
#include "core/platform/FLKError.h"

class FLKTimeline;

inline constexpr const char* kFLKExportSettingsErrorDomain = "FLKExportSettingsErrorDomain";

// Checks a video against a preset before exporting. Only the duration is
// checked: the preset's other limits are met by the export itself.
class FLKExportVideoSanityChecker {
public:
    enum ErrorCode : long { kDurationOutOfRange = 1 };

    // No error when the duration is within the preset's limits, the limits included.
    static std::vector<FLKError> issuesInVideo(double duration, const FLKExportSettings& settings);
    static std::vector<FLKError> issuesInVideo(const FLKTimeline& video, const FLKExportSettings& settings);
};
