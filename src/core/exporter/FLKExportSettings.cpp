#include "core/exporter/FLKExportSettings.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string_view>

namespace {
// The loose readings of a property-list value: numbers and numeric strings
// convert, anything else (a missing key included) reads as zero.

std::string_view numericPrefix(std::string_view text) {
    size_t start = text.find_first_not_of(" \t\n\r\f\v");
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    return text;
}

float floatFromString(std::string_view text) {
    text = numericPrefix(text);
    float value = 0;
    auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? value : 0.0f;
}

std::int64_t int64FromString(std::string_view text) {
    text = numericPrefix(text);
    std::int64_t value = 0;
    auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? value : 0;
}

std::int64_t truncatedToInt64(double value) {
    if (std::isnan(value)) return 0;
    constexpr double limit = 9.2e18;
    if (value >= limit) return std::numeric_limits<std::int64_t>::max();
    if (value <= -limit) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

const FLKJSON* valueForKey(const FLKJSON& dictionary, const char* key) {
    if (!dictionary.is_object()) return nullptr;
    auto it = dictionary.find(key);
    return it == dictionary.end() ? nullptr : &*it;
}

float floatValue(const FLKJSON* value) {
    if (!value) return 0;
    if (value->is_number()) return static_cast<float>(value->get<double>());
    if (value->is_string()) return floatFromString(value->get_ref<const std::string&>());
    if (value->is_boolean()) return value->get<bool>() ? 1.0f : 0.0f;
    return 0;
}

std::int64_t integerValue(const FLKJSON* value) {
    if (!value) return 0;
    if (value->is_number_unsigned()) return static_cast<std::int64_t>(value->get<std::uint64_t>());
    if (value->is_number_integer()) return value->get<std::int64_t>();
    if (value->is_number_float()) return truncatedToInt64(value->get<double>());
    if (value->is_string()) return int64FromString(value->get_ref<const std::string&>());
    if (value->is_boolean()) return value->get<bool>() ? 1 : 0;
    return 0;
}

std::uint64_t unsignedIntegerValue(const FLKJSON* value) {
    if (value && value->is_number_unsigned()) return value->get<std::uint64_t>();
    return static_cast<std::uint64_t>(integerValue(value));
}

bool boolValue(const FLKJSON* value) {
    if (!value) return false;
    if (value->is_boolean()) return value->get<bool>();
    return integerValue(value) != 0;
}

std::string stringValue(const FLKJSON* value) {
    return value && value->is_string() ? value->get<std::string>() : std::string();
}

FLKSize ratioValue(const FLKJSON* value) {
    if (!value || !value->is_string()) return {};
    return FLKExportSettings::aspectRatioFromString(value->get<std::string>());
}

FLKSize resolutionValue(const FLKJSON* value) {
    return value ? FLKExportSettings::sizeFromDictionary(*value) : FLKSize{};
}
}  // namespace

FLKExportSettings::FLKExportSettings(const FLKJSON& dictionary)
    : name_(stringValue(valueForKey(dictionary, "name"))),
      imageName_(stringValue(valueForKey(dictionary, "imageName"))),
      minAspectRatio_(ratioValue(valueForKey(dictionary, "minAspectRatio"))),
      maxAspectRatio_(ratioValue(valueForKey(dictionary, "maxAspectRatio"))),
      minVideoResolution_(resolutionValue(valueForKey(dictionary, "minResolution"))),
      maxVideoResolution_(resolutionValue(valueForKey(dictionary, "maxResolution"))),
      minDuration_(floatValue(valueForKey(dictionary, "minDuration"))),
      maxDuration_(floatValue(valueForKey(dictionary, "maxDuration"))),
      maxSizeMB_(unsignedIntegerValue(valueForKey(dictionary, "maxSizeMB"))),
      maxNumFrames_(unsignedIntegerValue(valueForKey(dictionary, "maxNumFrames"))),
      fps_(unsignedIntegerValue(valueForKey(dictionary, "fps"))),
      frameless_(boolValue(valueForKey(dictionary, "frameless"))) {}

std::shared_ptr<FLKExportSettings> FLKExportSettings::settingsWithDictionary(const FLKJSON& dictionary) {
    return std::make_shared<FLKExportSettings>(dictionary);
}

FLKSize FLKExportSettings::aspectRatioFromString(const std::string& ratio) {
    size_t separator = ratio.find(':');
    if (separator == std::string::npos)
        throw std::invalid_argument("Aspect ratio \"" + ratio + "\" is not of the form \"width:height\"");
    size_t end = ratio.find(':', separator + 1);
    std::string_view text(ratio);
    float width = floatFromString(text.substr(0, separator));
    float height = floatFromString(text.substr(separator + 1, end == std::string::npos ? end : end - separator - 1));
    return {width, height};
}

FLKSize FLKExportSettings::sizeFromDictionary(const FLKJSON& dictionary) {
    return {static_cast<double>(integerValue(valueForKey(dictionary, "width"))),
            static_cast<double>(integerValue(valueForKey(dictionary, "height")))};
}

FLKRect FLKExportSettings::exportFrameForCanvasSize(FLKSize canvas) const {
    FLKSize video = maxVideoResolution_;
    if (video == canvas) return {0, 0, video.width, video.height};

    double videoRatio = video.width / video.height;
    double canvasRatio = canvas.width / canvas.height;
    FLKSize size;
    if (videoRatio > canvasRatio) {
        double scale = video.width / canvas.width;
        size = {video.width / scale, video.height / scale};
    } else if (videoRatio < canvasRatio) {
        double scale = video.height / canvas.height;
        size = {video.width / scale, video.height / scale};
    } else if (videoRatio == canvasRatio) {
        size = {video.width / (video.width / canvas.width), video.height / (video.height / canvas.height)};
    }
    return {(canvas.width - size.width) * 0.5, (canvas.height - size.height) * 0.5, size.width, size.height};
}
