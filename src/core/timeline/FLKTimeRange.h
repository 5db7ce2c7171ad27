#pragma once

#include "core/platform/FLKJSON.h"

// A span of time in seconds. In JSON: {"start": s, "end": e}.
struct FLKTimeRange {
    double start = 0;
    double end = 0;

    double length() const { return end - start; }
    FLKTimeRange offsetBy(double t) const { return {start + t, end + t}; }

    // start - 0.0001 <= t <= end + 0.0001, each bound narrowed to a 32-bit
    // float: the rule every lookup of a clip or segment by time uses, so that
    // a frame time stamped in single precision still falls inside its range.
    bool containsTime(double t) const;

    FLKJSON serialized() const;
    // Missing or non-numeric keys read as 0.
    static FLKTimeRange rangeWithDictionary(const FLKJSON& dictionary);

    bool operator==(const FLKTimeRange&) const = default;
};
