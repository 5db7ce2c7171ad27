#pragma once

#include <filesystem>

// Whatever can put a video file on the timeline as a clip: what the clip
// factory hands a movie file to once it is in the document's media.
class FLKVideoClipLoading {
public:
    virtual ~FLKVideoClipLoading() = default;
    virtual void loadVideoClipWithURL(const std::filesystem::path& url) = 0;
};
