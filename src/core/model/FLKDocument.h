#pragma once

#include <memory>
#include <mutex>

#include "core/platform/FLKSerializable.h"

class FLKScene;
class FLKTimeline;

// The record at the top of a package: which scene and which timeline it
// holds. The stored references are for other readers; this system finds the
// scene and the timeline by looking into the package's folders.
class FLKDocument : public FLKSerializable {
public:
    FLKDocument() = default;

    // Ignores the dictionary: an empty document.
    static std::shared_ptr<FLKDocument> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKDocument"; }

    std::shared_ptr<FLKScene> currentScene() const;
    void setCurrentScene(std::shared_ptr<FLKScene> scene);
    std::shared_ptr<FLKTimeline> currentTimeline() const;
    void setCurrentTimeline(std::shared_ptr<FLKTimeline> timeline);

    bool isEqual(const FLKDocument& other) const;
    size_t hash() const;

private:
    mutable std::mutex mutex_;
    std::shared_ptr<FLKScene> currentScene_;        // guarded by mutex_
    std::shared_ptr<FLKTimeline> currentTimeline_;  // guarded by mutex_
};
