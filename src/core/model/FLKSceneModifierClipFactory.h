#pragma once

#include <filesystem>

// What the scene modifier needs of the timeline's clip factory: turning a
// movie file into a clip on the timeline. Other files are ignored.
class FLKSceneModifierClipFactory {
public:
    virtual ~FLKSceneModifierClipFactory() = default;
    virtual void makeClipForResourceURL(const std::filesystem::path& url) = 0;
};
