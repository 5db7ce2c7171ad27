#include "core/platform/FLKUserDefaults.h"

#include <cmath>
#include <cstdlib>
#include <limits>

#include "core/platform/FLKAtomicFile.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"

namespace {

std::optional<double> numberFromText(const std::string& text) {
    if (text == "YES" || text == "true") return 1.0;
    if (text == "NO" || text == "false") return 0.0;
    char* end = nullptr;
    double value = std::strtod(text.c_str(), &end);
    if (end == text.c_str()) return std::nullopt;
    return value;
}

std::optional<double> numberFromValue(const std::optional<FLKJSON>& value) {
    if (!value) return std::nullopt;
    if (value->is_boolean()) return value->get<bool>() ? 1.0 : 0.0;
    if (value->is_number()) return value->get<double>();
    if (value->is_string()) return numberFromText(value->get<std::string>());
    return std::nullopt;
}

}  // namespace

FLKUserDefaults::FLKUserDefaults(std::filesystem::path fileURL) : fileURL_(std::move(fileURL)) { load(); }

FLKUserDefaults::~FLKUserDefaults() {
    FLKError error;
    if (!synchronize(&error)) flk::log("Could not save the user defaults: %s", error.fullMessage().c_str());
}

FLKUserDefaults& FLKUserDefaults::standardUserDefaults() {
    static FLKUserDefaults* shared = new FLKUserDefaults(flk::configHome() / "FLKUserDefaults.json");
    return *shared;
}

void FLKUserDefaults::load() {
    if (!flk::exists(fileURL_)) return;
    FLKError error;
    auto json = flk::dictionaryFromJSONAtURL(fileURL_, &error);
    if (json && json->is_object()) {
        std::lock_guard lock(mutex_);
        values_ = std::move(*json);
        return;
    }
    std::string reason = json ? "not a JSON object" : error.fullMessage();
    flk::log("Could not read the user defaults %s: %s", fileURL_.c_str(), reason.c_str());
}

void FLKUserDefaults::registerDefaults(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return;
    std::lock_guard lock(mutex_);
    for (const auto& [key, value] : dictionary.items()) registered_[key] = value;
}

std::optional<FLKJSON> FLKUserDefaults::objectForKey(const std::string& key) const {
    std::lock_guard lock(mutex_);
    if (auto it = values_.find(key); it != values_.end()) return *it;
    if (auto it = registered_.find(key); it != registered_.end()) return *it;
    return std::nullopt;
}

bool FLKUserDefaults::boolForKey(const std::string& key) const {
    auto number = numberFromValue(objectForKey(key));
    return number && *number != 0;
}

int64_t FLKUserDefaults::integerForKey(const std::string& key) const {
    auto value = objectForKey(key);
    // Parsed files hold non-negative integers as unsigned: read them exactly.
    if (value && value->is_number_unsigned()) {
        uint64_t number = value->get<uint64_t>();
        return number > uint64_t(std::numeric_limits<int64_t>::max()) ? std::numeric_limits<int64_t>::max()
                                                                         : static_cast<int64_t>(number);
    }
    if (value && value->is_number_integer()) return value->get<int64_t>();
    auto number = numberFromValue(value);
    if (!number || std::isnan(*number)) return 0;
    // Clamped: converting an out-of-range double to an integer is undefined.
    constexpr double kLimit = 9223372036854775807.0;
    if (*number >= kLimit) return std::numeric_limits<int64_t>::max();
    if (*number <= -kLimit) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(*number);
}

double FLKUserDefaults::doubleForKey(const std::string& key) const {
    return numberFromValue(objectForKey(key)).value_or(0.0);
}

std::optional<std::string> FLKUserDefaults::stringForKey(const std::string& key) const {
    auto value = objectForKey(key);
    if (!value || !value->is_string()) return std::nullopt;
    return value->get<std::string>();
}

void FLKUserDefaults::setObject(const std::string& key, const FLKJSON& value) {
    std::lock_guard lock(mutex_);
    values_[key] = value;
    dirty_ = true;
}

void FLKUserDefaults::setDouble(const std::string& key, double value) {
    if (std::isfinite(value)) setObject(key, FLKJSON(value));
}

void FLKUserDefaults::removeObjectForKey(const std::string& key) {
    std::lock_guard lock(mutex_);
    if (values_.erase(key) > 0) dirty_ = true;
}

bool FLKUserDefaults::synchronize(FLKError* error) {
    std::lock_guard writeLock(writeMutex_);
    std::string data;
    {
        std::lock_guard lock(mutex_);
        if (!dirty_) return true;
        data = values_.dump(2, ' ', false, FLKJSON::error_handler_t::replace);
        dirty_ = false;
    }
    if (flk::writeFileAtomically(fileURL_, data, error)) return true;
    std::lock_guard lock(mutex_);
    dirty_ = true;
    return false;
}
