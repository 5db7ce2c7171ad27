#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "core/platform/FLKError.h"
#include "core/platform/FLKJSON.h"

// Persistent application settings: a JSON object in one file. A key's value
// is the one set by the user, else the registered default, else none.
// Registered defaults live only in memory and are never written. Changes are
// kept in memory until `synchronize` writes the file atomically (the shell
// synchronises at quit; an instance synchronises when destroyed).
// Every member may be called from any thread.
class FLKUserDefaults {
public:
    // Reads the file when it exists; an unreadable file is logged and treated
    // as empty (and replaced at the next synchronise).
    explicit FLKUserDefaults(std::filesystem::path fileURL);
    ~FLKUserDefaults();
    FLKUserDefaults(const FLKUserDefaults&) = delete;
    FLKUserDefaults& operator=(const FLKUserDefaults&) = delete;

    // "<config home>/FLKUserDefaults.json" (see flk::configHome). Created on
    // first use and never destroyed, so late users at exit stay safe.
    static FLKUserDefaults& standardUserDefaults();

    const std::filesystem::path& fileURL() const { return fileURL_; }

    // Merges the keys of a JSON object into the registered defaults; other
    // values are ignored.
    void registerDefaults(const FLKJSON& dictionary);

    std::optional<FLKJSON> objectForKey(const std::string& key) const;
    // Numbers, booleans and the strings "YES"/"NO", "true"/"false" and numeric
    // text convert as one would expect; anything else reads as false or 0.
    bool boolForKey(const std::string& key) const;
    int64_t integerForKey(const std::string& key) const;
    double doubleForKey(const std::string& key) const;
    // nullopt unless the value is a string.
    std::optional<std::string> stringForKey(const std::string& key) const;

    void setObject(const std::string& key, const FLKJSON& value);
    void setBool(const std::string& key, bool value) { setObject(key, FLKJSON(value)); }
    void setInteger(const std::string& key, int64_t value) { setObject(key, FLKJSON(value)); }
    // Non-finite numbers cannot be stored in JSON and are ignored.
    void setDouble(const std::string& key, double value);
    void setString(const std::string& key, const std::string& value) { setObject(key, FLKJSON(value)); }
    // The registered default (if any) shows through again.
    void removeObjectForKey(const std::string& key);

    // Writes the set values when something changed since the last write.
    bool synchronize(FLKError* error = nullptr);

private:
    const std::filesystem::path fileURL_;
    mutable std::mutex mutex_;
    FLKJSON values_ = FLKJSON::object();      // guarded by mutex_
    FLKJSON registered_ = FLKJSON::object();  // guarded by mutex_
    bool dirty_ = false;                      // guarded by mutex_
    // Serialises writers so an older snapshot never lands after a newer one.
    std::mutex writeMutex_;

    void load();
};
