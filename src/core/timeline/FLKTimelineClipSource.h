#pragma once

#include <memory>
#include <string>

#include "core/timeline/FLKTimelineClip.h"

// Resolves clip identifiers (transitions name the clips they join).
class FLKTimelineClipSource {
public:
    virtual ~FLKTimelineClipSource() = default;
    virtual std::shared_ptr<FLKTimelineClip> clipWithIdentifier(const std::string& identifier) const = 0;
};
