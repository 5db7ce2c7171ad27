#include "core/timeline/FLKTimeRange.h"

namespace {
constexpr float kTimeTolerance = 0.0001f;

double numberForKey(const FLKJSON& dictionary, const char* key) {
    if (!dictionary.is_object()) return 0;
    auto it = dictionary.find(key);
    return (it != dictionary.end() && it->is_number()) ? it->get<double>() : 0;
}
}  // namespace

bool FLKTimeRange::containsTime(double t) const {
    const float lower = static_cast<float>(start - kTimeTolerance);
    const float upper = static_cast<float>(end + kTimeTolerance);
    return lower <= t && t <= upper;
}

FLKJSON FLKTimeRange::serialized() const { return FLKJSON{{"start", start}, {"end", end}}; }

FLKTimeRange FLKTimeRange::rangeWithDictionary(const FLKJSON& dictionary) {
    return {numberForKey(dictionary, "start"), numberForKey(dictionary, "end")};
}
