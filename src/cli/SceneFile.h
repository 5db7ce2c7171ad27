#pragma once

#include <filesystem>
#include <memory>

#include "core/platform/FLKError.h"
#include "core/scene/FLKScene.h"

// A scene stored as JSON on its own, its media paths relative to its folder.
class SceneFile {
public:
    // Null with `error` naming the file and the problem: missing, not JSON,
    // an unknown class, or not a scene.
    static std::shared_ptr<FLKScene> load(const std::filesystem::path& url, FLKError* error);
};
